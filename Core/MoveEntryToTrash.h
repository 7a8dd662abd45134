#pragma once

#include <string>

namespace Zendra::Core {

/// The part of MoveToTrash() that differs from system to system.
///
/// @param entry  the absolute path of an existing file, folder or link; no folder above it is a link
/// @return as MoveToTrash()
bool MoveEntryToTrash(const std::string& entry);

} // namespace Zendra::Core
