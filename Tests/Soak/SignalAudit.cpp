#include "Tests/Soak/SignalAudit.h"

#include "Lib/Util/FS/IDirectoryWatcher.h"
#include "Tests/Support/FileTexts.h"

#include <algorithm>
#include <utility>

using Zendra::LW::IDirectoryWatcher;

namespace Soak {

SignalAudit::SignalAudit(const IDirectoryWatcher& auditedWatcher, std::string auditedName)
    : watcher(auditedWatcher), name(std::move(auditedName))
{
    const auto connect = [&](auto signal, auto slot) {
        QObject::connect(&watcher, signal, &connections, slot);
    };
    connect(&IDirectoryWatcher::FileAdded,
            [this](const QFileInfo& info) { OnAdded(info.filePath().toStdString()); });
    connect(&IDirectoryWatcher::FileChanged,
            [this](const QFileInfo& info) { OnChanged(info.filePath().toStdString()); });
    connect(&IDirectoryWatcher::FileRemoved,
            [this](const QFileInfo& info) { OnRemoved(info.filePath().toStdString()); });
}

void SignalAudit::ReadList()
{
    known = ListedPaths();
    everKnown = known;
}

std::set<std::string> SignalAudit::ListedPaths()
{
    const QList<QFileInfo> infos = watcher.GetFileInfoList();
    if (!Tests::AreSortedByName(infos))
        SetError("is unsorted in", watcher.GetWatchedDirPath().toStdString());
    std::set<std::string> paths;
    for (const QFileInfo& info : infos) {
        if (!paths.insert(info.filePath().toStdString()).second)
            SetError("lists twice:", info.filePath().toStdString());
    }
    return paths;
}

void SignalAudit::OnAdded(const std::string& path)
{
    Count(path);
    if (!known.insert(path).second)
        SetError("adds a known file:", path);
    everKnown.insert(path);
    if (ListedPaths() != known)
        SetError("has a wrong list after adding", path);
}

void SignalAudit::OnChanged(const std::string& path)
{
    Count(path);
    if (known.count(path) == 0)
        SetError("changes an unknown file:", path);
    if (ListedPaths() != known)
        SetError("has a wrong list after changing", path);
}

void SignalAudit::OnRemoved(const std::string& path)
{
    Count(path);
    if (everKnown.count(path) == 0)
        SetError("removes an unknown file:", path);
    // Two missing files of one name count as equal, so either may be removed from the list first.
    const std::set<std::string> listed = ListedPaths();
    const bool isSubset = std::includes(known.begin(), known.end(), listed.begin(), listed.end());
    if (!isSubset || known.size() - listed.size() > 1)
        SetError("has a wrong list after removing", path);
    known = listed;
}

void SignalAudit::Count(const std::string& path)
{
    ++signalCounts[path];
    ++total;
}

void SignalAudit::SetError(const std::string& text, const std::string& path)
{
    if (error.empty())
        error = "the " + name + ' ' + text + ' ' + path;
}

} // namespace Soak
