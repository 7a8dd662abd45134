#include "Examples/RecordingsFolder/LogPane.h"

#include <QFontDatabase>
#include <QTime>

namespace RecordingsFolder {

LogPane::LogPane(QWidget* parent) : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setMaximumBlockCount(1000);
    setLineWrapMode(NoWrap);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    // The Tab key leads on to the next part of the window.
    setTabChangesFocus(true);
    // A read-only text shows no cursor otherwise, and could not be read line by line with the keys.
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

void LogPane::Write(const QString& line)
{
    appendPlainText(QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz  ")) + line);
}

} // namespace RecordingsFolder
