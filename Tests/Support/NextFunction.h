#pragma once

#include <dlfcn.h>

namespace Tests {

/// The function that a test program's own function of the same name replaces: the next one in the order in
/// which the loader searches the libraries.
///
/// @param name  its name, such as "readdir"
template <class Function>
Function* NextFunction(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace Tests
