#include "Lib/Util/FS/FileManager.h"
#include "Lib/Interfaces/InstanceRegistry.h"
#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/Surroundings.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <string>

using testing::ElementsAre;
using testing::InSequence;
using testing::IsEmpty;
using testing::StrictMock;
using testing::Throw;
using testing::UnorderedElementsAre;
using Zendra::ioPath;
using Zendra::LW::FileManager;
using Zendra::LW::IFileManager;
using Zendra::LW::IFileManagerObserver;
using Zendra::LW::InstanceRegistry;

namespace {

[[maybe_unused]] const bool hasMovedTempFolder = Tests::PreferATemporaryFolderWithATrash();

class ObserverMock : public IFileManagerObserver
{
public:
    MOCK_METHOD(void, OnFileExplored, (const ioPath& path), (override));
    MOCK_METHOD(void, OnFileMovedToTrash, (const ioPath& path), (override));
    MOCK_METHOD(void, OnFileRemoved, (const ioPath& path), (override));
};

/// A file manager with two observers, which fail on every call that a test does not expect.
class FileManagerTest : public testing::Test, protected Tests::ByteFolder
{
protected:
    FileManagerTest()
    {
        manager.RegisterEventHandler(&first);
        manager.RegisterEventHandler(&second);
    }

    StrictMock<ObserverMock> first;
    StrictMock<ObserverMock> second;
    FileManager manager;
};

} // namespace

TEST_F(FileManagerTest, RemovesAFileAndNotifiesTheObserversInOrder)
{
    const ioPath path = Write("recording.mp4");
    const InSequence inOrder;
    EXPECT_CALL(first, OnFileRemoved(path));
    EXPECT_CALL(second, OnFileRemoved(path));

    EXPECT_TRUE(manager.Remove(path));

    EXPECT_THAT(Tree(), IsEmpty());
}

TEST_F(FileManagerTest, RemovesTheFileBeforeItNotifiesTheObservers)
{
    const ioPath path = Write("recording.mp4");
    EXPECT_CALL(first, OnFileRemoved(path)).WillOnce([this](const ioPath& removed) {
        EXPECT_FALSE(manager.Exists(removed));
    });
    EXPECT_CALL(second, OnFileRemoved(path));

    manager.Remove(path);
}

TEST_F(FileManagerTest, NotifiesNoObserverWhenAFileCouldNotBeRemoved)
{
    MakeFolder("folder");

    EXPECT_FALSE(manager.Remove(Path("folder")));
    EXPECT_FALSE(manager.Remove(Path("missing.mp4")));

    EXPECT_THAT(Tree(), ElementsAre("folder"));
}

TEST_F(FileManagerTest, MovesAFileToTheTrashAndNotifiesTheObserversInOrder)
{
    if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    const ioPath path = Write("recording.mp4");
    const InSequence inOrder;
    EXPECT_CALL(first, OnFileMovedToTrash(path));
    EXPECT_CALL(second, OnFileMovedToTrash(path));

    EXPECT_TRUE(manager.MoveToTrash(path));

    EXPECT_THAT(Tree(), IsEmpty());
}

TEST_F(FileManagerTest, NotifiesNoObserverWhenAFileCouldNotBeTrashed)
{
    EXPECT_FALSE(manager.MoveToTrash(Path("missing.mp4")));
}

TEST_F(FileManagerTest, NotifiesNoObserverWhenAFileCouldNotBeShown)
{
    EXPECT_FALSE(manager.ExploreFile(Path("missing.mp4")));
}

TEST_F(FileManagerTest, ChecksWhetherAFileExistsWithoutANotification)
{
    Write("recording.mp4");

    EXPECT_TRUE(manager.Exists(Path("recording.mp4")));
    EXPECT_FALSE(manager.Exists(Path("missing.mp4")));
}

TEST_F(FileManagerTest, CreatesAFolderWithItsParentsWithoutANotification)
{
    Write("file");

    EXPECT_TRUE(manager.CreateDirectories(Path("one/two/three")));
    EXPECT_TRUE(manager.CreateDirectories(Path("one/two/three")));
    EXPECT_FALSE(manager.CreateDirectories(Path("file/folder")));

    EXPECT_THAT(Tree(), UnorderedElementsAre("file", "one", "one/two", "one/two/three"));
}

TEST_F(FileManagerTest, NotifiesAnObserverRegisteredTwiceOnce)
{
    const ioPath path = Write("recording.mp4");
    manager.RegisterEventHandler(&first);
    EXPECT_CALL(first, OnFileRemoved(path)).Times(1);
    EXPECT_CALL(second, OnFileRemoved(path)).Times(1);

    manager.Remove(path);
}

TEST_F(FileManagerTest, DoesNotNotifyAnUnregisteredObserver)
{
    const ioPath path = Write("recording.mp4");
    EXPECT_CALL(second, OnFileRemoved(path));

    manager.UnregisterEventHandler(&first);
    manager.Remove(path);
}

TEST_F(FileManagerTest, IgnoresNullAsAnObserver)
{
    const ioPath path = Write("recording.mp4");
    EXPECT_CALL(first, OnFileRemoved(path));
    EXPECT_CALL(second, OnFileRemoved(path));

    manager.RegisterEventHandler(nullptr);
    manager.UnregisterEventHandler(nullptr);

    EXPECT_TRUE(manager.Remove(path));
}

TEST_F(FileManagerTest, WorksWithoutObservers)
{
    Write("recording.mp4");
    manager.UnregisterEventHandler(&first);
    manager.UnregisterEventHandler(&second);

    EXPECT_TRUE(manager.Remove(Path("recording.mp4")));

    EXPECT_THAT(Tree(), IsEmpty());
}

TEST_F(FileManagerTest, PassesOnAnExceptionOfAnObserverAfterTheFileIsRemoved)
{
    Write("one.mp4");
    Write("two.mp4");
    EXPECT_CALL(first, OnFileRemoved(testing::_)).WillOnce(Throw(std::runtime_error("failed"))).WillOnce([] {
    });
    EXPECT_CALL(second, OnFileRemoved(ioPath(Path("two.mp4"))));

    EXPECT_THROW(manager.Remove(Path("one.mp4")), std::runtime_error);
    EXPECT_THAT(Tree(), ElementsAre("two.mp4"));

    EXPECT_TRUE(manager.Remove(Path("two.mp4")));
}

TEST_F(FileManagerTest, AnObserverMayUseTheManagerFromInsideItsCall)
{
    Write("one.mp4");
    Write("two.mp4");
    manager.UnregisterEventHandler(&second);
    const InSequence inOrder;
    EXPECT_CALL(first, OnFileRemoved(ioPath(Path("one.mp4")))).WillOnce([this](const ioPath&) {
        EXPECT_TRUE(manager.Remove(Path("two.mp4")));
        manager.UnregisterEventHandler(&first);
    });
    EXPECT_CALL(first, OnFileRemoved(ioPath(Path("two.mp4"))));

    EXPECT_TRUE(manager.Remove(Path("one.mp4")));

    EXPECT_THAT(Tree(), IsEmpty());
}

TEST_F(FileManagerTest, ObserversMayBeDestroyedBeforeAnUnusedManager)
{
    auto shortLived = std::make_unique<FileManager>();
    auto observer = std::make_unique<StrictMock<ObserverMock>>();
    shortLived->RegisterEventHandler(observer.get());

    observer.reset();
    shortLived.reset();
}

// The registry

TEST(FileManagerRegistrationTest, IsFoundByItsInterfaceWhileItLives)
{
    const InstanceRegistry registry;
    auto manager = std::make_unique<FileManager>();

    EXPECT_EQ(registry.Find<IFileManager>(), manager.get());
    EXPECT_EQ(registry.DoFind("Zendra::LW::IFileManager"), static_cast<IFileManager*>(manager.get()));
    manager.reset();

    EXPECT_EQ(registry.DoFind("Zendra::LW::IFileManager"), nullptr);
}

TEST(FileManagerRegistrationTest, CanBeUsedThroughTheRegistry)
{
    const Tests::ByteFolder folder;
    const ioPath path = folder.Write("recording.mp4");
    const InstanceRegistry registry;
    const FileManager manager;
    StrictMock<ObserverMock> observer;
    EXPECT_CALL(observer, OnFileRemoved(path));

    auto* const found = registry.Find<IFileManager>();
    ASSERT_NE(found, nullptr);
    found->RegisterEventHandler(&observer);

    EXPECT_TRUE(found->Remove(path));
}

TEST(FileManagerRegistrationTest, TheNewerOfTwoIsFoundUntilItIsDestroyed)
{
    const InstanceRegistry registry;
    const FileManager older;
    auto newer = std::make_unique<FileManager>();
    EXPECT_EQ(registry.Find<IFileManager>(), newer.get());

    newer.reset();

    EXPECT_EQ(registry.Find<IFileManager>(), &older);
}

TEST(FileManagerRegistrationTest, WorksWithoutARegistry)
{
    FileManager manager;

    EXPECT_FALSE(manager.Exists("/no/such/file"));
}

TEST(FileManagerRegistrationTest, IsNotFoundInARegistryThatIsCreatedLater)
{
    auto manager = std::make_unique<FileManager>();

    const InstanceRegistry registry;

    EXPECT_EQ(registry.Find<IFileManager>(), nullptr);
    manager.reset();
    EXPECT_EQ(registry.Find<IFileManager>(), nullptr);
}

TEST(FileManagerRegistrationTest, TheRegistryMayBeDestroyedFirst)
{
    auto registry = std::make_unique<InstanceRegistry>();
    auto manager = std::make_unique<FileManager>();

    registry.reset();
    manager.reset();

    EXPECT_EQ(InstanceRegistry::Instance(), nullptr);
}

// Across libraries

TEST(FileManagerTypeTest, CanBeCastOutsideItsLibrary)
{
    const std::unique_ptr<IFileManager> manager = std::make_unique<FileManager>();
    Zendra::Core::EventPublisher<IFileManagerObserver>* const publisher = manager.get();

    EXPECT_EQ(dynamic_cast<FileManager*>(publisher), manager.get());
}
