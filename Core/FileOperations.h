#pragma once

#include "Core/Export.h"
#include "Core/ioPath.h"

/// What the application does to whole files.
namespace Zendra::Core {

/// Moves a file, a folder with all that is in it, or a symbolic link into the user's trash, from where
/// the user's other programs can list and restore it.
///
/// A link is moved itself, whether it leads anywhere or not; what it points to stays. Intended: that goes
/// for "link/" too. Nothing is ever deleted or copied instead: a file on a disk that has no trash, and can
/// get none, stays where it is.
///
/// On Linux the trash is the one of the desktops: `$XDG_DATA_HOME/Trash`, or `~/.local/share/Trash`, for
/// what lies on the disk of the home folder, and otherwise a folder at the top of the file's own disk. It
/// is made when missing. The environment is looked at once in a process, at the first use; a data home
/// that is no absolute path is refused. So is a file whose origin cannot be noted in the trash, since
/// nobody could restore it: on a full disk, and, before GLib 2.84, with a name of more than 238 bytes. That
/// turns out only when it is in the trash, so it is taken back; should another file have come to its place in
/// that instant, it stays in the trash's folder "files", and the result is false as well. Refused, too, is a
/// hard link to a file that lies in that folder under the same name with no origin noted.
///
/// Blocks for as long as the file system takes, and that hardly depends on what the trash holds already.
/// Keeps no state, so any thread may call it, several also for the same file: one of them gets true.
///
/// @param path  absolute, or relative to the process's current folder
/// @return true if the entry is in the trash; false for a missing path, the empty one, or a refusal by the
///         system, with the entry where it was but for the case above. Never throws.
ZENDRA_CORE_EXPORT bool MoveToTrash(const ioPath& path);

/// Deletes one file, or one symbolic link, never what the link points to.
///
/// There is no way back: MoveToTrash() is the kinder choice when a person asked for it.
/// Blocks for as long as the file system takes. Keeps no state, so any thread may call it.
///
/// Intended: a folder is refused, although MoveToTrash() takes it; a link to a folder is a link.
///
/// @param path  absolute, or relative to the process's current folder
/// @return true if the entry existed and is gone; false for a folder (even an empty one), a missing path,
///         or a refusal by the system. Never throws.
ZENDRA_CORE_EXPORT bool RemoveFile(const ioPath& path);

} // namespace Zendra::Core
