#pragma once

#include <QFileInfo>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <string>

namespace Tests {

/// A watcher as a run that compares two of them sees it.
class ComparedWatcher
{
public:
    using Predicate = std::function<bool(const QFileInfo&)>;
    /// Is called for every signal: "FileAdded /folder/a.txt, 7 bytes, 1500000000000".
    using Log = std::function<void(const std::string& entry)>;

    virtual ~ComparedWatcher() = default;

    virtual bool Start(const QString& dirPath, const QStringList& nameFilters, const Predicate& filter,
                       unsigned int depth) = 0;
    virtual void Stop() = 0;
    /// Does nothing for the watcher that is driven by notices.
    virtual void CheckFolder() = 0;
    virtual void OnDirectoryChanged(const QString& path) = 0;
    virtual void OnFileChanged(const QString& path) = 0;
    virtual QString DirPath() const = 0;
    virtual QList<QFileInfo> Files() const = 0;
    /// The files that the system was asked to tell about.
    virtual QStringList RegisteredFiles() const = 0;
};

/// Puts the files of one name, which stand together in a sorted list, into an order of its own.
using OrderEqualNames = std::function<void(QList<QFileInfo>& sorted)>;

enum class WatcherKind
{
    Checker,
    Watcher
};

std::unique_ptr<ComparedWatcher> MakeLibraryWatcher(WatcherKind kind, const ComparedWatcher::Log& log);

/// The rules written down with QDir, std::sort, std::equal_range and QFileInfo, with no thought of speed.
///
/// What slots do to the watcher that calls them is not among them: the log must not call it.
///
/// @param orderEqualNames  is called after each sort, whose order of equal names is left open
std::unique_ptr<ComparedWatcher> MakeReferenceWatcher(WatcherKind kind, const ComparedWatcher::Log& log,
                                                      const OrderEqualNames& orderEqualNames);

/// Whether two entries are of the same file, as QFileInfo::operator== has it. A file that has vanished has no
/// canonical path, so then the absolute paths decide.
bool AreSameFile(const QFileInfo& a, const QFileInfo& b);

/// An entry as the log has it, with the size and time that it holds.
std::string DescribedEntry(const QFileInfo& info);

} // namespace Tests
