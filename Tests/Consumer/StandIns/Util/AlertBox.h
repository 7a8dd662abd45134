#pragma once

#define STAND_IN_UTIL

#include <QMessageBox>
#include <QString>

namespace Zendra::Util {

/// Needs no display: keeps the text for who wants to look.
class __attribute__((visibility("default"))) AlertBox
{
public:
    /// Names of its own: the library goes by the value.
    enum class Level
    {
        Caution
    };

    AlertBox(Level, const QString&, const QString& text, QFlags<QMessageBox::StandardButton>, QWidget*,
             QFlags<Qt::WindowType>)
        : text(text)
    {
    }

    QMessageBox::StandardButton Exec()
    {
        shown = text;
        return QMessageBox::Ok;
    }

    static inline QString shown;

private:
    QString text;
};

} // namespace Zendra::Util
