#pragma once

#include "Examples/RecordingsFolder/WatchEvent.h"
#include "Lib/Util/FS/DirectoryChecker.h"
#include "Lib/Util/FS/DirectoryWatcher.h"

#include <QObject>
#include <QTimer>

namespace RecordingsFolder {

/// What to watch, and how.
struct WatchSettings
{
    enum class Way
    {
        Notices,
        Polling
    };

    QString folder;
    QStringList nameFilters;
    unsigned int depth = 0;
    Way way = Way::Notices;
};

/// Follows one folder with whichever watcher the user chose, and tells of every signal through one of its
/// own.
///
/// It adds what a watcher leaves to the application: the timer that makes a DirectoryChecker look, and the
/// second start that a DirectoryWatcher needs when its folder was empty.
class FolderFollower : public QObject
{
    Q_OBJECT

public:
    explicit FolderFollower(QObject* parent = nullptr);

    /// Ends the running watch, if there is one, and begins another.
    ///
    /// An empty folder name only ends it: to a watcher that would mean the process's current folder.
    void Follow(const WatchSettings& newSettings);
    void Stop();
    /// The time between two looks while polling.
    void SetInterval(int milliseconds) { pollTimer.setInterval(milliseconds); }

    const WatchSettings& Settings() const { return settings; }
    /// The files that are known now.
    QList<QFileInfo> Files() const;

Q_SIGNALS:
    /// A watcher emitted this signal just now; Files() is already up to date.
    void Noticed(const WatchEvent& event);

private:
    void Connect(const Zendra::LW::IDirectoryWatcher& watcher);
    void OnFileAdded(const QFileInfo& file);
    void Begin();

    Zendra::LW::DirectoryWatcher noticeWatcher;
    Zendra::LW::DirectoryChecker pollingWatcher;
    Zendra::LW::IDirectoryWatcher* current = &noticeWatcher;
    WatchSettings settings;
    QTimer pollTimer;
    QTimer secondStart;
};

} // namespace RecordingsFolder
