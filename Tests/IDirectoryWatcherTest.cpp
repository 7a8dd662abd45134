#include "Lib/Util/FS/IDirectoryWatcher.h"

#include "Lib/Util/FS/DirectoryChecker.h"
#include "Lib/Util/FS/DirectoryWatcher.h"
#include "Tests/Support/FolderFixture.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/QtVersion.h"
#include "Tests/Support/SignalLog.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/VirtualSlot.h"

#include <QMetaMethod>
#include <QMetaObject>
#include <QMetaType>

#include <gmock/gmock.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <type_traits>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Zendra::LW::DirectoryChecker;
using Zendra::LW::DirectoryWatcher;
using Zendra::LW::IDirectoryWatcher;

namespace Tests {
namespace {

// The interface that other code compiles against.
static_assert(std::is_convertible_v<IDirectoryWatcher*, QObject*>);
static_assert(std::is_abstract_v<IDirectoryWatcher>);
static_assert(std::has_virtual_destructor_v<IDirectoryWatcher>);
static_assert(std::is_same_v<decltype(&IDirectoryWatcher::StartWatching),
                             bool (IDirectoryWatcher::*)(const QString&, const QStringList&, const Predicate&,
                                                         unsigned int)>);
static_assert(std::is_same_v<decltype(&IDirectoryWatcher::StopWatching), void (IDirectoryWatcher::*)()>);
static_assert(
    std::is_same_v<decltype(&IDirectoryWatcher::GetWatchedDirPath), QString (IDirectoryWatcher::*)() const>);
static_assert(std::is_same_v<decltype(&IDirectoryWatcher::GetFileInfoList),
                             QList<QFileInfo> (IDirectoryWatcher::*)() const>);
static_assert(std::is_same_v<decltype(&IDirectoryWatcher::WatchingStarted), void (IDirectoryWatcher::*)()>);
static_assert(std::is_same_v<decltype(&IDirectoryWatcher::WatchingStopped), void (IDirectoryWatcher::*)()>);
static_assert(
    std::is_same_v<decltype(&IDirectoryWatcher::FileAdded), void (IDirectoryWatcher::*)(const QFileInfo&)>);
static_assert(
    std::is_same_v<decltype(&IDirectoryWatcher::FileRemoved), void (IDirectoryWatcher::*)(const QFileInfo&)>);
static_assert(
    std::is_same_v<decltype(&IDirectoryWatcher::FileChanged), void (IDirectoryWatcher::*)(const QFileInfo&)>);
static_assert(
    std::is_same_v<decltype(&IDirectoryWatcher::PathChanged), void (IDirectoryWatcher::*)(const QString&)>);

template <typename Class, typename = void>
constexpr bool hasHandlers = false;
template <typename Class>
constexpr bool
    hasHandlers<Class, std::void_t<decltype(&Class::OnDirectoryChanged), decltype(&Class::OnFileChanged)>> =
        true;
static_assert(!hasHandlers<IDirectoryWatcher>, "each implementation has handlers of its own");

template <typename Watcher>
constexpr bool IsImplementation()
{
    static_assert(std::is_convertible_v<Watcher*, IDirectoryWatcher*>);
    static_assert(std::is_default_constructible_v<Watcher>);
    static_assert(!std::is_constructible_v<Watcher, QObject*>);
    static_assert(!std::is_copy_constructible_v<Watcher>);
    static_assert(std::is_same_v<decltype(&Watcher::OnDirectoryChanged), void (Watcher::*)(const QString&)>);
    static_assert(std::is_same_v<decltype(&Watcher::OnFileChanged), void (Watcher::*)(const QString&)>);
    return true;
}
static_assert(IsImplementation<DirectoryWatcher>());
static_assert(IsImplementation<DirectoryChecker>());
static_assert(std::is_same_v<decltype(&DirectoryChecker::CheckFolder), void (DirectoryChecker::*)()>);

struct SignalRow
{
    int index;
    const char* signature;
    const char* argument; ///< its type's name; null for none
};

std::ostream& operator<<(std::ostream& stream, const SignalRow& row)
{
    return stream << row.signature;
}

class WatcherSignalTest : public testing::TestWithParam<SignalRow>
{
};

TEST_P(WatcherSignalTest, HasItsIndexAndItsTypeInTheMetaObject)
{
    const SignalRow& row = GetParam();
    const QMetaObject& metaObject = IDirectoryWatcher::staticMetaObject;

    const QMetaMethod method = metaObject.method(metaObject.methodOffset() + row.index);

    EXPECT_STREQ(method.methodSignature(), row.signature);
    EXPECT_EQ(method.methodType(), QMetaMethod::Signal);
    EXPECT_EQ(method.access(), QMetaMethod::Public);
    EXPECT_EQ(method.returnType(), QMetaType::Void);
    EXPECT_EQ(method.attributes(), 0);
    EXPECT_EQ(method.revision(), 0);
    EXPECT_STREQ(method.tag(), "");
    if (row.argument) {
        EXPECT_EQ(method.parameterTypes(), QList<QByteArray>{row.argument});
        EXPECT_EQ(method.parameterNames(), QList<QByteArray>{QByteArray()});
    } else {
        EXPECT_EQ(method.parameterCount(), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(AllSignals, WatcherSignalTest,
                         testing::Values(SignalRow{0, "WatchingStarted()", nullptr},
                                         SignalRow{1, "WatchingStopped()", nullptr},
                                         SignalRow{2, "FileAdded(QFileInfo)", "QFileInfo"},
                                         SignalRow{3, "FileRemoved(QFileInfo)", "QFileInfo"},
                                         SignalRow{4, "FileChanged(QFileInfo)", "QFileInfo"},
                                         SignalRow{5, "PathChanged(QString)", "QString"}),
                         [](const auto& testInfo) {
                             const std::string signature = testInfo.param.signature;
                             return signature.substr(0, signature.find('('));
                         });

TEST(WatcherMetaObjectTest, HasTheBuiltInTypeForThePath)
{
    const QMetaObject& metaObject = IDirectoryWatcher::staticMetaObject;

    EXPECT_EQ(metaObject.method(metaObject.methodOffset() + 5).parameterType(0), QMetaType::QString);
}

/// What a class adds to the meta-object of its base class.
struct OwnMembers
{
    int methods;
    int properties;
    int enumerators;
    int classInfos;
    int constructors;
};

bool operator==(const OwnMembers& a, const OwnMembers& b)
{
    return a.methods == b.methods && a.properties == b.properties && a.enumerators == b.enumerators
           && a.classInfos == b.classInfos && a.constructors == b.constructors;
}

std::ostream& operator<<(std::ostream& stream, const OwnMembers& own)
{
    return stream << own.methods << " methods, " << own.properties << " properties, " << own.enumerators
                  << " enumerators, " << own.classInfos << " class infos, " << own.constructors
                  << " constructors";
}

OwnMembers OwnMembersOf(const QMetaObject& metaObject)
{
    return {metaObject.methodCount() - metaObject.methodOffset(),
            metaObject.propertyCount() - metaObject.propertyOffset(),
            metaObject.enumeratorCount() - metaObject.enumeratorOffset(),
            metaObject.classInfoCount() - metaObject.classInfoOffset(), metaObject.constructorCount()};
}

TEST(WatcherMetaObjectTest, OfTheInterfaceHasTheSixSignalsAndNothingElse)
{
    const QMetaObject& metaObject = IDirectoryWatcher::staticMetaObject;

    EXPECT_STREQ(metaObject.className(), "Zendra::LW::IDirectoryWatcher");
    EXPECT_EQ(metaObject.superClass(), &QObject::staticMetaObject);
    EXPECT_EQ(OwnMembersOf(metaObject), (OwnMembers{6, 0, 0, 0, 0}));
}

TEST(WatcherMetaObjectTest, OfTheWatcherAddsNothingToTheInterface)
{
    const QMetaObject& metaObject = DirectoryWatcher::staticMetaObject;

    EXPECT_STREQ(metaObject.className(), "Zendra::LW::DirectoryWatcher");
    EXPECT_EQ(metaObject.superClass(), &IDirectoryWatcher::staticMetaObject);
    EXPECT_EQ(DirectoryWatcher().metaObject(), &metaObject);
    EXPECT_EQ(OwnMembersOf(metaObject), (OwnMembers{0, 0, 0, 0, 0}));
}

TEST(WatcherMetaObjectTest, OfTheCheckerAddsNothingToTheInterface)
{
    const QMetaObject& metaObject = DirectoryChecker::staticMetaObject;

    EXPECT_STREQ(metaObject.className(), "Zendra::LW::DirectoryChecker");
    EXPECT_EQ(metaObject.superClass(), &IDirectoryWatcher::staticMetaObject);
    EXPECT_EQ(DirectoryChecker().metaObject(), &metaObject);
    EXPECT_EQ(OwnMembersOf(metaObject), (OwnMembers{0, 0, 0, 0, 0}));
}

/// Whether a member function is virtual. The C++ ABI of Linux and macOS marks pointers to virtual functions
/// with a bit whose position depends on the processor.
template <typename Function>
bool IsVirtual(Function function)
{
#ifdef __aarch64__
    constexpr std::size_t markedWord = 1;
#else
    constexpr std::size_t markedWord = 0;
#endif
    std::array<std::size_t, 2> words;
    static_assert(std::is_member_function_pointer_v<Function> && sizeof(function) == sizeof(words));
    std::memcpy(words.data(), &function, sizeof(words));
    return (words[markedWord] & 1) != 0;
}

/// Gives access to the last virtual function of QObject.
struct ObjectProbe : QObject
{
    static std::size_t LastVirtualSlot() { return VirtualSlot(&ObjectProbe::disconnectNotify); }
};

template <typename Watcher>
class WatcherTableTest : public testing::Test
{
};

using AllClasses = testing::Types<IDirectoryWatcher, DirectoryWatcher, DirectoryChecker>;
TYPED_TEST_SUITE(WatcherTableTest, AllClasses, );

TYPED_TEST(WatcherTableTest, HasTheFourFunctionsInOrderAfterThoseOfQObject)
{
    const std::size_t last = ObjectProbe::LastVirtualSlot();

    EXPECT_EQ(VirtualSlot(&TypeParam::StartWatching), last + 1);
    EXPECT_EQ(VirtualSlot(&TypeParam::StopWatching), last + 2);
    EXPECT_EQ(VirtualSlot(&TypeParam::GetWatchedDirPath), last + 3);
    EXPECT_EQ(VirtualSlot(&TypeParam::GetFileInfoList), last + 4);
}

TEST(WatcherHandlersTest, AreNotVirtual)
{
    ASSERT_TRUE(IsVirtual(&DirectoryWatcher::StopWatching));

    EXPECT_FALSE(IsVirtual(&DirectoryWatcher::OnDirectoryChanged));
    EXPECT_FALSE(IsVirtual(&DirectoryWatcher::OnFileChanged));
    EXPECT_FALSE(IsVirtual(&DirectoryChecker::OnDirectoryChanged));
    EXPECT_FALSE(IsVirtual(&DirectoryChecker::OnFileChanged));
    EXPECT_FALSE(IsVirtual(&DirectoryChecker::CheckFolder));
}

/// What the interface promises, for both implementations.
template <typename Watcher>
class EveryWatcherTest : public FolderFixture
{
protected:
    bool Start() { return watcher->StartWatching(folder.Path(), {}, {}, 0); }

    Texts FileNames() const { return NamesOf(watcher->GetFileInfoList()); }

    std::unique_ptr<IDirectoryWatcher> watcher = std::make_unique<Watcher>();
    SignalLog signalLog{*watcher, folder.Path()};
};

using Implementations = testing::Types<DirectoryWatcher, DirectoryChecker>;
TYPED_TEST_SUITE(EveryWatcherTest, Implementations, );

TYPED_TEST(EveryWatcherTest, IsIdleAndWithoutAParentAtFirst)
{
    EXPECT_EQ(this->watcher->parent(), nullptr);
    EXPECT_THAT(this->watcher->children(), IsEmpty());
    EXPECT_TRUE(this->watcher->GetWatchedDirPath().isEmpty());
    EXPECT_THAT(this->watcher->GetFileInfoList(), IsEmpty());
}

TYPED_TEST(EveryWatcherTest, CanBeCastToItsClass)
{
    EXPECT_NE(dynamic_cast<TypeParam*>(this->watcher.get()), nullptr);
    EXPECT_NE(qobject_cast<TypeParam*>(this->watcher.get()), nullptr);
    EXPECT_TRUE(this->watcher->inherits("Zendra::LW::IDirectoryWatcher"));
}

TYPED_TEST(EveryWatcherTest, HasTheFilesInTheOrderOfTheirNames)
{
    if (const std::string why = WhyCaseIsIgnored(); !why.empty())
        GTEST_SKIP() << why;
    this->Write({"b.txt", "A.txt", "a.txt", "C.txt"});

    EXPECT_TRUE(this->Start());

    EXPECT_EQ(this->watcher->GetWatchedDirPath(), this->folder.Path());
    EXPECT_THAT(this->FileNames(), ElementsAre("A.txt", "C.txt", "a.txt", "b.txt"));
}

TYPED_TEST(EveryWatcherTest, HasItsSnapshotBeforeItEmitsWatchingStarted)
{
    this->Write("a.txt");
    QList<QFileInfo>::size_type filesAtStart = -1;
    QObject::connect(this->watcher.get(), &IDirectoryWatcher::WatchingStarted,
                     [&] { filesAtStart = this->watcher->GetFileInfoList().size(); });

    this->Start();

    EXPECT_EQ(filesAtStart, 1);
    EXPECT_THAT(this->signalLog.EntriesOf("WatchingStarted"), SizeIs(1));
    EXPECT_THAT(this->signalLog.EntriesOf("FileAdded"), IsEmpty());
}

TYPED_TEST(EveryWatcherTest, GivesACopyOfItsSnapshot)
{
    this->Write("a.txt");
    this->Start();

    this->watcher->GetFileInfoList().clear();
    QList<QFileInfo> cleared = this->watcher->GetFileInfoList();
    cleared.clear();
    const QList<QFileInfo> copy = this->watcher->GetFileInfoList();
    this->Write("b.txt");
    static_cast<TypeParam&>(*this->watcher).OnDirectoryChanged(this->folder.Path());

    EXPECT_THAT(copy, SizeIs(1));
    EXPECT_THAT(this->FileNames(), ElementsAre("a.txt", "b.txt"));
}

TYPED_TEST(EveryWatcherTest, RefusesToStartTwiceAndChangesNothing)
{
    this->Write({"a.txt", "other/b.txt"});
    this->Start();
    this->signalLog.Clear();

    EXPECT_FALSE(this->watcher->StartWatching(this->Path("other"), {}, {}, 3));

    EXPECT_EQ(this->watcher->GetWatchedDirPath(), this->folder.Path());
    EXPECT_THAT(this->FileNames(), ElementsAre("a.txt"));
    EXPECT_THAT(this->signalLog.Entries(), IsEmpty());
}

TYPED_TEST(EveryWatcherTest, StartsInAFolderThatIsMissing)
{
    EXPECT_TRUE(this->watcher->StartWatching(this->Path("missing"), {}, {}, 0));

    EXPECT_THAT(this->watcher->GetFileInfoList(), IsEmpty());
    EXPECT_THAT(this->signalLog.EntriesOf("WatchingStarted"), SizeIs(1));
}

TYPED_TEST(EveryWatcherTest, EmitsNothingWhenItIsStoppedBeforeAnyStart)
{
    this->watcher->StopWatching();

    EXPECT_THAT(this->signalLog.Entries(), IsEmpty());
}

TYPED_TEST(EveryWatcherTest, StopsOnceAndClearsItsSnapshotFirst)
{
    this->Write("a.txt");
    this->Start();
    this->signalLog.Clear();
    QList<QFileInfo>::size_type filesAtStop = -1;
    QObject::connect(this->watcher.get(), &IDirectoryWatcher::WatchingStopped,
                     [&] { filesAtStop = this->watcher->GetFileInfoList().size(); });

    this->watcher->StopWatching();
    this->watcher->StopWatching();

    EXPECT_EQ(filesAtStop, 0);
    EXPECT_THAT(this->watcher->GetFileInfoList(), IsEmpty());
    EXPECT_THAT(this->signalLog.Entries(), ElementsAre("WatchingStopped"));
}

TYPED_TEST(EveryWatcherTest, ScansTheFolderAgainWhenItIsRestarted)
{
    this->Write("a.txt");
    this->Start();
    this->watcher->StopWatching();
    this->Remove("a.txt");
    this->Write("b.txt");

    EXPECT_TRUE(this->Start());

    EXPECT_THAT(this->FileNames(), ElementsAre("b.txt"));
}

TYPED_TEST(EveryWatcherTest, EmitsNothingWhenItIsDestroyed)
{
    this->Write("a.txt");
    this->Start();
    this->signalLog.Clear();

    this->watcher.reset();

    EXPECT_THAT(this->signalLog.Entries(), IsEmpty());
}

TYPED_TEST(EveryWatcherTest, LogsNothingButRefusals)
{
    const LogCapture log;

    this->watcher->StopWatching();
    this->Start();
    this->watcher->StopWatching();
    this->watcher->StopWatching();
    this->Start();
    this->watcher.reset();

    EXPECT_THAT(log.Messages(), IsEmpty());
}

TYPED_TEST(EveryWatcherTest, RegistersNoMetaType)
{
    this->Write("a.txt");
    this->Start();
    auto& implementation = static_cast<TypeParam&>(*this->watcher);
    this->Write("b.txt");
    implementation.OnDirectoryChanged(this->folder.Path());
    this->Touch("b.txt");
    implementation.OnFileChanged(this->Path("b.txt"));
    this->Remove("b.txt");
    implementation.OnFileChanged(this->Path("b.txt"));

    EXPECT_THAT(this->signalLog.Infos(), SizeIs(3));
    // QMetaMethod::parameterType() would register QFileInfo, so no test here may call it for the signals of
    // files.
    EXPECT_FALSE(IsMetaType("QFileInfo"));
}

} // namespace
} // namespace Tests
