#pragma once

#include <QFileInfo>
#include <QString>

namespace RecordingsFolder {

/// One signal of a watcher, as a value that can be shown, stored and passed on.
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
    QFileInfo file; ///< of the three signals about files
    QString path;   ///< of PathChanged
};

/// The signal's name, spelt as in the code and therefore not translated.
QString SignalName(WatchEvent::Kind kind);

/// A file name fit for a line of text: in quotation marks, a line break in it shown as \n.
QString Quoted(const QString& name);

} // namespace RecordingsFolder
