#pragma once

#include "Core/ioPath.h"

namespace Zendra::Core {

inline bool MoveToTrash(const ioPath& path)
{
    return path.exists();
}

inline bool RemoveFile(const ioPath& path)
{
    return path.exists();
}

} // namespace Zendra::Core
