#pragma once

#include <string>

namespace Zendra::Core {

/// What each system does in its own way for MoveToTrash(), with a path that leaves nothing to interpret.
///
/// @param entry  the absolute path of an existing file, folder or link; no folder above it is a link
/// @return as MoveToTrash()
bool MoveEntryToTrash(const std::string& entry);

} // namespace Zendra::Core
