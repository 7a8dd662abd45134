#include "Lib/Interfaces/InstanceRegistry.h"

namespace Zendra::LW {
namespace {

InstanceRegistry* current = nullptr;

} // namespace

InstanceRegistry::InstanceRegistry()
{
    current = this;
}

InstanceRegistry::~InstanceRegistry()
{
    current = nullptr;
}

InstanceRegistry* InstanceRegistry::Instance()
{
    return current;
}

} // namespace Zendra::LW
