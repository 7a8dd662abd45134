#pragma once

#include <boost/filesystem/path.hpp>

#include <optional>

#include <sys/stat.h>

namespace Zendra::Core {

/// An entry in one of the user's trashes, as freedesktop.org describes them.
struct TrashedEntry
{
    boost::filesystem::path file; ///< where it lies now
    boost::filesystem::path info; ///< the trash info: where it came from and when it went
    bool hasInfo; ///< false when there is no trash info, or it could not be written and is empty
};

/// Finds an entry that GIO has just moved to the trash.
///
/// Costs a few system calls when the trash holds it under a name that GIO makes from its own, and a listing
/// of the trash otherwise.
///
/// @param path    where it was: absolute, and no folder above it is a link
/// @param status  what lstat() said of it there
/// @return nothing when it is in no trash (any more)
std::optional<TrashedEntry> FindInTrash(const boost::filesystem::path& path, const struct stat& status);

} // namespace Zendra::Core
