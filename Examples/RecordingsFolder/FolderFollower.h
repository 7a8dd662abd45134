#pragma once

#include "Examples/RecordingsFolder/WatchEvent.h"
#include "Lib/Util/FS/DirectoryChecker.h"
#include "Lib/Util/FS/DirectoryWatcher.h"

#include <QObject>
#include <QTimer>

namespace RecordingsFolder {

enum class WatchMode
{
    Notices, ///< by a DirectoryWatcher
    Polling  ///< by a DirectoryChecker and a timer
};

/// What to watch, and how.
struct WatchSettings
{
    QString folder;
    QStringList nameFilters;
    unsigned int depth = 0;
    WatchMode mode = WatchMode::Notices;
};

/// Watches one folder with the kind of watcher that the user chose, and emits one signal for all of its
/// signals.
///
/// It adds what the watchers leave to the application: the timer for a DirectoryChecker, and the restart that
/// a DirectoryWatcher needs when its folder was empty.
class FolderFollower : public QObject
{
    Q_OBJECT

public:
    explicit FolderFollower(QObject* parent = nullptr);

    /// Stops watching, if it is, and starts with these settings.
    ///
    /// An empty folder name only stops: a DirectoryChecker would use the process's current folder.
    void Follow(const WatchSettings& newSettings);
    void Stop();
    /// The time between two polls.
    void SetInterval(int milliseconds) { pollTimer.setInterval(milliseconds); }

    const WatchSettings& Settings() const { return settings; }
    /// The current snapshot.
    QList<QFileInfo> Files() const;

Q_SIGNALS:
    /// The watcher has emitted this signal. Files() is already up to date.
    void Noticed(const WatchEvent& event);

private:
    void Connect(const Zendra::LW::IDirectoryWatcher& watcher);
    void OnFileAdded(const QFileInfo& file);
    void Start();

    Zendra::LW::DirectoryWatcher noticeWatcher;
    Zendra::LW::DirectoryChecker pollingWatcher;
    Zendra::LW::IDirectoryWatcher* current = &noticeWatcher;
    WatchSettings settings;
    QTimer pollTimer;
    QTimer restartTimer;
};

} // namespace RecordingsFolder
