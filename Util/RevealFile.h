#pragma once

#include <QUrl>

#include <chrono>

namespace Zendra::Util {

/// Asks the system's file browser to show one entry selected in its folder. One implementation per system.
///
/// Private to the library. Blocks until the browser has answered, or until the limit has passed.
///
/// @param entry  a file URL with an absolute path
/// @return whether the browser confirmed that in time
bool RevealFile(const QUrl& entry, std::chrono::milliseconds limit);

} // namespace Zendra::Util
