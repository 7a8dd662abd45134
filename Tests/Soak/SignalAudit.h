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

/// What has been done to a path, and what was said of it.
using Counts = std::map<std::string, long long>;

/// Holds every signal of a watcher against its list, and counts them, so that each can be explained in the
/// end.
class SignalAudit
{
public:
    SignalAudit(const Zendra::LW::IDirectoryWatcher& watcher, std::string name);
    SignalAudit(const SignalAudit&) = delete;
    SignalAudit& operator=(const SignalAudit&) = delete;

    /// Call it after every start and stop.
    void TakeList();
    /// Every path of which something was said, and how often.
    const Counts& SignalCounts() const { return signalCounts; }
    long long SignalCount() const { return total; }
    /// The first signal that was wrong; empty when none was.
    const std::string& Complaint() const { return complaint; }

private:
    std::set<std::string> Listed();
    void NoteAdded(const std::string& path);
    void NoteChanged(const std::string& path);
    void NoteRemoved(const std::string& path);
    void Count(const std::string& path);
    void Complain(const std::string& text, const std::string& path);

    const Zendra::LW::IDirectoryWatcher& watcher;
    const std::string name;
    std::set<std::string> known;
    std::set<std::string> everKnown; ///< since the last start
    Counts signalCounts;
    long long total = 0;
    std::string complaint;
    QObject connections; ///< last: goes first, and the connections with it
};

} // namespace Soak
