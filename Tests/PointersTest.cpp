#include "Pointers.h"

#include <gmock/gmock.h>

#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

using Zendra::PropagateConstPtr;
using Zendra::UniquePtr;
using Zendra::details::PropogateConstCreator;

namespace {

struct Value
{
    int number = 7;
};

using Pointer = PropagateConstPtr<Value, UniquePtr>;

static_assert(std::is_same_v<UniquePtr<Value>, std::unique_ptr<Value>>);
static_assert(sizeof(Pointer) == sizeof(std::unique_ptr<Value>), "only the pointer");
static_assert(!std::is_copy_constructible_v<Pointer> && !std::is_copy_assignable_v<Pointer>);
static_assert(!std::is_move_constructible_v<Pointer> && !std::is_move_assignable_v<Pointer>);

static_assert(std::is_same_v<decltype(*std::declval<Pointer&>()), Value&>);
static_assert(std::is_same_v<decltype(std::declval<Pointer&>().operator->()), Value*>);
static_assert(std::is_same_v<decltype(std::declval<Pointer&>().get()), Value*>);
static_assert(std::is_same_v<decltype(*std::declval<const Pointer&>()), const Value&>);
static_assert(std::is_same_v<decltype(std::declval<const Pointer&>().operator->()), const Value*>);
static_assert(std::is_same_v<decltype(std::declval<const Pointer&>().get()), const Value*>);

static_assert(
    std::is_same_v<decltype(PropogateConstCreator<std::unique_ptr<Value>>()()), std::unique_ptr<Value>>);

/// Has no constructor, and its memory is filled with other bytes than zero.
struct Plain
{
    static void* operator new(std::size_t size)
    {
        void* const memory = ::operator new(size);
        std::memset(memory, 0xA5, size);
        return memory;
    }
    static void operator delete(void* memory) { ::operator delete(memory); }

    int number;
    void* pointer;
};

struct Counted
{
    Counted() { ++alive; }
    ~Counted() { --alive; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    static int alive;
};
int Counted::alive = 0;

struct Failing
{
    Failing() { throw std::runtime_error("failed"); }
};

struct Special
{
    int number = 0;
};

/// Hides its data, as the classes that use PropagateConstPtr do.
class Hidden
{
public:
    Hidden();
    ~Hidden();

    void SetNumber(int number);
    int Number() const;

private:
    struct Impl;
    PropagateConstPtr<Impl, UniquePtr> impl;
};

struct Hidden::Impl
{
    int number = 0;
};

Hidden::Hidden() = default;
Hidden::~Hidden() = default;

void Hidden::SetNumber(int number)
{
    impl->number = number;
}

int Hidden::Number() const
{
    return impl->number;
}

} // namespace

namespace Zendra::details {

template <>
struct PropogateConstCreator<std::unique_ptr<Special>>
{
    std::unique_ptr<Special> operator()() const { return std::make_unique<Special>(Special{42}); }
};

} // namespace Zendra::details

TEST(PointersTest, CreatesItsObject)
{
    const Pointer pointer;

    ASSERT_NE(pointer.get(), nullptr);
    EXPECT_EQ(pointer->number, 7);
}

TEST(PointersTest, TheObjectIsValueInitialised)
{
    const PropagateConstPtr<Plain, UniquePtr> pointer;

    EXPECT_EQ(pointer->number, 0);
    EXPECT_EQ(pointer->pointer, nullptr);
}

TEST(PointersTest, TheCreatorValueInitialises)
{
    const std::unique_ptr<Plain> plain = PropogateConstCreator<std::unique_ptr<Plain>>()();

    EXPECT_EQ(plain->number, 0);
    EXPECT_EQ(plain->pointer, nullptr);
}

TEST(PointersTest, UsesTheCreatorForTheObject)
{
    const PropagateConstPtr<Special, UniquePtr> pointer;

    EXPECT_EQ(pointer->number, 42);
}

TEST(PointersTest, AllAccessIsToTheSameObject)
{
    Pointer pointer;
    const Pointer& constant = pointer;

    (*pointer).number = 1;
    EXPECT_EQ(pointer->number, 1);
    pointer->number = 2;
    EXPECT_EQ(pointer.get()->number, 2);
    pointer.get()->number = 3;

    EXPECT_EQ((*constant).number, 3);
    EXPECT_EQ(constant->number, 3);
    EXPECT_EQ(constant.get(), pointer.get());
}

TEST(PointersTest, EachPointerHasAnObjectOfItsOwn)
{
    const Pointer first;
    const Pointer second;

    EXPECT_NE(first.get(), second.get());
}

TEST(PointersTest, DeletesItsObject)
{
    {
        const PropagateConstPtr<Counted, UniquePtr> pointer;
        ASSERT_EQ(Counted::alive, 1);
    }

    EXPECT_EQ(Counted::alive, 0);
}

TEST(PointersTest, PassesOnAnExceptionOfTheConstructor)
{
    using FailingPointer = PropagateConstPtr<Failing, UniquePtr>;

    EXPECT_THROW(FailingPointer(), std::runtime_error);
}

TEST(PointersTest, TheTypeMayBeIncompleteInTheHeader)
{
    Hidden hidden;

    hidden.SetNumber(5);

    EXPECT_EQ(hidden.Number(), 5);
}
