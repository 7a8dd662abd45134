#include "Core/MoveEntryToTrash.h"

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/path.hpp>

#include <array>
#include <memory>

#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = boost::filesystem;

namespace Zendra::Core {
namespace {

using File = std::unique_ptr<GFile, decltype(&g_object_unref)>;
using Status = struct stat;

File MakeFile(const fs::path& path)
{
    return {g_file_new_for_path(path.c_str()), &g_object_unref};
}

/// All zero, which is no file's, when there is nothing.
Status StatusOf(const fs::path& path)
{
    Status status = {};
    return ::lstat(path.c_str(), &status) == 0 ? status : Status{};
}

bool SameFile(const Status& left, const Status& right)
{
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

/// The highest folder above the entry that lies on the same disk.
fs::path TopOfDisk(const fs::path& entry, dev_t disk)
{
    fs::path top = entry;
    while (StatusOf(top.parent_path()).st_dev == disk)
        top = top.parent_path();
    return top;
}

/// Every place where GIO may have put the entry.
std::array<fs::path, 3> TrashesFor(const fs::path& entry, const Status& status)
{
    const std::string user = std::to_string(::getuid());
    const fs::path top = TopOfDisk(entry, status.st_dev);
    return {fs::path(g_get_user_data_dir()) / "Trash", top / ".Trash" / user, top / (".Trash-" + user)};
}

/// What the trash keeps beside a file: where it came from, and when it went.
fs::path TrashInfoOf(const fs::path& trash, const fs::path& name)
{
    return trash / "info" / (name.string() + ".trashinfo");
}

/// A trash info that could not be written is empty.
bool HasTrashInfo(const fs::path& trash, const fs::path& name)
{
    return StatusOf(TrashInfoOf(trash, name)).st_size > 0;
}

/// The file in this trash, unless it has its trash info; empty when it has one, or is elsewhere.
fs::path FindWithoutTrashInfo(const fs::path& trash, const Status& status)
{
    boost::system::error_code error;
    for (fs::directory_iterator trashed(trash / "files", error), end; trashed != end;
         trashed.increment(error)) {
        fs::path name = trashed->path().filename();
        const Status found = StatusOf(trashed->path());
        if (SameFile(found, status) && !HasTrashInfo(trash, name))
            return name;
    }
    return {};
}

/// Unless something else has come to the entry's place: then the trash keeps it, rather than one of both be
/// lost.
void TakeBack(const fs::path& trash, const fs::path& name, const fs::path& entry)
{
    const File source = MakeFile(trash / "files" / name);
    const File target = MakeFile(entry);
    if (g_file_move(source.get(), target.get(), G_FILE_COPY_NOFOLLOW_SYMLINKS, nullptr, nullptr, nullptr,
                    nullptr))
        ::unlink(TrashInfoOf(trash, name).c_str());
}

/// Whether the entry, which is in a trash now, can be restored from there; if not, it is back in its place.
///
/// GIO moves a file also when it could not write the note, on a full disk and for a name to which no more
/// can be added, and says that all went well. No program could list or restore such a file.
bool TakeBackUnlessRestorable(const fs::path& entry, const Status& status)
{
    for (const fs::path& trash : TrashesFor(entry, status)) {
        const fs::path name = FindWithoutTrashInfo(trash, status);
        if (!name.empty()) {
            TakeBack(trash, name, entry);
            return false;
        }
    }
    return true;
}

} // namespace

bool MoveEntryToTrash(const std::string& entry)
{
    // GIO would make the trash below the current folder, where nobody looks for it.
    if (!g_path_is_absolute(g_get_user_data_dir()))
        return false;

    const Status status = StatusOf(entry);
    const File file = MakeFile(entry);
    if (!g_file_trash(file.get(), nullptr, nullptr))
        return false;
    return TakeBackUnlessRestorable(entry, status);
}

} // namespace Zendra::Core
