#include "Util/AlertBox.h"

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
    // Nothing of this object after that: a slot may have destroyed it.
    const int answer = box->exec();
    // Negative when a slot has hidden the box and the first Exec() has not returned yet.
    return answer < 0 ? QMessageBox::NoButton : static_cast<QMessageBox::StandardButton>(answer);
}

} // namespace Zendra::Util
