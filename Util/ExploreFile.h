#pragma once

#include "Core/ioPath.h"
#include "Util/Export.h"

#include <chrono>

namespace Zendra::Util {

/// How long ExploreFile() waits for the system's file browser at most, including the time to connect.
inline constexpr std::chrono::milliseconds exploreFileLimit{2000};

/// Shows a file in the system's file browser: opens its folder and selects the file.
///
/// On macOS the Finder does it. Elsewhere it is the file browser that provides org.freedesktop.FileManager1
/// on the session bus, which starts it if necessary. When none answers in time, or the answer is an error,
/// QDesktopServices opens the folder alone. A browser that answers too late may then show the file in a
/// second window.
///
/// Any number of threads may call it at the same time. QDesktopServices works on the GUI thread only, so on
/// another thread, and without a QCoreApplication, only the file browser is asked.
///
/// A folder is shown selected in the folder that contains it. A link itself is shown, not its target.
/// Intended: this includes a dangling link, for which Zendra::ioPath::exists() is false.
///
/// Blocks while it connects to the bus and waits for the answer, for exploreFileLimit at most in total, and
/// runs no event loop of the application meanwhile. Never throws. On Linux the process ignores SIGPIPE from
/// the first call on, since GLib sets that for its sockets.
///
/// @param path  absolute, or relative to the process's current folder
/// @return true when the file browser has confirmed that it shows the file, or the desktop has accepted the
///         request to open the folder (whether it succeeds is not known); false for a missing path, and when
///         neither worked
ZENDRA_UTIL_EXPORT bool ExploreFile(const ioPath& path);

} // namespace Zendra::Util
