#pragma once

#include "Util/Export.h"

#include <QMessageBox>
#include <QPointer>
#include <QString>

namespace Zendra::Util {

/// An application-modal message box.
///
///     AlertBox box(AlertBox::Level::Question, tr("Delete"), tr("Delete %1?").arg(name),
///                  QMessageBox::Yes | QMessageBox::No, window, Qt::Dialog);
///     if (box.Exec() == QMessageBox::Yes)
///         Delete(name);
///
/// The text is shown as plain text: a path that looks like markup stays a path. macOS shows no titles on
/// message boxes.
///
/// GUI thread only, and a QApplication has to exist.
class ZENDRA_UTIL_EXPORT AlertBox
{
public:
    /// How serious the message is; selects the icon.
    enum class Level
    {
        Warning,     ///< something did not work, or soon will not
        Information, ///< something worth knowing
        Question,    ///< the user has to decide
        Critical     ///< something is broken or lost
    };

    /// Makes the box; Exec() shows it.
    ///
    /// @param level    picks the icon
    /// @param title    the window's title, where the system shows one
    /// @param text     the message, plain text
    /// @param buttons  the answers that the user can give; without any the box gets an OK button
    /// @param parent   the window that the box belongs to and stays above; may be null. It may be destroyed
    ///                 at any time, before and during Exec(): the box is then destroyed with it
    /// @param flags    window flags, to which QMessageBox adds those of a message box
    AlertBox(Level level, const QString& title, const QString& text,
             QFlags<QMessageBox::StandardButton> buttons, QWidget* parent, QFlags<Qt::WindowType> flags);

    /// Closes the box if it is still open. Leaves the parent alone.
    ~AlertBox();

    AlertBox(const AlertBox&) = delete;
    AlertBox& operator=(const AlertBox&) = delete;

    /// Shows the box, modal to the whole application, and blocks until the user has answered.
    ///
    /// A local event loop runs meanwhile, so timers, signals and slots still work. May be called again.
    ///
    /// @return the button that was pressed. Escape, and closing the window, count as pressing the reject
    ///         button (Cancel, No, or the only one; see QMessageBox), and are ignored when there is none.
    ///         QMessageBox::NoButton when the box was closed without an answer, because its parent was
    ///         destroyed or the application quits. NoButton also, and at once, when the box is open already,
    ///         since a slot calls Exec() again: the first call gets the answer.
    QMessageBox::StandardButton Exec();

private:
    /// Owned, but its parent may delete it first.
    QPointer<QMessageBox> box;
};

} // namespace Zendra::Util
