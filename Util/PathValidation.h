#pragma once

#include "Util/Export.h"

#include <QString>

namespace Zendra::Util {

/// Tells whether files can be written into a folder: whether it exists and can be listed and written to.
///
/// Permission bits do not account for read-only mounts, access control lists, foreign file systems or full
/// disks, so they are not checked. The function lists the folder instead, then creates a hidden file of one
/// byte in it and removes that again. No existing file is ever touched. Programs that watch the folder are
/// notified of a change.
///
/// The hidden file, ".write-test-" with a random suffix, stays in two cases: the process is killed between
/// the two steps, or the folder allows files to be created but not removed, such as an append-only one
/// (`chattr +a`) and some network shares. The second kind of folder is refused as not writable, and gets one
/// more hidden file with every check.
///
/// A link to a folder counts as the folder. A path that does not begin with a slash is relative to the
/// process's current folder. Intended: a path that begins with a colon is not a Qt resource here but an
/// ordinary file name, since nothing can be written into a resource.
///
/// Blocks for as long as the file system takes, which can be long on a network mount. Keeps no state, so any
/// thread may call it. Never throws.
///
/// @param path    the folder
/// @param reason  receives why the path is refused: the first that applies of "No folder is given" (an empty
///                path), "The folder does not exist" (also for a dangling link, a loop of links and a path
///                that is too long), "This is not a folder", "The folder cannot be read", "The disk is full"
///                (or the user's quota is used up) and "The folder cannot be written to". Ready to be shown,
///                without a full stop; translated in the context "PathValidation". Unchanged when the path is
///                valid; may be null
/// @return whether files can be written into the folder right now
ZENDRA_UTIL_EXPORT bool IsThisPathValid(const QString& path, QString* reason);

} // namespace Zendra::Util
