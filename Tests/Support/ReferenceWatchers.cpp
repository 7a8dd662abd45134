#include "Tests/Support/ReferenceWatchers.h"

#include "Lib/Util/FS/DirectoryChecker.h"
#include "Lib/Util/FS/DirectoryWatcher.h"

#include <QDateTime>
#include <QDir>
#include <QFileSystemWatcher>

#include <algorithm>

using Zendra::LW::DirectoryChecker;
using Zendra::LW::DirectoryWatcher;
using Zendra::LW::IDirectoryWatcher;

namespace Tests {
namespace {

using Predicate = ComparedWatcher::Predicate;
using Log = ComparedWatcher::Log;

bool HasLessName(const QFileInfo& a, const QFileInfo& b)
{
    return a.fileName() < b.fileName();
}

/// Reads the modification time. QFileInfo caches it, so the entry keeps the present one.
const QFileInfo& WithTimeRead(const QFileInfo& info)
{
    info.lastModified();
    return info;
}

template <typename Watcher>
class LibraryWatcher : public ComparedWatcher
{
public:
    explicit LibraryWatcher(const Log& log)
    {
        const auto connect = [this](auto signal, auto slot) { QObject::connect(&watcher, signal, slot); };
        connect(&IDirectoryWatcher::WatchingStarted, [log] { log("WatchingStarted"); });
        connect(&IDirectoryWatcher::WatchingStopped, [log] { log("WatchingStopped"); });
        connect(&IDirectoryWatcher::PathChanged,
                [log](const QString& path) { log("PathChanged " + path.toStdString()); });
        connect(&IDirectoryWatcher::FileAdded,
                [log](const QFileInfo& info) { log("FileAdded " + DescribedEntry(info)); });
        connect(&IDirectoryWatcher::FileChanged,
                [log](const QFileInfo& info) { log("FileChanged " + DescribedEntry(info)); });
        connect(&IDirectoryWatcher::FileRemoved,
                [log](const QFileInfo& info) { log("FileRemoved " + info.filePath().toStdString()); });
    }

    bool Start(const QString& dirPath, const QStringList& nameFilters, const Predicate& filter,
               unsigned int depth) override
    {
        return watcher.StartWatching(dirPath, nameFilters, filter, depth);
    }
    void Stop() override { watcher.StopWatching(); }
    void CheckFolder() override
    {
        if constexpr (std::is_same_v<Watcher, DirectoryChecker>)
            watcher.CheckFolder();
    }
    void OnDirectoryChanged(const QString& path) override { watcher.OnDirectoryChanged(path); }
    void OnFileChanged(const QString& path) override { watcher.OnFileChanged(path); }
    QString DirPath() const override { return watcher.GetWatchedDirPath(); }
    QList<QFileInfo> Files() const override { return watcher.GetFileInfoList(); }
    QStringList RegisteredFiles() const override
    {
        const auto* const system = watcher.template findChild<QFileSystemWatcher*>();
        return system ? system->files() : QStringList();
    }

private:
    Watcher watcher;
};

/// The rules that both kinds share.
class Reference : public ComparedWatcher
{
public:
    Reference(const Log& logEntries, const OrderEqualNames& order) : log(logEntries), orderEqualNames(order)
    {
    }

    QString DirPath() const override { return dirPath; }
    QList<QFileInfo> Files() const override { return fileInfos; }

protected:
    bool Accepts(const QFileInfo& info) const { return !filter || filter(info); }

    QList<QFileInfo> SortedScan(const QString& path) const
    {
        QList<QFileInfo> files = Scan(path, depth);
        std::sort(files.begin(), files.end(), HasLessName);
        orderEqualNames(files);
        return files;
    }

    int IndexOf(const QFileInfo& info) const
    {
        const auto range = std::equal_range(fileInfos.begin(), fileInfos.end(), info, HasLessName);
        if (range.first == fileInfos.end())
            return -1;
        for (auto entry = range.first; entry != range.second; ++entry) {
            if (AreSameFile(*entry, info))
                return static_cast<int>(entry - fileInfos.begin());
        }
        return static_cast<int>(range.first - fileInfos.begin());
    }

    void AddNewFiles(const QString& path)
    {
        const QList<QFileInfo> scanned = SortedScan(path);
        if (fileInfos.isEmpty()) {
            for (const QFileInfo& entry : scanned) {
                if (!Accepts(entry))
                    continue;
                fileInfos.append(WithTimeRead(entry));
                log("FileAdded " + DescribedEntry(entry));
            }
            return;
        }
        for (const QFileInfo& entry : scanned) {
            const int index = IndexOf(entry);
            if (index != -1 && AreSameFile(fileInfos.at(index), entry))
                continue;
            if (!Accepts(entry))
                continue;
            fileInfos.insert(index == -1 ? fileInfos.size() : index, WithTimeRead(entry));
            Register(entry);
            log("FileAdded " + DescribedEntry(entry));
        }
    }

    void CheckFile(const QString& path)
    {
        const QFileInfo info(path);
        const int index = IndexOf(info);
        const bool isInside = 0 <= index && index < fileInfos.size();
        if (!info.exists()) {
            if (isInside)
                fileInfos.removeAt(index);
            Unregister(path);
            log("FileRemoved " + path.toStdString());
            return;
        }
        if (!isInside || info.lastModified() == fileInfos.at(index).lastModified())
            return;
        fileInfos.replace(index, info);
        log("FileChanged " + DescribedEntry(info));
    }

    virtual void Register(const QFileInfo& /*entry*/) {}
    virtual void Unregister(const QString& /*path*/) {}

    QList<QFileInfo> fileInfos;
    QStringList nameFilters;
    Predicate filter;
    QString dirPath;
    unsigned int depth = 0;
    Log log;

private:
    QList<QFileInfo> Scan(const QString& path, unsigned int levels) const
    {
        const QDir folder(path);
        QList<QFileInfo> files = folder.entryInfoList(nameFilters, QDir::Files, QDir::NoSort);
        if (levels == 0)
            return files;
        const QList<QFileInfo> subfolders =
            folder.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort);
        for (const QFileInfo& subfolder : subfolders)
            files.append(Scan(subfolder.absoluteFilePath(), levels - 1));
        return files;
    }

    OrderEqualNames orderEqualNames;
};

class ReferenceChecker : public Reference
{
public:
    using Reference::Reference;

    bool Start(const QString& path, const QStringList& names, const Predicate& predicate,
               unsigned int levels) override
    {
        if (!dirPath.isEmpty())
            return false;
        nameFilters = names;
        filter = predicate;
        depth = levels;
        for (const QFileInfo& entry : SortedScan(path)) {
            if (Accepts(entry))
                fileInfos.append(WithTimeRead(entry));
        }
        dirPath = path;
        log("PathChanged " + path.toStdString());
        log("WatchingStarted");
        return true;
    }

    void Stop() override
    {
        if (dirPath.isEmpty())
            return;
        dirPath = QString();
        filter = nullptr;
        fileInfos.clear();
        nameFilters.clear();
        depth = 0;
        log("WatchingStopped");
    }

    void CheckFolder() override
    {
        const QList<QFileInfo> known = fileInfos;
        AddNewFiles(dirPath);
        for (const QFileInfo& entry : known)
            CheckFile(entry.absoluteFilePath());
    }

    void OnDirectoryChanged(const QString& path) override { AddNewFiles(path); }
    void OnFileChanged(const QString& path) override { CheckFile(path); }
    QStringList RegisteredFiles() const override { return {}; }
};

class ReferenceWatcher : public Reference
{
public:
    using Reference::Reference;

    bool Start(const QString& path, const QStringList& names, const Predicate& predicate,
               unsigned int levels) override
    {
        if (system)
            return false;
        dirPath = path;
        nameFilters = names;
        filter = predicate;
        depth = levels;
        system = std::make_unique<QFileSystemWatcher>(QStringList{path});
        for (const QFileInfo& entry : SortedScan(path)) {
            if (!Accepts(entry))
                continue;
            fileInfos.append(WithTimeRead(entry));
            Register(entry);
        }
        log("WatchingStarted");
        return true;
    }

    void Stop() override
    {
        if (!system)
            return;
        system.reset();
        filter = nullptr;
        fileInfos.clear();
        nameFilters.clear();
        depth = 0;
        log("WatchingStopped");
    }

    void CheckFolder() override {}
    void OnDirectoryChanged(const QString& path) override { AddNewFiles(path); }
    void OnFileChanged(const QString& path) override { CheckFile(path); }
    QStringList RegisteredFiles() const override { return system ? system->files() : QStringList(); }

private:
    void Register(const QFileInfo& entry) override
    {
        if (system)
            system->addPath(entry.absoluteFilePath());
    }
    void Unregister(const QString& path) override
    {
        if (system)
            system->removePath(path);
    }

    std::unique_ptr<QFileSystemWatcher> system;
};

} // namespace

std::unique_ptr<ComparedWatcher> MakeLibraryWatcher(WatcherKind kind, const Log& log)
{
    if (kind == WatcherKind::Checker)
        return std::make_unique<LibraryWatcher<DirectoryChecker>>(log);
    return std::make_unique<LibraryWatcher<DirectoryWatcher>>(log);
}

std::unique_ptr<ComparedWatcher> MakeReferenceWatcher(WatcherKind kind, const Log& log,
                                                      const OrderEqualNames& orderEqualNames)
{
    if (kind == WatcherKind::Checker)
        return std::make_unique<ReferenceChecker>(log, orderEqualNames);
    return std::make_unique<ReferenceWatcher>(log, orderEqualNames);
}

bool AreSameFile(const QFileInfo& a, const QFileInfo& b)
{
    if (a.filePath() == b.filePath())
        return true;
    if (a.canonicalFilePath().isEmpty() || b.canonicalFilePath().isEmpty())
        return a.absoluteFilePath() == b.absoluteFilePath();
    return a == b;
}

std::string DescribedEntry(const QFileInfo& info)
{
    const QDateTime time = info.lastModified();
    return info.filePath().toStdString() + ", " + std::to_string(info.size()) + " bytes, "
           + (time.isValid() ? std::to_string(time.toMSecsSinceEpoch()) : "no time");
}

std::vector<std::string> DescribedEntries(const QList<QFileInfo>& infos)
{
    std::vector<std::string> texts;
    for (const QFileInfo& info : infos)
        texts.push_back(DescribedEntry(info));
    return texts;
}

} // namespace Tests
