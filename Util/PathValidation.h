#pragma once

#include "Util/Export.h"

#include <QString>

namespace Zendra::Util {

/// Tells whether a path is good to write files into: an existing folder that can be listed and written to.
///
/// It does not ask for permissions, which do not tell the truth about read-only mounts, access lists, foreign
/// file systems or full disks. It tries: it lists the folder, then makes a hidden file of one byte in it and
/// removes it again. No existing file is ever touched. Whoever watches the folder gets a notice that it has
/// changed.
///
/// Two things leave the hidden file, ".write-test-" and a random number, behind: a process that is killed
/// between these two steps, and a folder in which files can be made and not removed, such as an append-only
/// one
/// (`chattr +a`) or some shares. Such a folder cannot be written to as this function understands it, and
/// keeps one more hidden file for every check.
///
/// A link to a folder is as good as the folder. The path is taken as the system takes it: relative to the
/// process's current folder unless it begins with a slash. Intended: a path that begins with a colon is no Qt
/// resource here, but a name like any other; nothing can be recorded into a resource.
///
/// Blocks for as long as the file system takes, which on a network mount can be long. Keeps no state, so any
/// thread may call it. Never throws.
///
/// @param path    the folder
/// @param reason  receives why the path is refused: the first that applies of
///                "No folder is given" (an empty path), "The folder does not exist" (also a dangling link and
///                a path that can name nothing: too long, or in a loop of links), "This is not a folder",
///                "The folder cannot be read", "The disk is full" (or the user's share of it) and "The folder
///                cannot be written to". Ready to show, with no full stop; translated in the context
///                "PathValidation". Left alone when the path is valid; may be null
/// @return whether files can be written into the folder right now
ZENDRA_UTIL_EXPORT bool IsThisPathValid(const QString& path, QString* reason);

} // namespace Zendra::Util
