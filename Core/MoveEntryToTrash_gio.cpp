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

/// Moves the entry back, unless its path is taken by now: then both are kept, this one in the trash.
void MoveBack(const TrashedEntry& trashed, const fs::path& entry)
{
    const File source = MakeFile(trashed.file);
    const File target = MakeFile(entry);
    if (g_file_move(source.get(), target.get(), G_FILE_COPY_NOFOLLOW_SYMLINKS, nullptr, nullptr, nullptr,
                    nullptr))
        ::unlink(trashed.info.c_str());
}

/// GIO reports success for some files that are not in the trash, or that no program could restore from there.
/// This moves them back.
///
/// GIO also moves a file whose trash info it could not write, on a full disk or because the name is too long;
/// no program can list or restore that file. It does not move a file if another hard link to it is in the
/// trash under the same name without a trash info, since rename() does nothing for two links to one file.
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
        MoveBack(*trashed, entry);
    return trashed->hasInfo;
}

} // namespace

bool MoveEntryToTrash(const std::string& entry)
{
    // GIO would make the trash below the current folder, where no program looks for it.
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
