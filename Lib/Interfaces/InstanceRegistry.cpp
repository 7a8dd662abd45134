#include "Lib/Interfaces/InstanceRegistry.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <new>
#include <stdexcept>
#include <vector>

#include <cxxabi.h>

namespace Zendra::LW {

namespace {

std::atomic<InstanceRegistry*> processWide{nullptr};

} // namespace

struct InstanceRegistry::Impl
{
    struct Publication
    {
        std::string key;
        void* instance; ///< not null
    };

    std::vector<Publication> publications; ///< the newest last
    std::mutex mutex;                      ///< guards publications
};

InstanceRegistry::InstanceRegistry() : impl(std::make_unique<Impl>())
{
    InstanceRegistry* none = nullptr;
    if (!processWide.compare_exchange_strong(none, this))
        throw std::logic_error("There is an instance registry in this process already");
}

InstanceRegistry::~InstanceRegistry()
{
    processWide = nullptr;
}

InstanceRegistry* InstanceRegistry::Instance()
{
    return processWide;
}

std::string InstanceRegistry::Demangle(const std::string& typeName)
{
    constexpr int outOfMemory = -1;

    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(typeName.c_str(), nullptr, nullptr, &status), &std::free);

    // Returning the mangled name would change the key, and a published instance could not be withdrawn.
    if (status == outOfMemory)
        throw std::bad_alloc();
    return name ? std::string(name.get()) : typeName;
}

void InstanceRegistry::DoRegister(const std::string& key, void* instance)
{
    if (!instance)
        return;

    const std::lock_guard<std::mutex> lock(impl->mutex);
    impl->publications.push_back({key, instance});
}

void InstanceRegistry::DoUnregister(const std::string& key, void* instance)
{
    const std::lock_guard<std::mutex> lock(impl->mutex);
    std::vector<Impl::Publication>& all = impl->publications;
    const auto newest = std::find_if(all.rbegin(), all.rend(), [&](const Impl::Publication& each) {
        return each.key == key && each.instance == instance;
    });
    if (newest != all.rend())
        all.erase(std::next(newest).base());
}

void* InstanceRegistry::DoFind(const std::string& key) const
{
    const std::lock_guard<std::mutex> lock(impl->mutex);
    const std::vector<Impl::Publication>& all = impl->publications;
    const auto newest = std::find_if(all.rbegin(), all.rend(),
                                     [&key](const Impl::Publication& each) { return each.key == key; });
    return newest == all.rend() ? nullptr : newest->instance;
}

} // namespace Zendra::LW
