#pragma once

#include <boost/filesystem/path.hpp>

#include <optional>

#include <sys/stat.h>

namespace Zendra::Core {

/// An entry in one of the user's trashes, as freedesktop.org describes them.
struct TrashedEntry
{
    boost::filesystem::path file; ///< where it is now
    boost::filesystem::path info; ///< the trash info: its original path and when it was deleted
    bool hasInfo; ///< false when the trash info is missing, or empty since it could not be written
};

/// Finds an entry that GIO has just moved to the trash.
///
/// Costs a few system calls when it is there under a name that GIO derives from its own, and a listing of the
/// trash otherwise.
///
/// @param path    where it was: absolute, and no folder above it is a link
/// @param status  what lstat() said of it there
/// @return nothing when it is not in any trash, or no longer
std::optional<TrashedEntry> FindInTrash(const boost::filesystem::path& path, const struct stat& status);

} // namespace Zendra::Core
