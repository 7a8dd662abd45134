#include "Lib/Interfaces/InstanceRegistry.h"
#include "Lib/Interfaces/AutoInstanceRegistrator.h"
#include "Tests/Support/MutexLog.h"
#include "Tests/Support/Threads.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <future>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include <cxxabi.h>

using Zendra::LW::AutoInstanceRegistrator;
using Zendra::LW::InstanceRegistry;

namespace {

bool demanglerHasNoMemory = false;

} // namespace

// The linker's names for the replacement of a function (--wrap) and for the replaced function.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" char* __real___cxa_demangle(const char* mangled, char* buffer, std::size_t* length, int* status);
extern "C" char* __wrap___cxa_demangle(const char* mangled, char* buffer, std::size_t* length, int* status);

extern "C" char* __wrap___cxa_demangle(const char* mangled, char* buffer, std::size_t* length, int* status)
{
    if (!demanglerHasNoMemory)
        return __real___cxa_demangle(mangled, buffer, length, status);
    *status = -1;
    return nullptr;
}
// NOLINTEND(bugprone-reserved-identifier)

namespace Application {

struct IService
{
    virtual ~IService() = default;
    virtual std::string Name() const = 0;
};

struct IOther
{
    virtual ~IOther() = default;
    int other = 0;
};

/// The interface is not its first base, so a pointer to it is another address.
struct Service : IOther, IService
{
    explicit Service(std::string itsName = "service") : name(std::move(itsName)) {}
    std::string Name() const override { return name; }

    std::string name;
};

template <class T>
struct Box
{
};

} // namespace Application

namespace {

using Application::IOther;
using Application::IService;
using Application::Service;

static_assert(
    !std::is_copy_constructible_v<InstanceRegistry> && !std::is_copy_assignable_v<InstanceRegistry>);
static_assert(
    !std::is_move_constructible_v<InstanceRegistry> && !std::is_move_assignable_v<InstanceRegistry>);

using Registrator = AutoInstanceRegistrator<IService>;
static_assert(sizeof(Registrator) == sizeof(IService*), "one member, and no virtual function");
static_assert(!std::is_copy_constructible_v<Registrator> && !std::is_copy_assignable_v<Registrator>);
static_assert(!std::is_convertible_v<IService*, Registrator>);
static_assert(std::is_nothrow_destructible_v<Registrator>);

class InstanceRegistryTest : public testing::Test
{
protected:
    int first = 1;
    int second = 2;
    int third = 3;
    InstanceRegistry registry;
};

} // namespace

// The process-wide registry

TEST(InstanceRegistryInstanceTest, IsNullWithoutAnObject)
{
    EXPECT_EQ(InstanceRegistry::Instance(), nullptr);
}

TEST(InstanceRegistryInstanceTest, AnObjectIsTheRegistryWhileItLives)
{
    auto registry = std::make_unique<InstanceRegistry>();
    EXPECT_EQ(InstanceRegistry::Instance(), registry.get());

    registry.reset();

    EXPECT_EQ(InstanceRegistry::Instance(), nullptr);
}

TEST(InstanceRegistryInstanceTest, ASecondOneThrowsAndTheFirstStays)
{
    InstanceRegistry registry;
    int instance = 0;
    registry.DoRegister("key", &instance);

    EXPECT_THROW(InstanceRegistry(), std::logic_error);

    EXPECT_EQ(InstanceRegistry::Instance(), &registry);
    EXPECT_EQ(registry.DoFind("key"), &instance);
}

TEST(InstanceRegistryInstanceTest, ALaterOneStartsEmpty)
{
    auto registry = std::make_unique<InstanceRegistry>();
    int instance = 0;
    registry->DoRegister("key", &instance);
    registry.reset();

    const InstanceRegistry next;

    EXPECT_EQ(InstanceRegistry::Instance(), &next);
    EXPECT_EQ(next.DoFind("key"), nullptr);
}

TEST(InstanceRegistryInstanceTest, IsTheSameOnEveryThread)
{
    const InstanceRegistry registry;
    InstanceRegistry* seen = nullptr;

    std::thread([&seen] { seen = InstanceRegistry::Instance(); }).join();

    EXPECT_EQ(seen, &registry);
}

TEST(InstanceRegistryInstanceTest, OnlyOneOfSeveralThreadsCreatesTheRegistry)
{
    constexpr int count = 4;
    std::promise<void> allDone;
    const std::shared_future<void> end = allDone.get_future().share();
    std::vector<std::promise<bool>> results(count);
    std::vector<std::thread> threads;

    for (std::promise<bool>& result : results) {
        threads.emplace_back([&result, end] {
            try {
                const InstanceRegistry registry;
                result.set_value(InstanceRegistry::Instance() == &registry);
                end.wait();
            } catch (const std::logic_error&) {
                result.set_value(false);
            }
        });
    }
    int made = 0;
    for (std::promise<bool>& result : results)
        made += result.get_future().get() ? 1 : 0;
    allDone.set_value();
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(made, 1);
    EXPECT_EQ(InstanceRegistry::Instance(), nullptr);
}

// Keys and instances

TEST_F(InstanceRegistryTest, FindsNothingWhenItIsNew)
{
    EXPECT_EQ(registry.DoFind("key"), nullptr);
}

TEST_F(InstanceRegistryTest, FindsARegisteredInstance)
{
    registry.DoRegister("key", &first);

    EXPECT_EQ(registry.DoFind("key"), &first);
}

TEST_F(InstanceRegistryTest, TellsKeysApart)
{
    registry.DoRegister("key", &first);
    registry.DoRegister("other key", &second);

    EXPECT_EQ(registry.DoFind("key"), &first);
    EXPECT_EQ(registry.DoFind("other key"), &second);
    EXPECT_EQ(registry.DoFind("Key"), nullptr);
}

TEST_F(InstanceRegistryTest, FindsTheNewestAndThenTheOneBeforeIt)
{
    registry.DoRegister("key", &first);
    registry.DoRegister("key", &second);
    registry.DoRegister("key", &third);
    EXPECT_EQ(registry.DoFind("key"), &third);

    registry.DoUnregister("key", &third);
    EXPECT_EQ(registry.DoFind("key"), &second);
    registry.DoUnregister("key", &second);
    EXPECT_EQ(registry.DoFind("key"), &first);
    registry.DoUnregister("key", &first);

    EXPECT_EQ(registry.DoFind("key"), nullptr);
}

TEST_F(InstanceRegistryTest, AnOlderOneMayBeUnregisteredFirst)
{
    registry.DoRegister("key", &first);
    registry.DoRegister("key", &second);
    registry.DoRegister("key", &third);

    registry.DoUnregister("key", &second);
    EXPECT_EQ(registry.DoFind("key"), &third);
    registry.DoUnregister("key", &third);

    EXPECT_EQ(registry.DoFind("key"), &first);
}

TEST_F(InstanceRegistryTest, AnInstanceRegisteredAgainIsTheNewestAndIsUnregisteredAsOften)
{
    registry.DoRegister("key", &first);
    registry.DoRegister("key", &second);
    registry.DoRegister("key", &first);
    EXPECT_EQ(registry.DoFind("key"), &first);

    registry.DoUnregister("key", &first);
    EXPECT_EQ(registry.DoFind("key"), &second);
    registry.DoUnregister("key", &second);

    EXPECT_EQ(registry.DoFind("key"), &first);
}

TEST_F(InstanceRegistryTest, OneInstanceMayHaveTwoKeys)
{
    registry.DoRegister("key", &first);
    registry.DoRegister("other key", &first);

    registry.DoUnregister("key", &first);

    EXPECT_EQ(registry.DoFind("key"), nullptr);
    EXPECT_EQ(registry.DoFind("other key"), &first);
}

TEST_F(InstanceRegistryTest, UnregisteringAnUnknownPairChangesNothing)
{
    registry.DoRegister("key", &first);
    registry.DoRegister("other key", &second);

    registry.DoUnregister("key", &second);
    registry.DoUnregister("other key", &first);
    registry.DoUnregister("unknown key", &first);

    EXPECT_EQ(registry.DoFind("key"), &first);
    EXPECT_EQ(registry.DoFind("other key"), &second);
    EXPECT_EQ(registry.DoFind("unknown key"), nullptr);
}

TEST_F(InstanceRegistryTest, IgnoresNull)
{
    registry.DoRegister("key", &first);

    registry.DoRegister("key", nullptr);
    EXPECT_EQ(registry.DoFind("key"), &first);
    registry.DoUnregister("key", nullptr);
    registry.DoUnregister("unknown key", nullptr);

    EXPECT_EQ(registry.DoFind("key"), &first);
}

TEST_F(InstanceRegistryTest, TheEmptyKeyIsAKey)
{
    registry.DoRegister("", &first);

    EXPECT_EQ(registry.DoFind(""), &first);
}

// By type

TEST_F(InstanceRegistryTest, FindsAServiceByItsInterface)
{
    Service service;

    registry.Register<IService>(&service);

    EXPECT_EQ(registry.Find<IService>(), &service);
    EXPECT_EQ(registry.Find<IService>()->Name(), "service");
    EXPECT_EQ(registry.Find<IOther>(), nullptr);
    EXPECT_EQ(registry.Find<Service>(), nullptr);
}

TEST_F(InstanceRegistryTest, TheKeyIsTheReadableNameOfTheInterface)
{
    Service service;

    registry.Register<IService>(&service);

    EXPECT_EQ(registry.DoFind("Application::IService"), static_cast<IService*>(&service));
}

TEST_F(InstanceRegistryTest, FindsOneServiceByEachOfItsInterfaces)
{
    Service service;
    registry.Register<IService>(&service);
    registry.Register<IOther>(&service);

    registry.Unregister<IService>(&service);

    EXPECT_EQ(registry.Find<IService>(), nullptr);
    EXPECT_EQ(registry.Find<IOther>(), &service);
}

TEST_F(InstanceRegistryTest, FindsTheNewestServiceUntilItIsUnregistered)
{
    Service older("older");
    Service newer("newer");
    registry.Register<IService>(&older);
    registry.Register<IService>(&newer);
    EXPECT_EQ(registry.Find<IService>()->Name(), "newer");

    registry.Unregister<IService>(&newer);

    EXPECT_EQ(registry.Find<IService>()->Name(), "older");
}

TEST_F(InstanceRegistryTest, IgnoresNullOfAType)
{
    registry.Register<IService>(nullptr);
    registry.Unregister<IService>(nullptr);

    EXPECT_EQ(registry.Find<IService>(), nullptr);
}

// Names

namespace {

struct NameCase
{
    const char* title;
    std::string given;
    std::string readable;
};

void PrintTo(const NameCase& row, std::ostream* stream)
{
    *stream << row.title;
}

class DemangleTest : public testing::TestWithParam<NameCase>
{
};

} // namespace

TEST_P(DemangleTest, ReturnsTheReadableName)
{
    EXPECT_EQ(InstanceRegistry::Demangle(GetParam().given), GetParam().readable);
}

INSTANTIATE_TEST_SUITE_P(
    , DemangleTest,
    testing::Values(NameCase{"Class", typeid(IService).name(), "Application::IService"},
                    NameCase{"Template", typeid(Application::Box<IService>).name(),
                             "Application::Box<Application::IService>"},
                    NameCase{"BuiltIn", typeid(int).name(), "int"},
                    NameCase{"AlreadyReadable", "Application::IService", "Application::IService"},
                    NameCase{"NotAMangledName", "a key of its own", "a key of its own"},
                    NameCase{"Truncated", "N11Application", "N11Application"}, NameCase{"Empty", "", ""}),
    [](const auto& row) { return row.param.title; });

TEST_F(InstanceRegistryTest, RegistersNothingWithoutMemoryForTheName)
{
    Service service;

    demanglerHasNoMemory = true;
    EXPECT_THROW(registry.Register<IService>(&service), std::bad_alloc);
    demanglerHasNoMemory = false;

    EXPECT_EQ(registry.Find<IService>(), nullptr);
    EXPECT_EQ(registry.DoFind(typeid(IService).name()), nullptr);
}

// Threads

TEST_F(InstanceRegistryTest, EveryOperationLocksAndUnlocksOnce)
{
    int locks = 0;
    int unlocks = 0;
    const Tests::MutexLog log([&](Tests::MutexLog::Event event, const void*) {
        locks += event == Tests::MutexLog::Event::HasLock ? 1 : 0;
        unlocks += event == Tests::MutexLog::Event::Unlocked ? 1 : 0;
    });

    registry.DoRegister("key", &first);
    EXPECT_EQ(locks, 1);
    EXPECT_EQ(registry.DoFind("key"), &first);
    EXPECT_EQ(locks, 2);
    registry.DoUnregister("key", &first);
    EXPECT_EQ(locks, 3);

    EXPECT_EQ(unlocks, 3);
}

TEST_F(InstanceRegistryTest, SeveralThreadsRegisterFindAndUnregister)
{
    constexpr int rounds = 200;
    std::vector<Service> services(4);

    Tests::RunOnThreads(4, [&](int thread) {
        Service& service = services[static_cast<std::size_t>(thread)];
        for (int round = 0; round < rounds; ++round) {
            registry.Register<IService>(&service);
            // There is at least this thread's own service.
            EXPECT_NE(registry.Find<IService>(), nullptr);
            registry.Unregister<IService>(&service);
        }
    });

    EXPECT_EQ(registry.Find<IService>(), nullptr);
}

// AutoInstanceRegistrator

TEST_F(InstanceRegistryTest, ARegistratorRegistersItsInstanceWhileItLives)
{
    Service service;

    auto registrator = std::make_unique<Registrator>(&service);
    EXPECT_EQ(registry.Find<IService>(), &service);
    registrator.reset();

    EXPECT_EQ(registry.Find<IService>(), nullptr);
}

TEST_F(InstanceRegistryTest, ARegistratorUnregistersOnlyItsOwnInstance)
{
    Service older("older");
    Service newer("newer");
    auto ofTheOlder = std::make_unique<Registrator>(&older);
    const Registrator ofTheNewer(&newer);

    ofTheOlder.reset();

    EXPECT_EQ(registry.Find<IService>(), &newer);
}

TEST(AutoInstanceRegistratorTest, ARegistratorCreatedBeforeTheRegistryRegistersNothing)
{
    Service service;
    const Registrator registrator(&service);

    const InstanceRegistry registry;

    EXPECT_EQ(registry.Find<IService>(), nullptr);
}

TEST(AutoInstanceRegistratorTest, TheRegistryMayBeDestroyedFirst)
{
    Service service;
    auto registry = std::make_unique<InstanceRegistry>();
    auto registrator = std::make_unique<Registrator>(&service);

    registry.reset();
    registrator.reset();

    EXPECT_EQ(InstanceRegistry::Instance(), nullptr);
}

TEST(AutoInstanceRegistratorTest, UnregistersFromTheCurrentRegistry)
{
    Service service;
    auto registrator = std::make_unique<Registrator>(&service);
    InstanceRegistry registry;
    registry.Register<IService>(&service);

    registrator.reset();

    EXPECT_EQ(registry.Find<IService>(), nullptr);
}

TEST_F(InstanceRegistryTest, ARegistratorThatCannotUnregisterEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Service service;
    auto registrator = std::make_unique<Registrator>(&service);

    EXPECT_DEATH(
        {
            demanglerHasNoMemory = true;
            registrator.reset();
        },
        "terminate called");
}
