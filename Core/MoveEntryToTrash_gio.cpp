#include "Core/MoveEntryToTrash.h"

#include "Core/TrashSearch.h"

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

bool IsAt(const fs::path& path, const Status& status)
{
    Status found = {};
    return ::lstat(path.c_str(), &found) == 0 && found.st_dev == status.st_dev
           && found.st_ino == status.st_ino;
}

/// Unless something else has come to the entry's place: then the trash keeps it, rather than one of both be
/// lost.
void TakeBack(const TrashedEntry& trashed, const fs::path& entry)
{
    const File source = MakeFile(trashed.file);
    const File target = MakeFile(entry);
    if (g_file_move(source.get(), target.get(), G_FILE_COPY_NOFOLLOW_SYMLINKS, nullptr, nullptr, nullptr,
                    nullptr))
        ::unlink(trashed.info.c_str());
}

/// GIO says of some files that they are in the trash and they are not, or nobody could restore them. These
/// are back in their place afterwards.
///
/// It moves a file also when the trash info could not be written, on a full disk and for a name to which no
/// more can be added: then no program can list or restore it. And it does not move a file when another hard
/// link to it lies in the trash under its name and has no trash info: for the system the two are one already.
///
/// @return whether the entry is in the trash and can be restored from there
bool TakeBackUnlessRestorable(const fs::path& entry, const Status& status)
{
    const std::optional<TrashedEntry> trashed = FindInTrash(entry, status);
    if (!trashed)
        return true;
    if (IsAt(entry, status)) {
        ::unlink(trashed->info.c_str());
        return false;
    }
    if (!trashed->hasInfo)
        TakeBack(*trashed, entry);
    return trashed->hasInfo;
}

} // namespace

bool MoveEntryToTrash(const std::string& entry)
{
    // GIO would make the trash below the current folder, where nobody looks for it.
    if (!g_path_is_absolute(g_get_user_data_dir()))
        return false;

    Status status = {};
    if (::lstat(entry.c_str(), &status) != 0)
        return false;
    const File file = MakeFile(entry);
    if (!g_file_trash(file.get(), nullptr, nullptr))
        return false;
    return TakeBackUnlessRestorable(entry, status);
}

} // namespace Zendra::Core
