#include "Tests/Support/SignalLog.h"

#include "Lib/Util/FS/IDirectoryWatcher.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/FileTexts.h"

#include <algorithm>
#include <iterator>

using Zendra::LW::IDirectoryWatcher;

namespace Tests {

SignalLog::SignalLog(const IDirectoryWatcher& watcher, const QString& rootPath) : root(rootPath)
{
    const auto connect = [&](auto signal, auto slot) {
        QObject::connect(&watcher, signal, &connections, slot);
    };
    connect(&IDirectoryWatcher::WatchingStarted, [this] { entries.emplace_back("WatchingStarted"); });
    connect(&IDirectoryWatcher::WatchingStopped, [this] { entries.emplace_back("WatchingStopped"); });
    connect(&IDirectoryWatcher::FileAdded, [this](const QFileInfo& info) { AddFile("FileAdded", info); });
    connect(&IDirectoryWatcher::FileRemoved, [this](const QFileInfo& info) { AddFile("FileRemoved", info); });
    connect(&IDirectoryWatcher::FileChanged, [this](const QFileInfo& info) { AddFile("FileChanged", info); });
    connect(&IDirectoryWatcher::PathChanged, [this](const QString& path) { Add("PathChanged", path); });
}

std::vector<std::string> SignalLog::EntriesOf(const std::string& signal) const
{
    std::vector<std::string> found;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(found), [&](const std::string& entry) {
        return entry == signal || entry.rfind(signal + ' ', 0) == 0;
    });
    return found;
}

int SignalLog::Count(const std::string& entry) const
{
    return static_cast<int>(std::count(entries.begin(), entries.end(), entry));
}

bool SignalLog::WaitFor(const std::string& entry) const
{
    return WaitUntil([&] { return Contains(entry); });
}

bool SignalLog::WaitForCount(size_t count) const
{
    return WaitUntil([&] { return entries.size() >= count; });
}

void SignalLog::Clear()
{
    entries.clear();
    infos.clear();
}

void SignalLog::Add(const char* signal, const QString& path)
{
    entries.push_back(signal + (' ' + RelativePath(path, root)));
}

void SignalLog::AddFile(const char* signal, const QFileInfo& info)
{
    infos.push_back(info);
    Add(signal, info.filePath());
}

} // namespace Tests
