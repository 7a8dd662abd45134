#include "Core/Interfaces/EventHandlerList.h"
#include "Lib/Interfaces/AutoInstanceRegistrator.h"
#include "Lib/Util/FS/FileManager.h"
#include "Tests/Support/Memory.h"
#include "Tests/Support/StandInCompanions.h"
#include "Tests/Support/VirtualSlot.h"

#include <gmock/gmock.h>

#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

// How the file manager is registered and unregistered, and its layout in memory.

using namespace Tests;
using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::Core::EventHandlerList;
using Zendra::Core::EventPublisher;
using Zendra::Core::SyncExecutePolicy;
using Zendra::LW::AutoInstanceRegistrator;
using Zendra::LW::FileManager;
using Zendra::LW::IFileManager;
using Zendra::LW::IFileManagerObserver;
using Zendra::LW::InstanceRegistry;

namespace {

static_assert(std::is_base_of_v<IFileManager, FileManager>);
static_assert(std::is_convertible_v<FileManager*, EventPublisher<IFileManagerObserver>*>);
static_assert(std::is_abstract_v<IFileManager> && std::is_abstract_v<IFileManagerObserver>);
static_assert(std::has_virtual_destructor_v<IFileManagerObserver>);
static_assert(std::is_default_constructible_v<FileManager>);
static_assert(!std::is_copy_constructible_v<FileManager> && !std::is_copy_assignable_v<FileManager>);
static_assert(!std::is_move_constructible_v<FileManager> && !std::is_move_assignable_v<FileManager>);
static_assert(sizeof(IFileManager) == sizeof(void*), "the interface has no data, and no virtual base");
static_assert(sizeof(FileManager) == 2 * sizeof(void*), "one field");

/// A pointer to a virtual base cannot be cast to the derived class.
template <class Base, class Derived, class = void>
constexpr bool isNonVirtualBase = false;
template <class Base, class Derived>
constexpr bool
    isNonVirtualBase<Base, Derived, std::void_t<decltype(static_cast<Derived*>(std::declval<Base*>()))>> =
        true;
static_assert(isNonVirtualBase<EventPublisher<IFileManagerObserver>, IFileManager>);
static_assert(isNonVirtualBase<IFileManager, FileManager>);

/// The members of FileManager::Impl in their order.
struct ImplLayout
{
    EventHandlerList<IFileManagerObserver, SyncExecutePolicy> eventHandlers;
    std::unique_ptr<AutoInstanceRegistrator<IFileManager>> registration;
};

struct FileManagerLayout
{
    void* virtualTable;
    ImplLayout* impl;
};

ImplLayout& ImplOf(void* manager)
{
    return *static_cast<FileManagerLayout*>(manager)->impl;
}

/// A registry that logs keys and instances.
class FileManagerPublicationTest : public StandInCompanionsFixture
{
protected:
    using Entry = std::pair<std::string, void*>;

    FileManagerPublicationTest()
    {
        companions.registry = &registry;
        companions.onRegister = [this](const std::string& key, void* instance) {
            registered.emplace_back(key, instance);
        };
        companions.onUnregister = [this](const std::string& key, void* instance) {
            unregistered.emplace_back(key, instance);
        };
    }

    static Entry EntryOf(IFileManager* manager)
    {
        return {std::string("readable ") + typeid(IFileManager).name(), manager};
    }

    InstanceRegistry registry;
    std::vector<Entry> registered;
    std::vector<Entry> unregistered;
};

} // namespace

TEST_F(FileManagerPublicationTest, RegistersAndUnregistersItselfOnceAsItsInterface)
{
    auto manager = std::make_unique<FileManager>();
    const Entry entry = EntryOf(manager.get());
    EXPECT_THAT(registered, ElementsAre(entry));
    EXPECT_THAT(unregistered, IsEmpty());

    manager.reset();

    EXPECT_THAT(registered, ElementsAre(entry));
    EXPECT_THAT(unregistered, ElementsAre(entry));
}

TEST_F(FileManagerPublicationTest, WorksWithoutARegistry)
{
    companions.registry = nullptr;

    auto manager = std::make_unique<FileManager>();
    EXPECT_TRUE(manager->Exists("/recordings"));
    manager.reset();

    EXPECT_THAT(registered, IsEmpty());
    EXPECT_THAT(unregistered, IsEmpty());
}

TEST_F(FileManagerPublicationTest, UnregistersFromTheCurrentRegistry)
{
    companions.registry = nullptr;
    auto manager = std::make_unique<FileManager>();
    const Entry entry = EntryOf(manager.get());
    companions.registry = &registry;

    manager.reset();

    EXPECT_THAT(registered, IsEmpty());
    EXPECT_THAT(unregistered, ElementsAre(entry));
}

TEST_F(FileManagerPublicationTest, DoesNotUnregisterFromADestroyedRegistry)
{
    auto manager = std::make_unique<FileManager>();
    companions.registry = nullptr;

    manager.reset();

    EXPECT_THAT(unregistered, IsEmpty());
}

TEST_F(FileManagerPublicationTest, RegistersOnceEverythingElseIsReady)
{
    LoggingObserver observer(companions, "A");
    bool hasRegistration = true;
    companions.onRegister = [&](const std::string&, void* instance) {
        auto* const manager = static_cast<IFileManager*>(instance);
        manager->RegisterEventHandler(&observer);
        manager->Remove("/recordings/1.mp4");
        hasRegistration = ImplOf(instance).registration != nullptr;
    };

    const FileManager manager;

    EXPECT_THAT(companions.events,
                ElementsAre("RemoveFile /recordings/1.mp4", "A OnFileRemoved /recordings/1.mp4"));
    EXPECT_FALSE(hasRegistration);
}

TEST_F(FileManagerPublicationTest, UnregistersBeforeAnythingIsDestroyed)
{
    LoggingObserver observer(companions, "A");
    bool hasRegistration = true;
    companions.onUnregister = [&](const std::string&, void* instance) {
        auto* const manager = static_cast<IFileManager*>(instance);
        EXPECT_NE(dynamic_cast<FileManager*>(manager), nullptr);
        manager->Remove("/recordings/1.mp4");
        hasRegistration = ImplOf(instance).registration != nullptr;
    };
    auto manager = std::make_unique<FileManager>();
    manager->RegisterEventHandler(&observer);

    manager.reset();

    EXPECT_THAT(companions.events,
                ElementsAre("RemoveFile /recordings/1.mp4", "A OnFileRemoved /recordings/1.mp4"));
    EXPECT_FALSE(hasRegistration) << "the registration ends when the members are destroyed, not before";
}

TEST_F(FileManagerPublicationTest, PassesOnAnExceptionOfTheRegistryAndLeaksNothing)
{
    companions.onRegister = [](const std::string&, void*) { throw std::domain_error("refused"); };
    const std::ptrdiff_t before = Tests::BlocksInUse();

    EXPECT_THROW(FileManager(), std::domain_error);

    EXPECT_EQ(Tests::BlocksInUse(), before);
    EXPECT_THAT(unregistered, IsEmpty());
}

TEST_F(FileManagerPublicationTest, PassesOnAnExceptionOfInstanceAndLeaksNothing)
{
    companions.onInstance = [] { throw std::domain_error("no registry"); };
    const std::ptrdiff_t before = Tests::BlocksInUse();

    EXPECT_THROW(FileManager(), std::domain_error);

    EXPECT_EQ(Tests::BlocksInUse(), before);
}

TEST_F(FileManagerPublicationTest, RegistersNothingWithoutMemory)
{
    const std::ptrdiff_t before = Tests::BlocksInUse();
    bool complete = false;
    int failures = 0;
    int published = 0;
    companions.onRegister = [&published](const std::string&, void*) { ++published; };
    companions.onUnregister = [&published](const std::string&, void*) { --published; };

    for (; !complete; ++failures) {
        std::optional<FileManager> manager;
        try {
            const Tests::MemoryRunsOut afterSome(failures);
            manager.emplace();
            complete = true;
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(published, complete ? 1 : 0);
    }

    EXPECT_GT(failures, 2);
    EXPECT_EQ(Tests::BlocksInUse(), before);
}

TEST_F(FileManagerPublicationTest, FreesItsMemory)
{
    LoggingObserver observer(companions, "A");
    const std::ptrdiff_t before = Tests::BlocksInUse();
    companions.registry = nullptr;

    {
        FileManager manager;
        manager.RegisterEventHandler(&observer);
        EXPECT_GT(Tests::BlocksInUse(), before);
    }

    EXPECT_EQ(Tests::BlocksInUse(), before);
    EXPECT_THAT(companions.events, IsEmpty());
}

TEST_F(FileManagerPublicationTest, AnExceptionWhenItUnregistersEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    companions.onUnregister = [](const std::string&, void*) { throw std::domain_error("refused"); };

    EXPECT_DEATH(FileManager(), "terminate called");
    companions.onUnregister = [](const std::string&, void*) {};
}

TEST_F(FileManagerPublicationTest, AnExceptionOfInstanceWhenItUnregistersEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    EXPECT_DEATH(
        {
            const FileManager manager;
            companions.onInstance = [] { throw std::domain_error("no registry"); };
        },
        "terminate called");
}

// The layout: a program that was compiled with older headers must still work with these.

TEST_F(FileManagerPublicationTest, TheObserversComeFirstAndTheRegistrationAfterThem)
{
    LoggingObserver observer(companions, "A");
    FileManager manager;
    manager.RegisterEventHandler(&observer);

    ImplLayout& impl = ImplOf(&manager);
    std::vector<IFileManagerObserver*> observers;
    impl.eventHandlers.PerformForEachEventHandler(
        [&observers](IFileManagerObserver* each) { observers.push_back(each); });
    EXPECT_THAT(observers, ElementsAre(&observer));

    // The registration's only member.
    IFileManager* published = nullptr;
    std::memcpy(&published, impl.registration.get(), sizeof(published));
    EXPECT_EQ(published, &manager);
}

TEST(FileManagerLayoutTest, VirtualFunctionsKeepTheirOrder)
{
    struct Extended : IFileManager
    {
        virtual void Added() = 0;
    };

    EXPECT_EQ(VirtualSlot(&IFileManager::RegisterEventHandler), 0U);
    EXPECT_EQ(VirtualSlot(&IFileManager::UnregisterEventHandler), 1U);
    // The destructor comes next and has two entries.
    EXPECT_EQ(VirtualSlot(&IFileManager::ExploreFile), 4U);
    EXPECT_EQ(VirtualSlot(&IFileManager::MoveToTrash), 5U);
    EXPECT_EQ(VirtualSlot(&IFileManager::Remove), 6U);
    EXPECT_EQ(VirtualSlot(&IFileManager::Exists), 7U);
    EXPECT_EQ(VirtualSlot(&IFileManager::CreateDirectories), 8U);
    EXPECT_EQ(VirtualSlot(&Extended::Added), 9U);
}

TEST(FileManagerLayoutTest, TheImplementationAddsNoVirtualFunction)
{
    struct Extended : FileManager
    {
        virtual void Added() {}
    };

    EXPECT_EQ(VirtualSlot(&FileManager::CreateDirectories), 8U);
    EXPECT_EQ(VirtualSlot(&Extended::Added), 9U);
}

TEST(FileManagerLayoutTest, TheObserverDeclaresItsDestructorFirst)
{
    struct Extended : IFileManagerObserver
    {
        virtual void Added() = 0;
    };

    EXPECT_EQ(VirtualSlot(&IFileManagerObserver::OnFileExplored), 2U);
    EXPECT_EQ(VirtualSlot(&IFileManagerObserver::OnFileMovedToTrash), 3U);
    EXPECT_EQ(VirtualSlot(&IFileManagerObserver::OnFileRemoved), 4U);
    EXPECT_EQ(VirtualSlot(&Extended::Added), 5U);
}
