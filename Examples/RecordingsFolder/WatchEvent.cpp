#include "Examples/RecordingsFolder/WatchEvent.h"

namespace RecordingsFolder {

QString SignalName(WatchEvent::Kind kind)
{
    switch (kind) {
    case WatchEvent::Kind::WatchingStarted:
        return QStringLiteral("WatchingStarted");
    case WatchEvent::Kind::WatchingStopped:
        return QStringLiteral("WatchingStopped");
    case WatchEvent::Kind::FileAdded:
        return QStringLiteral("FileAdded");
    case WatchEvent::Kind::FileRemoved:
        return QStringLiteral("FileRemoved");
    case WatchEvent::Kind::FileChanged:
        return QStringLiteral("FileChanged");
    case WatchEvent::Kind::PathChanged:
        return QStringLiteral("PathChanged");
    }
    return {};
}

QString Quoted(const QString& name)
{
    QString text = name;
    text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

} // namespace RecordingsFolder
