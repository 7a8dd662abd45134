#include "Lib/Util/FS/DirectoryChecker.h"

#include "Lib/Util/FS/DirectorySnapshot.h"
#include "Lib/Util/FS/FileTime.h"
#include "Lib/Util/FS/FileTimeReader.h"
#include "Lib/Util/FS/FolderScan.h"
#include "Lib/Util/FS/NewFiles.h"
#include "Lib/Util/FS/WatchSettings.h"
#include "Lib/Util/FS/WatchToken.h"

#include <QScopeGuard>

#include <glog/logging.h>

#include <optional>

namespace Zendra::LW {

struct DirectoryChecker::Impl
{
    DirectorySnapshot snapshot;
    std::optional<DirectorySnapshot> beforeStart; ///< set while a start is asking the predicate
    WatchTokenSource watch;
    WatchTokenSource pass;

    /// Forgets everything. @return false when there was nothing to forget
    bool Reset()
    {
        if (snapshot.settings.dirPath.isEmpty())
            return false;
        snapshot.settings = {};
        snapshot.Clear();
        return true;
    }

    void UndoStart()
    {
        if (beforeStart)
            snapshot = *beforeStart;
        beforeStart.reset();
    }

    void TakeInitialFiles(const QString& dirPath, const WatchToken& token)
    {
        using Times = ListingOptions::Times;
        // A predicate may take its time, or change the file.
        const Times times = snapshot.settings.filter ? Times::ReadLater : Times::ReadWhileListing;
        // Intended: not cleared first, so a start after one with an empty path adds to its files.
        NewFiles files = NewFiles::OfStart(snapshot, dirPath, times, token);
        while (files.MoveNext())
            files.TakeIn();
    }

    void ReportNewFiles(DirectoryChecker& checker, const QString& path)
    {
        NewFiles files = NewFiles::OfPass(snapshot, path, watch.GetToken());
        while (files.MoveNext())
            Q_EMIT checker.FileAdded(files.TakeIn());
    }

    void ReportDifference(DirectoryChecker& checker, const QString& filePath,
                          DirectorySnapshot::Identity identity)
    {
        const QFileInfo info(filePath);
        switch (snapshot.Update(info, identity)) {
        case DirectorySnapshot::Difference::None:
            break;
        case DirectorySnapshot::Difference::Changed:
            Q_EMIT checker.FileChanged(info);
            break;
        case DirectorySnapshot::Difference::Removed:
            // Intended: reported even when there was nothing to remove.
            Q_EMIT checker.FileRemoved(info);
            break;
        }
    }
};

DirectoryChecker::DirectoryChecker() : impl(std::make_unique<Impl>())
{
}

DirectoryChecker::~DirectoryChecker() = default;

bool DirectoryChecker::StartWatching(const QString& dirPath, const QStringList& nameFilters,
                                     const std::function<bool(const QFileInfo&)>& filter, unsigned int depth)
{
    // Intended: with an empty path the checker runs and still counts as idle.
    if (!impl->snapshot.settings.dirPath.isEmpty()) {
        LOG(INFO) << "Can't start watching " << dirPath.toStdString() << ", already watch "
                  << impl->snapshot.settings.dirPath.toStdString();
        return false;
    }

    // The predicate or a slot may change or destroy the caller's.
    const QString path = dirPath; // NOLINT(performance-unnecessary-copy-initialization)
    // Nothing stays of a start whose predicate begins another one.
    impl->UndoStart();
    impl->watch.Invalidate();
    const WatchToken token = impl->watch.GetToken();
    impl->beforeStart = impl->snapshot;
    auto undoStart = qScopeGuard([&] { // when the predicate throws
        if (!token.IsExpired())
            impl->UndoStart();
    });
    impl->snapshot.settings = {nameFilters, MakeSharedPredicate(filter), QString(), depth};
    impl->TakeInitialFiles(path, token);
    undoStart.dismiss();
    // The predicate has begun another watch.
    if (token.IsExpired())
        return false;

    impl->beforeStart.reset();
    impl->snapshot.settings.dirPath = path;
    Q_EMIT PathChanged(path);
    if (!token.IsExpired())
        Q_EMIT WatchingStarted();
    return true;
}

void DirectoryChecker::StopWatching()
{
    if (!impl->Reset())
        return;
    impl->watch.Invalidate();
    Q_EMIT WatchingStopped();
}

QString DirectoryChecker::GetWatchedDirPath() const
{
    return impl->snapshot.settings.dirPath;
}

QList<QFileInfo> DirectoryChecker::GetFileInfoList() const
{
    return impl->snapshot.GetFileInfos();
}

void DirectoryChecker::CheckFolder()
{
    const WatchToken watch = impl->watch.GetToken();
    // A pass that a slot makes looks at every known file, so it ends this one: a file that it has removed
    // would otherwise stand for another one here. Intended: OnFileChanged() does not end it.
    impl->pass.Invalidate();
    const WatchToken pass = impl->pass.GetToken();

    const DirectorySnapshot::KnownFiles known = impl->snapshot.GetKnownFiles();
    // Intended: no test whether it is watching; an idle checker scans the current folder.
    impl->ReportNewFiles(*this, QString(impl->snapshot.settings.dirPath));
    FileTimeReader timeReader;
    for (int i = 0; i < known.infos.size(); ++i) {
        if (watch.IsExpired() || pass.IsExpired())
            return;
        const QFileInfo& info = known.infos.at(i);
        const qint64 knownTime = known.times.at(i);
        // One system call instead of a lookup and conversions to local time.
        if (knownTime != unreadableTime && timeReader.Read(info.filePath()) == knownTime)
            continue;
        timeReader.CloseFolder(); // a slot may rename it
        impl->ReportDifference(*this, info.absoluteFilePath(), impl->snapshot.GetIdentity());
    }
}

void DirectoryChecker::OnDirectoryChanged(const QString& path)
{
    impl->ReportNewFiles(*this, path);
}

void DirectoryChecker::OnFileChanged(const QString& filePath)
{
    impl->ReportDifference(*this, filePath, DirectorySnapshot::Identity::CanonicalPath);
}

} // namespace Zendra::LW
