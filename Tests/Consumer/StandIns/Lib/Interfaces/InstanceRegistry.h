#pragma once

#define STAND_IN_REGISTRY

namespace Zendra::LW {

/// Knows one instance, of whatever type.
class InstanceRegistry
{
public:
    InstanceRegistry();
    ~InstanceRegistry();
    static InstanceRegistry* Instance();

    void* published = nullptr;
};

} // namespace Zendra::LW
