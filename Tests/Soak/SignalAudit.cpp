#include "Tests/Soak/SignalAudit.h"

#include "Lib/Util/FS/IDirectoryWatcher.h"

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
            [this](const QFileInfo& info) { NoteAdded(info.filePath().toStdString()); });
    connect(&IDirectoryWatcher::FileChanged,
            [this](const QFileInfo& info) { NoteChanged(info.filePath().toStdString()); });
    connect(&IDirectoryWatcher::FileRemoved,
            [this](const QFileInfo& info) { NoteRemoved(info.filePath().toStdString()); });
}

void SignalAudit::TakeList()
{
    known = Listed();
    everKnown = known;
}

std::set<std::string> SignalAudit::Listed()
{
    const QList<QFileInfo> infos = watcher.GetFileInfoList();
    const auto hasLessName = [](const QFileInfo& a, const QFileInfo& b) {
        return a.fileName() < b.fileName();
    };
    if (!std::is_sorted(infos.begin(), infos.end(), hasLessName))
        Complain("is out of order at", watcher.GetWatchedDirPath().toStdString());
    std::set<std::string> paths;
    for (const QFileInfo& info : infos) {
        if (!paths.insert(info.filePath().toStdString()).second)
            Complain("lists twice", info.filePath().toStdString());
    }
    return paths;
}

void SignalAudit::NoteAdded(const std::string& path)
{
    Count(path);
    if (!known.insert(path).second)
        Complain("adds what it knows:", path);
    everKnown.insert(path);
    if (Listed() != known)
        Complain("lists something else after it adds", path);
}

void SignalAudit::NoteChanged(const std::string& path)
{
    Count(path);
    if (known.count(path) == 0)
        Complain("changes what it does not know:", path);
    if (Listed() != known)
        Complain("lists something else after it changes", path);
}

void SignalAudit::NoteRemoved(const std::string& path)
{
    Count(path);
    if (everKnown.count(path) == 0)
        Complain("removes what it never knew:", path);
    // Of two files of one name that vanish at the same time either may go first, as both are equal then.
    const std::set<std::string> listed = Listed();
    const bool isSubset = std::includes(known.begin(), known.end(), listed.begin(), listed.end());
    if (!isSubset || known.size() - listed.size() > 1)
        Complain("lists something else after it removes", path);
    known = listed;
}

void SignalAudit::Count(const std::string& path)
{
    ++signalCounts[path];
    ++total;
}

void SignalAudit::Complain(const std::string& text, const std::string& path)
{
    if (complaint.empty())
        complaint = "the " + name + ' ' + text + ' ' + path;
}

} // namespace Soak
