#include "Tests/Support/StandInCompanions.h"

#include "Core/FileOperations.h"
#include "Util/ExploreFile.h"

#include <ostream>

namespace {

Tests::Companions* current = nullptr;

} // namespace

namespace Tests {

bool Companions::Call(const std::string& function, const Zendra::ioPath& path)
{
    if (logsEvents)
        events.push_back(function + " " + path.string());
    lastPath = &path;
    if (duringCall)
        duringCall();
    return result;
}

StandInCompanionsFixture::StandInCompanionsFixture()
{
    current = &companions;
}

StandInCompanionsFixture::~StandInCompanionsFixture()
{
    current = nullptr;
}

void LoggingObserver::Log(const std::string& notification, const Zendra::ioPath& path)
{
    if (companions.logsEvents)
        companions.events.push_back(name + " " + notification + " " + path.string());
    lastPath = &path;
    if (duringCall)
        duringCall();
}

} // namespace Tests

namespace Zendra {

ioPath::ioPath(const char* utf8) : path(utf8)
{
}

std::string ioPath::string() const
{
    return path.string();
}

bool ioPath::exists() const
{
    return current->Call("exists", *this);
}

bool ioPath::create_directories(const ioPath& folder)
{
    return current->Call("create_directories", folder);
}

std::ostream& operator<<(std::ostream& stream, const ioPath& path)
{
    return stream << path.string();
}

bool Core::MoveToTrash(const ioPath& path)
{
    return current->Call("MoveToTrash", path);
}

bool Core::RemoveFile(const ioPath& path)
{
    return current->Call("RemoveFile", path);
}

bool Util::ExploreFile(const ioPath& path)
{
    return current->Call("ExploreFile", path);
}

namespace LW {

struct InstanceRegistry::Impl
{
};

InstanceRegistry::InstanceRegistry() = default;
InstanceRegistry::~InstanceRegistry() = default;

InstanceRegistry* InstanceRegistry::Instance()
{
    if (current->onInstance)
        current->onInstance();
    return current->registry;
}

std::string InstanceRegistry::Demangle(const std::string& typeName)
{
    return "readable " + typeName;
}

void InstanceRegistry::DoRegister(const std::string& key, void* instance)
{
    current->onRegister(key, instance);
}

void InstanceRegistry::DoUnregister(const std::string& key, void* instance)
{
    current->onUnregister(key, instance);
}

} // namespace LW
} // namespace Zendra
