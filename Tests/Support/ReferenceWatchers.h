#pragma once

#include <QFileInfo>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Tests {

/// The interface of the watchers that a run compares.
class ComparedWatcher
{
public:
    using Predicate = std::function<bool(const QFileInfo&)>;
    /// Called for every signal, for example with "FileAdded /folder/a.txt, 7 bytes, 1500000000000".
    using Log = std::function<void(const std::string& entry)>;

    virtual ~ComparedWatcher() = default;

    virtual bool Start(const QString& dirPath, const QStringList& nameFilters, const Predicate& filter,
                       unsigned int depth) = 0;
    virtual void Stop() = 0;
    /// Does nothing for the event-driven watcher.
    virtual void CheckFolder() = 0;
    virtual void OnDirectoryChanged(const QString& path) = 0;
    virtual void OnFileChanged(const QString& path) = 0;
    virtual QString DirPath() const = 0;
    virtual QList<QFileInfo> Files() const = 0;
    /// The files that are registered with the system.
    virtual QStringList RegisteredFiles() const = 0;
};

/// Orders the files of one name in a list that is sorted by name.
using OrderEqualNames = std::function<void(QList<QFileInfo>& sorted)>;

enum class WatcherKind
{
    Checker,
    Watcher
};

std::unique_ptr<ComparedWatcher> MakeLibraryWatcher(WatcherKind kind, const ComparedWatcher::Log& log);

/// The rules implemented with QDir, std::sort, std::equal_range and QFileInfo, without regard to speed.
///
/// The log must not call the watcher: this reference covers no calls from slots.
///
/// @param orderEqualNames  called after each sort, since the rules leave the order of equal names open
std::unique_ptr<ComparedWatcher> MakeReferenceWatcher(WatcherKind kind, const ComparedWatcher::Log& log,
                                                      const OrderEqualNames& orderEqualNames);

/// Whether two entries are the same file, as QFileInfo::operator== compares them. A missing file has no
/// canonical path, so then the absolute paths decide.
bool AreSameFile(const QFileInfo& a, const QFileInfo& b);

/// The text of an entry in the log: path, size and time.
std::string DescribedEntry(const QFileInfo& info);
std::vector<std::string> DescribedEntries(const QList<QFileInfo>& infos);

} // namespace Tests
