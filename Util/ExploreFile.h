#pragma once

#include "Core/ioPath.h"
#include "Util/Export.h"

#include <chrono>

namespace Zendra::Util {

/// The longest that ExploreFile() waits for the system's file browser, connecting to it included.
inline constexpr std::chrono::milliseconds exploreFileLimit{2000};

/// Shows a file in the system's file browser: its folder is opened, the file selected.
///
/// On macOS the Finder does it. Elsewhere the file browser that serves org.freedesktop.FileManager1 on the
/// session bus is asked, and started by the bus if need be. When none answers in time, or it answers with an
/// error, the folder alone is opened with QDesktopServices. A browser that answers too late may then show the
/// file in a second window.
///
/// Any thread may call it, several at once too. Off the GUI thread only the file browser is asked:
/// QDesktopServices belongs to the GUI thread. The same holds without a QCoreApplication.
///
/// A folder is shown selected in the folder that contains it. A link is shown itself, and not what it points
/// to; Intended: so is a dangling link, which is missing for Zendra::ioPath::exists() but there to be seen in
/// its folder.
///
/// Blocks while it connects to the bus and waits for the answer, exploreFileLimit at most for all of it, and
/// runs no event loop of the application meanwhile. Never throws. On Linux the process ignores SIGPIPE from
/// the first call on; GLib does that for its sockets.
///
/// @param path  absolute, or relative to the process's current folder
/// @return true when the file browser has answered that it shows the file, or the desktop has accepted the
///         request for the folder (what becomes of it then is not known); false for a missing path, and
///         when neither worked
ZENDRA_UTIL_EXPORT bool ExploreFile(const ioPath& path);

} // namespace Zendra::Util
