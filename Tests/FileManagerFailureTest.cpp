// The file manager alone: what it calls in the other libraries is defined here and does as a test says.

#include "Core/FileOperations.h"
#include "Lib/Interfaces/AutoInstanceRegistrator.h"
#include "Lib/Util/FS/FileManager.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/Memory.h"
#include "Tests/Support/MutexLog.h"
#include "Util/ExploreFile.h"

#include <gmock/gmock.h>

#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::ioPath;
using Zendra::Core::EventHandlerList;
using Zendra::Core::EventPublisher;
using Zendra::Core::SyncExecutePolicy;
using Zendra::LW::AutoInstanceRegistrator;
using Zendra::LW::FileManager;
using Zendra::LW::IFileManager;
using Zendra::LW::IFileManagerObserver;
using Zendra::LW::InstanceRegistry;

namespace {

/// What the other libraries do in this program, and what was asked of them.
struct Companions
{
    /// Writes the call down, and answers.
    bool Answer(const std::string& call, const ioPath& path)
    {
        if (!quiet)
            events.push_back(call + " " + path.string());
        askedFor = &path;
        if (inside)
            inside();
        return result;
    }

    std::vector<std::string> events;
    bool quiet = false;               ///< writes nothing down, which takes memory
    const ioPath* askedFor = nullptr; ///< the very path of the last call
    bool result = true;
    std::function<void()> inside; ///< runs inside of every file operation

    InstanceRegistry* registry = nullptr;
    std::function<void(const std::string& key, void* instance)> onRegister;
    std::function<void(const std::string& key, void* instance)> onUnregister;
    std::function<void()> onInstance;
};

Companions* companions = nullptr;

} // namespace

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
    return companions->Answer("exists", *this);
}

bool ioPath::create_directories(const ioPath& folder)
{
    return companions->Answer("create_directories", folder);
}

std::ostream& operator<<(std::ostream& stream, const ioPath& path)
{
    return stream << path.string();
}

bool Core::MoveToTrash(const ioPath& path)
{
    return companions->Answer("MoveToTrash", path);
}

bool Core::RemoveFile(const ioPath& path)
{
    return companions->Answer("RemoveFile", path);
}

bool Util::ExploreFile(const ioPath& path)
{
    return companions->Answer("ExploreFile", path);
}

namespace LW {

struct InstanceRegistry::Impl
{
};

InstanceRegistry::InstanceRegistry() = default;
InstanceRegistry::~InstanceRegistry() = default;

InstanceRegistry* InstanceRegistry::Instance()
{
    if (companions->onInstance)
        companions->onInstance();
    return companions->registry;
}

std::string InstanceRegistry::Demangle(const std::string& typeName)
{
    return "readable " + typeName;
}

void InstanceRegistry::DoRegister(const std::string& key, void* instance)
{
    companions->onRegister(key, instance);
}

void InstanceRegistry::DoUnregister(const std::string& key, void* instance)
{
    companions->onUnregister(key, instance);
}

} // namespace LW
} // namespace Zendra

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

/// Can be cast down from, which a virtual base cannot.
template <class Base, class Derived, class = void>
constexpr bool isNonVirtualBase = false;
template <class Base, class Derived>
constexpr bool
    isNonVirtualBase<Base, Derived, std::void_t<decltype(static_cast<Derived*>(std::declval<Base*>()))>> =
        true;
static_assert(isNonVirtualBase<EventPublisher<IFileManagerObserver>, IFileManager>);
static_assert(isNonVirtualBase<IFileManager, FileManager>);

/// The fields of what the file manager keeps out of sight, in their order.
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

/// The place in its class's virtual table that a virtual function is called through: a pointer to such a
/// function begins with that place, in bytes, plus one on some processors.
template <class Function>
std::size_t VirtualSlot(Function function)
{
    std::size_t offset = 0;
    std::memcpy(&offset, &function, sizeof(offset));
    return offset / sizeof(void*);
}

/// Writes down what it is told.
class Observer : public IFileManagerObserver
{
public:
    explicit Observer(std::string itsName) : name(std::move(itsName)) {}

    void OnFileExplored(const ioPath& path) override { Note("OnFileExplored", path); }
    void OnFileMovedToTrash(const ioPath& path) override { Note("OnFileMovedToTrash", path); }
    void OnFileRemoved(const ioPath& path) override { Note("OnFileRemoved", path); }

    const ioPath* toldOf = nullptr; ///< the very path of the last call
    std::function<void()> inside;   ///< runs inside of every call

private:
    void Note(const std::string& notification, const ioPath& path)
    {
        if (!companions->quiet)
            companions->events.push_back(name + " " + notification + " " + path.string());
        toldOf = &path;
        if (inside)
            inside();
    }

    std::string name;
};

class FileManagerFailureTest : public testing::Test
{
protected:
    FileManagerFailureTest() { companions = &world; }
    ~FileManagerFailureTest() override { companions = nullptr; }

    Companions world;
};

struct Operation
{
    const char* title;
    bool (IFileManager::*perform)(const ioPath& path);
    const char* companion;
    const char* notification;
};

void PrintTo(const Operation& operation, std::ostream* stream)
{
    *stream << operation.title;
}

/// The operations that observers are told of.
class NotifyingOperationTest : public FileManagerFailureTest, public testing::WithParamInterface<Operation>
{
protected:
    bool Perform(IFileManager& target) { return (target.*GetParam().perform)(path); }

    std::string CompanionCall() const { return GetParam().companion + (" " + path.string()); }
    std::string Told(const std::string& observer) const
    {
        return observer + " " + GetParam().notification + " " + path.string();
    }

    void RegisterBoth()
    {
        manager.RegisterEventHandler(&a);
        manager.RegisterEventHandler(&b);
    }

    const ioPath path = "/recordings/a name too long to be kept without memory.mp4";
    Observer a{"A"};
    Observer b{"B"};
    FileManager manager;
};

/// The operations that nobody is told of.
class SilentOperationTest : public NotifyingOperationTest
{
};

} // namespace

// Operations with observers

TEST_P(NotifyingOperationTest, SuccessIsToldToTheObserversInOrderBeforeTheCaller)
{
    RegisterBoth();

    const bool result = Perform(manager);
    world.events.emplace_back("returned");

    EXPECT_TRUE(result);
    EXPECT_THAT(world.events, ElementsAre(CompanionCall(), Told("A"), Told("B"), "returned"));
}

TEST_P(NotifyingOperationTest, FailureIsToldToNobody)
{
    RegisterBoth();
    world.result = false;

    EXPECT_FALSE(Perform(manager));

    EXPECT_THAT(world.events, ElementsAre(CompanionCall()));
}

TEST_P(NotifyingOperationTest, NeitherSuccessNorFailureIsLogged)
{
    RegisterBoth();
    const Tests::LogCapture log;

    Perform(manager);
    world.result = false;
    Perform(manager);

    EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST_P(NotifyingOperationTest, WithoutObserversTheResultIsPassedOn)
{
    EXPECT_TRUE(Perform(manager));
    world.result = false;
    EXPECT_FALSE(Perform(manager));

    EXPECT_THAT(world.events, ElementsAre(CompanionCall(), CompanionCall()));
}

TEST_P(NotifyingOperationTest, IsPerformedOnTheCallersPathAndToldOnACopy)
{
    manager.RegisterEventHandler(&a);

    Perform(manager);

    EXPECT_EQ(world.askedFor, &path);
    EXPECT_NE(a.toldOf, &path);
}

TEST_P(NotifyingOperationTest, AnObserverRegisteredTwiceIsToldOnce)
{
    RegisterBoth();
    manager.RegisterEventHandler(&a);

    Perform(manager);

    EXPECT_THAT(world.events, ElementsAre(CompanionCall(), Told("A"), Told("B")));
}

TEST_P(NotifyingOperationTest, AnUnregisteredObserverIsNotTold)
{
    RegisterBoth();
    manager.UnregisterEventHandler(&a);

    Perform(manager);

    EXPECT_THAT(world.events, ElementsAre(CompanionCall(), Told("B")));
}

TEST_P(NotifyingOperationTest, NullIsNoObserver)
{
    RegisterBoth();
    manager.RegisterEventHandler(nullptr);
    manager.UnregisterEventHandler(nullptr);

    Perform(manager);

    EXPECT_THAT(world.events, ElementsAre(CompanionCall(), Told("A"), Told("B")));
}

TEST_P(NotifyingOperationTest, AnExceptionFromTheOperationPassesAndNobodyIsTold)
{
    RegisterBoth();
    world.inside = [] { throw std::domain_error("failed"); };

    EXPECT_THROW(Perform(manager), std::domain_error);

    EXPECT_THAT(world.events, ElementsAre(CompanionCall()));
}

TEST_P(NotifyingOperationTest, AnExceptionFromAnObserverPassesAndEndsTheRound)
{
    RegisterBoth();
    a.inside = [] { throw std::domain_error("failed"); };

    EXPECT_THROW(Perform(manager), std::domain_error);
    EXPECT_THAT(world.events, ElementsAre(CompanionCall(), Told("A")));

    a.inside = nullptr;
    world.events.clear();
    EXPECT_TRUE(Perform(manager));
    EXPECT_THAT(world.events, ElementsAre(CompanionCall(), Told("A"), Told("B")));
}

TEST_P(NotifyingOperationTest, WithoutMemoryForTheCopiesAnExceptionPasses)
{
    manager.RegisterEventHandler(&a);
    world.quiet = true;
    const std::ptrdiff_t before = Tests::BlocksInUse();
    bool complete = false;
    int failures = 0;

    for (; !complete; ++failures) {
        const Tests::MemoryRunsOut afterSome(failures);
        try {
            complete = Perform(manager);
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(Tests::BlocksInUse(), before);
        }
    }

    // A path for all, the snapshot, and a path for the observer, at the least.
    EXPECT_GT(failures, 3);
    EXPECT_EQ(Tests::BlocksInUse(), before);
}

TEST_P(NotifyingOperationTest, IsPerformedWithNoLockHeldAndToldUnderOne)
{
    manager.RegisterEventHandler(&a);
    int held = 0;
    int heldByTheOperation = -1;
    int heldByTheNotification = -1;
    world.inside = [&] { heldByTheOperation = held; };
    a.inside = [&] { heldByTheNotification = held; };

    {
        const Tests::MutexLog log([&held](Tests::MutexLog::Event event, const void*) {
            held += event == Tests::MutexLog::Event::HasLock ? 1 : 0;
            held -= event == Tests::MutexLog::Event::Unlocked ? 1 : 0;
        });
        Perform(manager);
    }

    EXPECT_EQ(heldByTheOperation, 0);
    EXPECT_EQ(heldByTheNotification, 1);
    EXPECT_EQ(held, 0);
}

TEST_P(NotifyingOperationTest, AnObserverMayPerformItAgain)
{
    RegisterBoth();
    a.inside = [this] {
        a.inside = nullptr;
        EXPECT_TRUE(Perform(manager));
    };

    EXPECT_TRUE(Perform(manager));

    EXPECT_THAT(world.events,
                ElementsAre(CompanionCall(), Told("A"), CompanionCall(), Told("A"), Told("B"), Told("B")));
}

INSTANTIATE_TEST_SUITE_P(
    , NotifyingOperationTest,
    testing::Values(Operation{"ExploreFile", &IFileManager::ExploreFile, "ExploreFile", "OnFileExplored"},
                    Operation{"MoveToTrash", &IFileManager::MoveToTrash, "MoveToTrash", "OnFileMovedToTrash"},
                    Operation{"Remove", &IFileManager::Remove, "RemoveFile", "OnFileRemoved"}),
    [](const auto& row) { return row.param.title; });

// Operations without

TEST_P(SilentOperationTest, PassesTheResultOnAndTellsNobody)
{
    RegisterBoth();

    EXPECT_TRUE(Perform(manager));
    world.result = false;
    EXPECT_FALSE(Perform(manager));

    EXPECT_EQ(world.askedFor, &path);
    EXPECT_THAT(world.events, ElementsAre(CompanionCall(), CompanionCall()));
}

TEST_P(SilentOperationTest, LogsNothing)
{
    const Tests::LogCapture log;

    Perform(manager);
    world.result = false;
    Perform(manager);

    EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST_P(SilentOperationTest, LetsAnExceptionPass)
{
    world.inside = [] { throw std::domain_error("failed"); };

    EXPECT_THROW(Perform(manager), std::domain_error);
}

TEST_P(SilentOperationTest, TakesNoLock)
{
    int locks = 0;
    const Tests::MutexLog log([&locks](Tests::MutexLog::Event, const void*) { ++locks; });

    Perform(manager);

    EXPECT_EQ(locks, 0);
}

INSTANTIATE_TEST_SUITE_P(, SilentOperationTest,
                         testing::Values(Operation{"Exists", &IFileManager::Exists, "exists", ""},
                                         Operation{"CreateDirectories", &IFileManager::CreateDirectories,
                                                   "create_directories", ""}),
                         [](const auto& row) { return row.param.title; });

// Publication

namespace {

/// With a registry that keeps what is published in a list of "key instance" pairs.
class FileManagerPublicationTest : public FileManagerFailureTest
{
protected:
    using Entry = std::pair<std::string, void*>;

    FileManagerPublicationTest()
    {
        world.registry = &registry;
        world.onRegister = [this](const std::string& key, void* instance) {
            registered.emplace_back(key, instance);
        };
        world.onUnregister = [this](const std::string& key, void* instance) {
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

TEST_F(FileManagerPublicationTest, RegistersAndWithdrawsItselfOnceAsItsInterface)
{
    auto manager = std::make_unique<FileManager>();
    const Entry entry = EntryOf(manager.get());
    EXPECT_THAT(registered, ElementsAre(entry));
    EXPECT_THAT(unregistered, IsEmpty());

    manager.reset();

    EXPECT_THAT(registered, ElementsAre(entry));
    EXPECT_THAT(unregistered, ElementsAre(entry));
}

TEST_F(FileManagerPublicationTest, WithoutARegistryItWorksUnpublished)
{
    world.registry = nullptr;

    auto manager = std::make_unique<FileManager>();
    EXPECT_TRUE(manager->Exists("/recordings"));
    manager.reset();

    EXPECT_THAT(registered, IsEmpty());
    EXPECT_THAT(unregistered, IsEmpty());
}

TEST_F(FileManagerPublicationTest, WithdrawsFromTheRegistryOfTheMoment)
{
    world.registry = nullptr;
    auto manager = std::make_unique<FileManager>();
    const Entry entry = EntryOf(manager.get());
    world.registry = &registry;

    manager.reset();

    EXPECT_THAT(registered, IsEmpty());
    EXPECT_THAT(unregistered, ElementsAre(entry));
}

TEST_F(FileManagerPublicationTest, ARegistryThatIsGoneIsNotAskedToWithdraw)
{
    auto manager = std::make_unique<FileManager>();
    world.registry = nullptr;

    manager.reset();

    EXPECT_THAT(unregistered, IsEmpty());
}

TEST_F(FileManagerPublicationTest, IsPublishedWhenAllElseIsReady)
{
    Observer observer{"A"};
    bool holderIsInPlace = true;
    world.onRegister = [&](const std::string&, void* instance) {
        auto* const manager = static_cast<IFileManager*>(instance);
        manager->RegisterEventHandler(&observer);
        manager->Remove("/recordings/1.mp4");
        holderIsInPlace = ImplOf(instance).registration != nullptr;
    };

    const FileManager manager;

    EXPECT_THAT(world.events,
                ElementsAre("RemoveFile /recordings/1.mp4", "A OnFileRemoved /recordings/1.mp4"));
    EXPECT_FALSE(holderIsInPlace);
}

TEST_F(FileManagerPublicationTest, IsWithdrawnWhileItIsStillWhole)
{
    Observer observer{"A"};
    bool holderIsInPlace = true;
    world.onUnregister = [&](const std::string&, void* instance) {
        auto* const manager = static_cast<IFileManager*>(instance);
        EXPECT_NE(dynamic_cast<FileManager*>(manager), nullptr);
        manager->Remove("/recordings/1.mp4");
        holderIsInPlace = ImplOf(instance).registration != nullptr;
    };
    auto manager = std::make_unique<FileManager>();
    manager->RegisterEventHandler(&observer);

    manager.reset();

    EXPECT_THAT(world.events,
                ElementsAre("RemoveFile /recordings/1.mp4", "A OnFileRemoved /recordings/1.mp4"));
    EXPECT_FALSE(holderIsInPlace) << "withdrawn as part of the destruction of the fields, not before it";
}

TEST_F(FileManagerPublicationTest, ARefusalLeavesTheConstructorAndNothingBehind)
{
    world.onRegister = [](const std::string&, void*) { throw std::domain_error("refused"); };
    const std::ptrdiff_t before = Tests::BlocksInUse();

    EXPECT_THROW(FileManager(), std::domain_error);

    EXPECT_EQ(Tests::BlocksInUse(), before);
    EXPECT_THAT(unregistered, IsEmpty());
}

TEST_F(FileManagerPublicationTest, ARegistryThatCannotBeHadLeavesTheConstructorAndNothingBehind)
{
    world.onInstance = [] { throw std::domain_error("no registry"); };
    const std::ptrdiff_t before = Tests::BlocksInUse();

    EXPECT_THROW(FileManager(), std::domain_error);

    EXPECT_EQ(Tests::BlocksInUse(), before);
}

TEST_F(FileManagerPublicationTest, WithoutMemoryThereIsNoManagerAndNothingIsPublished)
{
    const std::ptrdiff_t before = Tests::BlocksInUse();
    bool complete = false;
    int failures = 0;
    int published = 0;
    world.onRegister = [&published](const std::string&, void*) { ++published; };
    world.onUnregister = [&published](const std::string&, void*) { --published; };

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

TEST_F(FileManagerPublicationTest, ItsDestructionFreesAllItHad)
{
    Observer observer{"A"};
    const std::ptrdiff_t before = Tests::BlocksInUse();
    world.registry = nullptr;

    {
        FileManager manager;
        manager.RegisterEventHandler(&observer);
        EXPECT_GT(Tests::BlocksInUse(), before);
    }

    EXPECT_EQ(Tests::BlocksInUse(), before);
    EXPECT_THAT(world.events, IsEmpty());
}

TEST_F(FileManagerPublicationTest, AFailureToWithdrawEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    world.onUnregister = [](const std::string&, void*) { throw std::domain_error("refused"); };

    EXPECT_DEATH(FileManager(), "terminate called");
    world.onUnregister = [](const std::string&, void*) {};
}

TEST_F(FileManagerPublicationTest, ARegistryThatCannotBeHadForWithdrawingEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    EXPECT_DEATH(
        {
            const FileManager manager;
            world.onInstance = [] { throw std::domain_error("no registry"); };
        },
        "terminate called");
}

// Layout: what was built against these headers goes on working when they are built anew.

TEST_F(FileManagerPublicationTest, TheObserversComeFirstAndTheRegistrationAfterThem)
{
    Observer observer{"A"};
    FileManager manager;
    manager.RegisterEventHandler(&observer);

    ImplLayout& impl = ImplOf(&manager);
    std::vector<IFileManagerObserver*> observers;
    impl.eventHandlers.PerformForEachEventHandler(
        [&observers](IFileManagerObserver* each) { observers.push_back(each); });
    EXPECT_THAT(observers, ElementsAre(&observer));

    // The holder's one field.
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
    // The destructor is next and takes two places.
    EXPECT_EQ(VirtualSlot(&IFileManager::ExploreFile), 4U);
    EXPECT_EQ(VirtualSlot(&IFileManager::MoveToTrash), 5U);
    EXPECT_EQ(VirtualSlot(&IFileManager::Remove), 6U);
    EXPECT_EQ(VirtualSlot(&IFileManager::Exists), 7U);
    EXPECT_EQ(VirtualSlot(&IFileManager::CreateDirectories), 8U);
    EXPECT_EQ(VirtualSlot(&Extended::Added), 9U);
}

TEST(FileManagerLayoutTest, TheManagerAddsNoVirtualFunction)
{
    struct Extended : FileManager
    {
        virtual void Added() {}
    };

    EXPECT_EQ(VirtualSlot(&FileManager::CreateDirectories), 8U);
    EXPECT_EQ(VirtualSlot(&Extended::Added), 9U);
}

TEST(FileManagerLayoutTest, TheObserversDestructorComesFirst)
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
