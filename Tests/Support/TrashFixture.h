#pragma once

#include "Tests/Support/ByteFolder.h"

#include <gmock/gmock.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace Tests {

// Options of TrashTool.cpp.
inline const std::string asOtherUser = "--as-other-user";
inline const std::string fullDisk = "--full-disk";
inline const std::string loseInfo = "--lose-info";
inline const std::string replaceFile = "--replace-file";
inline const std::string renameInTrash = "--rename-in-trash=renamed";
inline const std::string fewLstatCalls = "--few-lstat-calls";
inline const std::string noListing = "--no-listing";

using Arguments = std::vector<std::string>;

struct Outcome
{
    int exitCode = -1;
    std::string output;
    std::string errors;
};

bool EntryExists(const std::string& path);
ino_t InodeOf(const std::string& path);
/// @return the path of the program; empty if it is not installed
std::string FindProgram(const std::string& name);

/// A user's home without a trash, and a folder "work" beside it with files to trash.
///
/// trash-cli, which other people wrote, lists and restores what is in the trash.
class TrashFixture : public testing::Test, protected ByteFolder
{
protected:
    static void SetUpTestSuite();
    void SetUp() override;

    Outcome Run(const std::string& program, const Arguments& arguments, const std::string& input = {}) const;

    /// Calls MoveToTrash() in another process, since a process reads the environment for the trash only once.
    bool Trash(const std::string& path, Arguments options = {}) const;

    /// The output of trash-list: a line with date and original path for each entry.
    std::string TrashList() const;

    /// The original path of the only entry.
    std::string OnlyTrashedPath() const;

    /// Lets trash-restore restore the entry with this number.
    void Restore(int index = 0) const;

    /// Every file with its content and every link with its target, also in the home and in its trash.
    std::map<std::string, std::string> Files() const;

    /// Trashes an entry, given by any path to it, and lets trash-cli list and restore it.
    void ExpectTrashedAndRestored(const std::string& path, const std::string& entry) const;
    void ExpectTrashedAndRestored(const std::string& entry) const { ExpectTrashedAndRestored(entry, entry); }

    void ExpectRefused(const std::string& path, const Arguments& options = {}) const;

    /// Makes a hard link to a file in the folder "files" of the trash. It has no info, so it cannot be
    /// restored.
    std::string HardLinkIntoTrash(const std::string& file, const std::string& name) const;

    /// Takes the names in the trash that would be given to further files of this name.
    void TakeNamesInTrashAfter(const std::string& name) const;

    /// Puts older files with their infos into the trash.
    void FillTrash(int count) const;

    /// XDG_DATA_HOME of the programs that are run; without a value it is not set.
    std::optional<std::string> dataHome = Path("home/data");
};

} // namespace Tests
