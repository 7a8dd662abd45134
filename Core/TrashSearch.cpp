#include "Core/TrashSearch.h"

#include <algorithm>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <dirent.h>
#include <gio/gio.h>
#include <unistd.h>

namespace fs = boost::filesystem;

namespace Zendra::Core {
namespace {

using Status = struct stat;

struct CloseFolder
{
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// All zero when there is no entry; no entry has the inode number 0.
Status StatusOf(const fs::path& path)
{
    Status status = {};
    return ::lstat(path.c_str(), &status) == 0 ? status : Status{};
}

/// Follows links, since a trash may be a link.
bool IsOnDisk(const fs::path& folder, dev_t disk)
{
    Status status = {};
    return ::stat(folder.c_str(), &status) == 0 && status.st_dev == disk;
}

bool IsNewer(const timespec& left, const timespec& right)
{
    return std::tie(left.tv_sec, left.tv_nsec) > std::tie(right.tv_sec, right.tv_nsec);
}

/// The highest folder above the entry that is on the same disk.
fs::path TopOfDisk(const fs::path& entry, dev_t disk)
{
    fs::path top = entry;
    while (StatusOf(top.parent_path()).st_dev == disk)
        top = top.parent_path();
    return top;
}

/// Every trash that GIO may have used: it never moves an entry to another disk.
std::vector<fs::path> TrashesFor(const fs::path& entry, dev_t disk)
{
    const std::string user = std::to_string(::getuid());
    const fs::path top = TopOfDisk(entry, disk);
    std::vector<fs::path> trashes = {fs::path(g_get_user_data_dir()) / "Trash", top / ".Trash" / user,
                                     top / (".Trash-" + user)};
    const auto isElsewhere = [disk](const fs::path& trash) { return !IsOnDisk(trash / "files", disk); };
    trashes.erase(std::remove_if(trashes.begin(), trashes.end(), isElsewhere), trashes.end());
    return trashes;
}

/// The names that GIO tries one after the other: "take.1.mp4", "take.2.1.mp4", "take.3.1.mp4".
std::string NameInTrash(const std::string& name, int attempt)
{
    if (attempt == 1)
        return name;
    const std::size_t dot = std::min(name.find('.'), name.size());
    return name.substr(0, dot) + '.' + std::to_string(attempt) + name.substr(dot);
}

class TrashSearch
{
public:
    explicit TrashSearch(const Status& status) : wanted(status) {}

    /// Tries the names that GIO gives to an entry of this name, and stops as GIO does at the first that is
    /// free.
    void TryNamesOf(const std::string& entryName, const fs::path& trash)
    {
        for (int attempt = 1; !IsFinished(); ++attempt) {
            const bool isTaken = CheckName(NameInTrash(entryName, attempt), trash);
            if (!isTaken)
                return;
        }
    }

    /// A listing contains the inode numbers, so only the entry and its other hard links are examined.
    void SearchAll(const fs::path& trash)
    {
        const std::unique_ptr<DIR, CloseFolder> folder(::opendir((trash / "files").c_str()));
        if (!folder)
            return;
        while (!IsFinished()) {
            const dirent* const item = ::readdir(folder.get());
            if (!item)
                return;
            if (item->d_ino == wanted.st_ino)
                CheckName(item->d_name, trash);
        }
    }

    std::optional<TrashedEntry> found;

private:
    /// @return whether the name is taken; a trash info, even an empty one, reserves it
    bool CheckName(const std::string& name, const fs::path& trash)
    {
        const fs::path file = trash / "files" / name;
        const fs::path info = trash / "info" / (name + ".trashinfo");
        const Status fileStatus = StatusOf(file);
        const Status infoStatus = StatusOf(info);
        const bool isWanted = fileStatus.st_dev == wanted.st_dev && fileStatus.st_ino == wanted.st_ino;
        if (isWanted && (!found || IsNewer(infoStatus.st_mtim, newest))) {
            found = TrashedEntry{file, info, infoStatus.st_size > 0};
            newest = infoStatus.st_mtim;
        }
        return infoStatus.st_ino != 0;
    }

    /// Other hard links to the file may be in the trash as well. The entry is the one with the newest trash
    /// info, since GIO has just written it.
    bool IsFinished() const { return found && (S_ISDIR(wanted.st_mode) || wanted.st_nlink == 1); }

    const Status wanted;
    timespec newest = {};
};

} // namespace

std::optional<TrashedEntry> FindInTrash(const fs::path& path, const Status& status)
{
    const std::vector<fs::path> trashes = TrashesFor(path, status.st_dev);
    TrashSearch search(status);
    for (const fs::path& trash : trashes)
        search.TryNamesOf(path.filename().native(), trash);
    if (search.found)
        return search.found;

    // GIO shortens long names, in a way that depends on its version.
    for (const fs::path& trash : trashes)
        search.SearchAll(trash);
    return search.found;
}

} // namespace Zendra::Core
