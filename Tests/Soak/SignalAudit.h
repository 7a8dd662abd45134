#pragma once

#include <QObject>

#include <map>
#include <set>
#include <string>

class QFileInfo;

namespace Zendra::LW {
class IDirectoryWatcher;
}

namespace Soak {

/// How often something happened, by path.
using Counts = std::map<std::string, long long>;

/// Compares every signal of a watcher with its list, and counts the signals of each path, so that they can be
/// compared with the operations in the end.
class SignalAudit
{
public:
    SignalAudit(const Zendra::LW::IDirectoryWatcher& watcher, std::string name);
    SignalAudit(const SignalAudit&) = delete;
    SignalAudit& operator=(const SignalAudit&) = delete;

    /// Begins with the watcher's present list; to be called after every start.
    void ReadList();
    /// The number of signals about each path.
    const Counts& SignalCounts() const { return signalCounts; }
    long long SignalCount() const { return total; }
    /// Describes the first wrong signal; empty when all were right.
    const std::string& Error() const { return error; }

private:
    std::set<std::string> ListedPaths();
    void OnAdded(const std::string& path);
    void OnChanged(const std::string& path);
    void OnRemoved(const std::string& path);
    void Count(const std::string& path);
    void SetError(const std::string& text, const std::string& path);

    const Zendra::LW::IDirectoryWatcher& watcher;
    const std::string name;
    std::set<std::string> known;
    std::set<std::string> everKnown; ///< since the last start
    Counts signalCounts;
    long long total = 0;
    std::string error;
    QObject connections; ///< last: is destroyed first, and ends the connections
};

} // namespace Soak
