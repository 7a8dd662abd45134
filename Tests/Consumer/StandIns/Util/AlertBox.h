#pragma once

#define STAND_IN_UTIL

#include <QMessageBox>
#include <QString>

namespace Zendra::Util {

/// Shows nothing and keeps the text in `shown`.
class __attribute__((visibility("default"))) AlertBox
{
public:
    /// Other names than the bundled companion's: the library only uses the values.
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
