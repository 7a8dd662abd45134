#pragma once

#include <QFileInfo>
#include <QString>

namespace RecordingsFolder {

/// One signal of a watcher, as a value.
struct WatchEvent
{
    enum class Kind
    {
        WatchingStarted,
        WatchingStopped,
        FileAdded,
        FileRemoved,
        FileChanged,
        PathChanged
    };

    Kind kind;
    QFileInfo file; ///< the file of FileAdded, FileRemoved and FileChanged
    QString path;   ///< the path of PathChanged
};

/// The signal's name as in the code, not translated.
QString SignalName(WatchEvent::Kind kind);

/// A file name in quotation marks, with line breaks shown as \n, so that it fits into one line.
QString Quoted(const QString& name);

} // namespace RecordingsFolder
