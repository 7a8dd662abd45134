#include "Core/FileOperations.h"

#include <string>

#include <unistd.h>

namespace Zendra::Core {

bool RemoveFile(const ioPath& path)
{
    const std::string native = path.string();
    if (native.find('\0') != std::string::npos)
        return false;
    return ::unlink(native.c_str()) == 0;
}

} // namespace Zendra::Core
