#pragma once

#include "Lib/Interfaces/InstanceRegistry.h"

namespace Zendra::LW {

template <class T>
class AutoInstanceRegistrator
{
public:
    explicit AutoInstanceRegistrator(T* instance) { InstanceRegistry::Instance()->published = instance; }
    ~AutoInstanceRegistrator() { InstanceRegistry::Instance()->published = nullptr; }
};

} // namespace Zendra::LW
