#include "Lib/Util/FS/DirectoryChecker.h"

#include "Lib/Util/FS/AbsolutePath.h"
#include "Lib/Util/FS/DirectorySnapshot.h"

#include <glog/logging.h>

namespace Zendra::LW {

struct DirectoryChecker::Impl
{
    DirectorySnapshot snapshot;
    WatchTicketIssuer watch;
    WatchTicketIssuer pass;

    /// Forgets everything. @return false when there was nothing to forget
    bool Reset()
    {
        if (snapshot.dirPath.isEmpty())
            return false;
        snapshot.dirPath = QString();
        snapshot.Clear();
        return true;
    }

    /// Whether OnFileChanged() is certain to have nothing to report of a known file; saves it the lookup and
    /// the conversions of times. False says nothing.
    bool IsCertainlyUnchanged(const QFileInfo& info) const
    {
        // What a relative path means depends on the current folder, which may be another one by now.
        return IsAbsoluteAndClean(info.filePath()) && snapshot.IsUnchanged(info);
    }
};

DirectoryChecker::DirectoryChecker() : impl(std::make_unique<Impl>())
{
}

DirectoryChecker::~DirectoryChecker() = default;

bool DirectoryChecker::StartWatching(const QString& dirPath, const QStringList& nameFilters,
                                     const std::function<bool(const QFileInfo&)>& filter, unsigned int depth)
{
    DirectorySnapshot& snapshot = impl->snapshot;
    // Intended: with an empty path the checker runs and still counts as idle.
    if (!snapshot.dirPath.isEmpty()) {
        LOG(INFO) << "Can't start watching " << dirPath.toStdString() << ", already watch "
                  << snapshot.dirPath.toStdString();
        return false;
    }

    impl->watch.Renew();
    const WatchTicket watch = impl->watch.Issue();
    const QList<QFileInfo> accepted = DirectorySnapshot::GetAcceptedFiles(
        dirPath, nameFilters, filter, depth, DirectorySnapshot::Metadata::ReadWithTheScan, watch);
    // The predicate has started the checker itself.
    if (watch.IsOver())
        return false;

    snapshot.nameFilters = nameFilters;
    snapshot.filter = filter;
    snapshot.depth = depth;
    // Intended: not cleared first, so a start after one with an empty path adds to its files.
    snapshot.Reserve(snapshot.fileInfos.size() + accepted.size());
    for (const QFileInfo& info : accepted)
        snapshot.Append(info);
    snapshot.dirPath = dirPath;

    Q_EMIT PathChanged(dirPath);
    if (!watch.IsOver())
        Q_EMIT WatchingStarted();
    return true;
}

void DirectoryChecker::StopWatching()
{
    if (!impl->Reset())
        return;
    impl->watch.Renew();
    Q_EMIT WatchingStopped();
}

QString DirectoryChecker::GetWatchedDirPath() const
{
    return impl->snapshot.dirPath;
}

QList<QFileInfo> DirectoryChecker::GetFileInfoList() const
{
    return impl->snapshot.fileInfos;
}

void DirectoryChecker::CheckFolder()
{
    const WatchTicket watch = impl->watch.Issue();
    // A pass that a slot makes looks at every known file and so ends this one: a file that it dropped would
    // otherwise stand for another one here.
    impl->pass.Renew();
    const WatchTicket pass = impl->pass.Issue();
    const QList<QFileInfo> known = impl->snapshot.fileInfos;
    // Intended: no test whether it is watching; an idle checker looks into the current folder.
    OnDirectoryChanged(QString(impl->snapshot.dirPath));
    for (const QFileInfo& info : known) {
        if (watch.IsOver() || pass.IsOver())
            return;
        if (!impl->IsCertainlyUnchanged(info))
            OnFileChanged(info.absoluteFilePath());
    }
}

void DirectoryChecker::OnDirectoryChanged(const QString& path)
{
    DirectorySnapshot& snapshot = impl->snapshot;
    snapshot.TakeNewFiles(path, impl->watch.Issue(), [&](int place, const QFileInfo& info, bool) {
        snapshot.Insert(place, info);
        Q_EMIT FileAdded(info);
    });
}

void DirectoryChecker::OnFileChanged(const QString& filePath)
{
    DirectorySnapshot& snapshot = impl->snapshot;
    const QFileInfo info(filePath);
    // Intended: used as it is. A path that is not in the snapshot stands for the file at its name's place.
    const int index = snapshot.GetInfoIndex(info);
    if (info.exists()) {
        if (!snapshot.HasOtherTime(index, info))
            return;
        snapshot.Replace(index, info);
        Q_EMIT FileChanged(info);
        return;
    }

    if (snapshot.Contains(index))
        snapshot.RemoveAt(index);
    // Intended: reported even when there was nothing to remove.
    Q_EMIT FileRemoved(info);
}

} // namespace Zendra::LW
