#pragma once

#include "Core/ioPath.h"

namespace Zendra::Util {

inline bool ExploreFile(const ioPath& path)
{
    return path.exists();
}

} // namespace Zendra::Util
