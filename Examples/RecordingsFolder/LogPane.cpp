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
    // The Tab key moves the focus to the next widget.
    setTabChangesFocus(true);
    // Keyboard selection gives a read-only text a cursor, so that screen readers can read it line by line.
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

void LogPane::Write(const QString& line)
{
    appendPlainText(QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz  ")) + line);
}

} // namespace RecordingsFolder
