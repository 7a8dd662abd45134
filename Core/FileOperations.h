#pragma once

#include "Core/Export.h"
#include "Core/ioPath.h"

/// Operations on whole files.
namespace Zendra::Core {

/// Moves a file, a folder with its contents, or a symbolic link to the user's trash, where other programs can
/// list and restore it.
///
/// A link itself is moved, even a dangling one; its target stays. Intended: "link/" also moves the link.
/// Nothing is ever deleted or copied instead: a file stays where it is when its disk has no trash and none
/// can be created there.
///
/// On Linux this is the desktop's trash: `$XDG_DATA_HOME/Trash`, or `~/.local/share/Trash`, for entries on
/// the disk of the home folder, and otherwise a folder at the top of the file's own disk. It is created when
/// missing. The environment is read once per process, at the first use; a relative `XDG_DATA_HOME` is
/// refused. So is a file whose original path cannot be recorded in the trash, since no program could restore
/// it: on a full disk and, before GLib 2.84, with a name of more than 238 bytes. This turns out only when the
/// file is in the trash, so it is moved back; if another file has its old path by then, the trashed one stays
/// in the trash's folder "files", and the result is false as well. Also refused is a hard link to a file that
/// is in that folder under the same name and without a recorded path.
///
/// Blocks for as long as the file system takes, which hardly depends on the number of files in the trash.
/// Keeps no state, so any thread may call it. If several threads move the same file, one of them gets true.
///
/// @param path  absolute, or relative to the process's current folder
/// @return true if the entry is in the trash; false for a missing or empty path, or a refusal by the system,
///         with the entry where it was except in the case above. Never throws.
ZENDRA_CORE_EXPORT bool MoveToTrash(const ioPath& path);

/// Deletes one file, or one symbolic link but never its target.
///
/// It cannot be undone: prefer MoveToTrash() when a user asks for a deletion. Blocks for as long as the file
/// system takes. Keeps no state, so any thread may call it.
///
/// Intended: a folder is refused, although MoveToTrash() takes it; a link to a folder is a link.
///
/// @param path  absolute, or relative to the process's current folder
/// @return true if the entry existed and is gone; false for a folder (even an empty one), a missing path,
///         or a refusal by the system. Never throws.
ZENDRA_CORE_EXPORT bool RemoveFile(const ioPath& path);

} // namespace Zendra::Core
