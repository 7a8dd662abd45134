#pragma once

#include "Tests/Support/FolderModel.h"
#include "Tests/Support/FolderOperations.h"
#include "Tests/Support/Playground.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Zendra::LW {
class DirectoryWatcher;
}

namespace Tests {

/// Plays with files below a DirectoryWatcher and checks that its signals keep to its rules:
///
/// - A file is added only by a notice of the root folder, once, and when it is there and accepted; after such
/// a
///   notice, every accepted file is known.
/// - Only known and registered files change and go: not those that filled an empty snapshot. A change comes
///   with another modification time, a removal when the file is gone.
/// - A registered file whose time has changed or that is gone is reported, as long as it is the very file
/// that
///   was registered.
class WatcherRun
{
public:
    WatcherRun();
    ~WatcherRun();

    /// See CheckerRun::Play().
    std::string Play(Choices& choices, int operationCount);

    int OperationCount() const { return operationsDone; }
    int SignalCount() const { return signalsSeen; }

private:
    enum class Registration
    {
        Yes,
        Unsure, ///< of a file that was replaced or moved since, or that came with others into an empty
                ///< snapshot
        No
    };

    struct Registered
    {
        Registration how;
        /// Inode and kind: a folder in the place of a deleted file may get its inode.
        std::pair<std::uint64_t, std::uint32_t> identity;
    };

    /// What tells that the system gives a notice of a folder: name to inode and kind of each entry.
    using Entries = std::map<std::string, std::pair<std::uint64_t, std::uint32_t>>;

    void Restart(Choices& choices);
    void Perform(Choices& choices);
    void LoseSightOfMovedFiles();
    void CheckWhatMustBeKnown(bool rootHasChanged);
    void CheckList();
    void NoteAdded(const std::string& path);
    void NoteChanged(const std::string& path, std::int64_t time);
    void NoteRemoved(const std::string& path);
    void Complain(const std::string& text);
    Entries RootEntries() const;

    const Playground playground;
    FolderOperations operations;
    FolderModel::Settings settings;
    std::unique_ptr<Zendra::LW::DirectoryWatcher> watcher;
    std::map<std::string, std::int64_t> known; ///< path to modification time
    std::map<std::string, Registered> registered;
    std::set<std::string> sightings; ///< what is there and accepted
    bool rootChanges = false;
    bool isFilling = false;

    std::vector<std::string> history;
    std::string complaint;
    int operationsDone = 0;
    int signalsSeen = 0;
};

} // namespace Tests
