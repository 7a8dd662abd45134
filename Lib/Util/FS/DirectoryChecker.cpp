#include "Lib/Util/FS/DirectoryChecker.h"

#include "Lib/Util/FS/DirectorySnapshot.h"
#include "Lib/Util/FS/FileTime.h"
#include "Lib/Util/FS/FileTimeReader.h"
#include "Lib/Util/FS/NewFiles.h"
#include "Lib/Util/FS/WatchSettings.h"
#include "Lib/Util/FS/WatchToken.h"

#include <QScopeGuard>

#include <glog/logging.h>

#include <optional>

namespace Zendra::LW {
namespace {

using KnownFile = DirectorySnapshot::KnownFile;
using Chunk = ChunkedList<KnownFile>::Chunk;

/// Loads the path of a later file while the pass waits for the file system: the paths are scattered in
/// memory.
void PrefetchPathBehind(const Chunk& chunk, Chunk::const_iterator file)
{
    constexpr int distance = 8;
    if (chunk.cend() - file > distance)
        __builtin_prefetch(file[distance].path.constData());
}

/// One system call instead of a lookup and conversions to local time.
bool IsUnchanged(const KnownFile& file, FileTimeReader& timeReader)
{
    return file.modificationTime != unreadableTime && timeReader.Read(file.path) == file.modificationTime;
}

} // namespace

struct DirectoryChecker::Impl
{
    DirectorySnapshot snapshot;
    std::optional<DirectorySnapshot> beforeStart; ///< set while a start calls the predicate
    WatchTokenSource watch;
    WatchTokenSource pass;

    /// Clears settings and files. @return false when nothing is being watched
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

    void AddInitialFiles(const QString& dirPath, const WatchToken& token)
    {
        using Times = ListingOptions::Times;
        // A predicate may be slow, or change the file.
        const Times times = snapshot.settings.filter ? Times::ReadLater : Times::ReadWhileListing;
        // Intended: not cleared first, so a start after one with an empty path adds to its files.
        NewFiles files = NewFiles::ForStart(snapshot, dirPath, times, token);
        while (files.MoveNext())
            files.Add();
    }

    void ReportNewFiles(DirectoryChecker& checker, const QString& path)
    {
        NewFiles files = NewFiles::ForPass(snapshot, path, watch.GetToken());
        while (files.MoveNext())
            Q_EMIT checker.FileAdded(files.Add());
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
    // Intended: a checker that was started with an empty path still counts as idle.
    if (!impl->snapshot.settings.dirPath.isEmpty()) {
        LOG(INFO) << "Can't start watching " << dirPath.toStdString() << ", already watch "
                  << impl->snapshot.settings.dirPath.toStdString();
        return false;
    }

    // A copy, since the predicate or a slot may change or destroy the caller's string.
    const QString path = dirPath; // NOLINT(performance-unnecessary-copy-initialization)
    // A start inside the predicate of another start replaces that one.
    impl->UndoStart();
    impl->watch.Invalidate();
    const WatchToken token = impl->watch.GetToken();
    impl->beforeStart = impl->snapshot;
    auto undoStart = qScopeGuard([&] { // when the predicate throws
        if (!token.IsExpired())
            impl->UndoStart();
    });
    impl->snapshot.settings = {nameFilters, MakeSharedPredicate(filter), QString(), depth};
    impl->AddInitialFiles(path, token);
    undoStart.dismiss();
    // The predicate has started another watch.
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
    // A pass that a slot starts checks every known file and so ends the outer one, which would otherwise
    // treat a removed file as the entry now at its index. Intended: OnFileChanged() does not end a pass.
    impl->pass.Invalidate();
    const WatchToken pass = impl->pass.GetToken();

    const DirectorySnapshot::KnownFiles known = impl->snapshot.GetKnownFiles();
    // Intended: no test whether it is watching; an idle checker scans the current folder.
    impl->ReportNewFiles(*this, QString(impl->snapshot.settings.dirPath));
    FileTimeReader timeReader;
    auto info = known.infos.cbegin();
    for (const Chunk& chunk : known.files.GetChunks()) {
        for (auto file = chunk.cbegin(); file != chunk.cend(); ++file, ++info) {
            if (watch.IsExpired() || pass.IsExpired())
                return;
            PrefetchPathBehind(chunk, file);
            if (known.canCompareTimes && IsUnchanged(*file, timeReader))
                continue;
            timeReader.CloseFolder(); // a slot may rename it
            impl->ReportDifference(*this, info->absoluteFilePath(), impl->snapshot.GetIdentity());
        }
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
