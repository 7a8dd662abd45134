#include "Examples/RecordingsFolder/DarkPalette.h"

namespace RecordingsFolder {

QPalette DarkPalette()
{
    const QColor ground(45, 45, 48);
    const QColor field(30, 30, 32);
    const QColor text(230, 230, 230);
    const QColor faint(140, 140, 140);
    const QColor accent(60, 120, 200);

    QPalette palette(ground, ground);
    palette.setColor(QPalette::Base, field);
    palette.setColor(QPalette::AlternateBase, ground);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::PlaceholderText, faint);
    palette.setColor(QPalette::ToolTipBase, field);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Link, QColor(110, 170, 255));
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faint);
    palette.setColor(QPalette::Disabled, QPalette::Light, field);
    return palette;
}

} // namespace RecordingsFolder
