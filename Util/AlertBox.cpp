#include "Util/AlertBox.h"

#include <QCoreApplication>
#include <QEvent>

namespace Zendra::Util {
namespace {

QMessageBox::Icon IconOf(AlertBox::Level level)
{
    switch (level) {
    case AlertBox::Level::Warning:
        return QMessageBox::Warning;
    case AlertBox::Level::Information:
        return QMessageBox::Information;
    case AlertBox::Level::Question:
        return QMessageBox::Question;
    case AlertBox::Level::Critical:
        return QMessageBox::Critical;
    }
    return QMessageBox::NoIcon;
}

/// Closes a box without an answer when the application quits.
///
/// Qt 6 closes all windows first. A message box then reports its reject button, even if that is the only one;
/// a box without a reject button ignores it and keeps the application from quitting.
class CloseOnQuit : public QObject
{
public:
    explicit CloseOnQuit(QMessageBox* messageBox) : box(messageBox)
    {
        QCoreApplication::instance()->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        // A slot of the box may delete it.
        if (event->type() == QEvent::Quit && watched == QCoreApplication::instance() && box)
            box->done(QMessageBox::NoButton);
        return false;
    }

private:
    QPointer<QMessageBox> box;
};

} // namespace

AlertBox::AlertBox(Level level, const QString& title, const QString& text,
                   QFlags<QMessageBox::StandardButton> buttons, QWidget* parent, QFlags<Qt::WindowType> flags)
    : box(new QMessageBox(IconOf(level), title, text, buttons, parent, flags))
{
    box->setTextFormat(Qt::PlainText);
}

AlertBox::~AlertBox()
{
    delete box;
}

QMessageBox::StandardButton AlertBox::Exec()
{
    if (!box || box->isVisible())
        return QMessageBox::NoButton;
    const QPointer<QMessageBox> shown = box;
    const CloseOnQuit filter(shown);
    // Members of this object must not be used after that: a slot may have destroyed it.
    const int answer = shown->exec();
    // Qt 5 leaves it open when the application quits.
    if (shown)
        shown->hide();
    // Negative when a slot has hidden the box and the first Exec() has not returned yet.
    return answer < 0 ? QMessageBox::NoButton : static_cast<QMessageBox::StandardButton>(answer);
}

} // namespace Zendra::Util
