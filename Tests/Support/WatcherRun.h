#pragma once

#include "Tests/Support/FolderModel.h"
#include "Tests/Support/RandomRun.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

namespace Zendra::LW {
class DirectoryWatcher;
}

namespace Tests {

/// Performs file operations below a DirectoryWatcher and checks that its signals follow these rules:
///
/// - A file is added only by a notice of the root folder, once, and when it exists and is accepted. After
///   such a notice, every accepted file is known.
/// - Only known and registered files change and are removed, so not those that filled an empty snapshot. A
///   change comes with another modification time, a removal when the file is gone.
/// - A registered file whose time has changed or that is gone is reported, as long as the path still leads to
///   the file that was registered.
class WatcherRun final : public RandomRun
{
public:
    WatcherRun();
    ~WatcherRun();

    int SignalCount() const { return signalsSeen; }

private:
    enum class Registration
    {
        Yes,
        Unsure, ///< the file was replaced or moved since, or came with others into an empty snapshot
        No
    };

    /// Inode and kind: a folder in the place of a deleted file may get its inode.
    using Identity = std::pair<std::uint64_t, std::uint32_t>;

    struct Status
    {
        bool exists = false;
        std::int64_t time = 0;
        Identity identity;
    };

    struct RegisteredFile
    {
        Registration registration;
        Identity identity;
    };

    /// The entries of a folder by name. The system gives a notice of the folder when they change.
    using Entries = std::map<std::string, Identity>;

    void TakeTurn(Choices& choices) override;
    void Restart(Choices& choices);
    void MarkMovedFilesUnsure();
    void CheckForMissingSignals();
    void CheckList();
    void OnAdded(const std::string& path);
    void OnChanged(const std::string& path, std::int64_t time);
    void OnRemoved(const std::string& path);
    Entries RootEntries() const;
    static Status StatusOf(const std::string& path);

    FolderModel::Settings settings;
    std::unique_ptr<Zendra::LW::DirectoryWatcher> watcher;
    std::map<std::string, std::int64_t> known; ///< path to modification time
    std::map<std::string, RegisteredFile> registered;
    std::set<std::string> acceptedFiles; ///< after the latest operation
    bool hasRootChanged = false;
    bool isFilling = false;
    int signalsSeen = 0;
};

} // namespace Tests
