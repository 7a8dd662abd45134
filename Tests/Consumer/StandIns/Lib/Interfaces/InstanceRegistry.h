#pragma once

#define STAND_IN_REGISTRY

namespace Zendra::LW {

/// Holds one instance, of any type.
class InstanceRegistry
{
public:
    InstanceRegistry();
    ~InstanceRegistry();
    static InstanceRegistry* Instance();

    void* published = nullptr;
};

} // namespace Zendra::LW
