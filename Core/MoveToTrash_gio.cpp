#include "Core/FileOperations.h"

#include <gio/gio.h>

namespace Zendra::Core {

bool MoveToTrash(const ioPath& path)
{
    const std::string native = path.string();
    // GIO takes the empty path for the current folder.
    if (native.empty() || native.find('\0') != std::string::npos)
        return false;
    GFile* const file = g_file_new_for_path(native.c_str());
    const gboolean moved = g_file_trash(file, nullptr, nullptr);
    g_object_unref(file);
    return moved != FALSE;
}

} // namespace Zendra::Core
