#include "Lib/Util/FS/FileManager.h"
#include "Lib/Interfaces/InstanceRegistry.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/TempFolder.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <string>

using testing::InSequence;
using testing::StrictMock;
using testing::Throw;
using Zendra::ioPath;
using Zendra::LW::FileManager;
using Zendra::LW::IFileManager;
using Zendra::LW::IFileManagerObserver;
using Zendra::LW::InstanceRegistry;

namespace {

[[maybe_unused]] const bool isMoved = Tests::PreferATemporaryFolderWithATrash();

class ObserverMock : public IFileManagerObserver
{
public:
    MOCK_METHOD(void, OnFileExplored, (const ioPath& path), (override));
    MOCK_METHOD(void, OnFileMovedToTrash, (const ioPath& path), (override));
    MOCK_METHOD(void, OnFileRemoved, (const ioPath& path), (override));
};

/// A file manager with two observers, of which every call that a test does not expect is a failure.
class FileManagerTest : public testing::Test
{
protected:
    FileManagerTest()
    {
        manager.RegisterEventHandler(&first);
        manager.RegisterEventHandler(&second);
    }

    ioPath Path(const QString& relativePath) const { return folder.Path(relativePath).toStdString(); }

    const Tests::TempFolder folder;
    StrictMock<ObserverMock> first;
    StrictMock<ObserverMock> second;
    FileManager manager;
};

} // namespace

TEST_F(FileManagerTest, RemovesAFileAndTellsTheObserversInOrder)
{
    folder.Write(QStringLiteral("recording.mp4"));
    const ioPath path = Path(QStringLiteral("recording.mp4"));
    const InSequence inOrder;
    EXPECT_CALL(first, OnFileRemoved(path));
    EXPECT_CALL(second, OnFileRemoved(path));

    EXPECT_TRUE(manager.Remove(path));

    EXPECT_EQ(folder.Entries(), QStringList());
}

TEST_F(FileManagerTest, TheFileIsGoneWhenItsObserversAreTold)
{
    folder.Write(QStringLiteral("recording.mp4"));
    const ioPath path = Path(QStringLiteral("recording.mp4"));
    EXPECT_CALL(first, OnFileRemoved(path)).WillOnce([this](const ioPath& removed) {
        EXPECT_FALSE(manager.Exists(removed));
    });
    EXPECT_CALL(second, OnFileRemoved(path));

    manager.Remove(path);
}

TEST_F(FileManagerTest, SaysNothingOfAFileThatCouldNotBeRemoved)
{
    folder.MakeFolder(QStringLiteral("folder"));

    EXPECT_FALSE(manager.Remove(Path(QStringLiteral("folder"))));
    EXPECT_FALSE(manager.Remove(Path(QStringLiteral("missing.mp4"))));

    EXPECT_EQ(folder.Entries(), QStringList(QStringLiteral("folder")));
}

TEST_F(FileManagerTest, MovesAFileToTheTrashAndTellsTheObserversInOrder)
{
    if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    folder.Write(QStringLiteral("recording.mp4"));
    const ioPath path = Path(QStringLiteral("recording.mp4"));
    const InSequence inOrder;
    EXPECT_CALL(first, OnFileMovedToTrash(path));
    EXPECT_CALL(second, OnFileMovedToTrash(path));

    EXPECT_TRUE(manager.MoveToTrash(path));

    EXPECT_EQ(folder.Entries(), QStringList());
}

TEST_F(FileManagerTest, SaysNothingOfAFileThatCouldNotBeTrashed)
{
    EXPECT_FALSE(manager.MoveToTrash(Path(QStringLiteral("missing.mp4"))));
}

TEST_F(FileManagerTest, SaysNothingOfAFileThatCouldNotBeShown)
{
    EXPECT_FALSE(manager.ExploreFile(Path(QStringLiteral("missing.mp4"))));
}

TEST_F(FileManagerTest, TellsWhetherAFileExistsAndTellsNobodyElse)
{
    folder.Write(QStringLiteral("recording.mp4"));

    EXPECT_TRUE(manager.Exists(Path(QStringLiteral("recording.mp4"))));
    EXPECT_FALSE(manager.Exists(Path(QStringLiteral("missing.mp4"))));
}

TEST_F(FileManagerTest, CreatesAFolderWithThoseAboveItAndTellsNobody)
{
    folder.Write(QStringLiteral("file"));

    EXPECT_TRUE(manager.CreateDirectories(Path(QStringLiteral("one/two/three"))));
    EXPECT_TRUE(manager.CreateDirectories(Path(QStringLiteral("one/two/three"))));
    EXPECT_FALSE(manager.CreateDirectories(Path(QStringLiteral("file/folder"))));

    EXPECT_EQ(folder.Entries(QStringLiteral("one/two")), QStringList(QStringLiteral("three")));
}

TEST_F(FileManagerTest, AnObserverRegisteredTwiceIsToldOnce)
{
    folder.Write(QStringLiteral("recording.mp4"));
    const ioPath path = Path(QStringLiteral("recording.mp4"));
    manager.RegisterEventHandler(&first);
    EXPECT_CALL(first, OnFileRemoved(path)).Times(1);
    EXPECT_CALL(second, OnFileRemoved(path)).Times(1);

    manager.Remove(path);
}

TEST_F(FileManagerTest, AnUnregisteredObserverIsToldNothing)
{
    folder.Write(QStringLiteral("recording.mp4"));
    const ioPath path = Path(QStringLiteral("recording.mp4"));
    EXPECT_CALL(second, OnFileRemoved(path));

    manager.UnregisterEventHandler(&first);
    manager.Remove(path);
}

TEST_F(FileManagerTest, NullIsNoObserver)
{
    folder.Write(QStringLiteral("recording.mp4"));
    const ioPath path = Path(QStringLiteral("recording.mp4"));
    EXPECT_CALL(first, OnFileRemoved(path));
    EXPECT_CALL(second, OnFileRemoved(path));

    manager.RegisterEventHandler(nullptr);
    manager.UnregisterEventHandler(nullptr);

    EXPECT_TRUE(manager.Remove(path));
}

TEST_F(FileManagerTest, WorksWithoutObservers)
{
    folder.Write(QStringLiteral("recording.mp4"));
    manager.UnregisterEventHandler(&first);
    manager.UnregisterEventHandler(&second);

    EXPECT_TRUE(manager.Remove(Path(QStringLiteral("recording.mp4"))));

    EXPECT_EQ(folder.Entries(), QStringList());
}

TEST_F(FileManagerTest, AnObserverThatThrowsIsHeardByTheCallerAndTheFileIsGone)
{
    folder.Write(QStringLiteral("one.mp4"));
    folder.Write(QStringLiteral("two.mp4"));
    EXPECT_CALL(first, OnFileRemoved(testing::_)).WillOnce(Throw(std::runtime_error("failed"))).WillOnce([] {
    });
    EXPECT_CALL(second, OnFileRemoved(Path(QStringLiteral("two.mp4"))));

    EXPECT_THROW(manager.Remove(Path(QStringLiteral("one.mp4"))), std::runtime_error);
    EXPECT_EQ(folder.Entries(), QStringList(QStringLiteral("two.mp4")));

    EXPECT_TRUE(manager.Remove(Path(QStringLiteral("two.mp4"))));
}

TEST_F(FileManagerTest, AnObserverMayUseTheManagerFromInsideItsCall)
{
    folder.Write(QStringLiteral("one.mp4"));
    folder.Write(QStringLiteral("two.mp4"));
    manager.UnregisterEventHandler(&second);
    const InSequence inOrder;
    EXPECT_CALL(first, OnFileRemoved(Path(QStringLiteral("one.mp4")))).WillOnce([this](const ioPath&) {
        EXPECT_TRUE(manager.Remove(Path(QStringLiteral("two.mp4"))));
        manager.UnregisterEventHandler(&first);
    });
    EXPECT_CALL(first, OnFileRemoved(Path(QStringLiteral("two.mp4"))));

    EXPECT_TRUE(manager.Remove(Path(QStringLiteral("one.mp4"))));

    EXPECT_EQ(folder.Entries(), QStringList());
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

TEST(FileManagerRegistrationTest, IsFoundByItsInterfaceForJustItsLifetime)
{
    const InstanceRegistry registry;
    auto manager = std::make_unique<FileManager>();

    EXPECT_EQ(registry.Find<IFileManager>(), manager.get());
    EXPECT_EQ(registry.DoFind("Zendra::LW::IFileManager"), static_cast<IFileManager*>(manager.get()));
    manager.reset();

    EXPECT_EQ(registry.DoFind("Zendra::LW::IFileManager"), nullptr);
}

TEST(FileManagerRegistrationTest, IsUsedThroughWhatWasFound)
{
    const Tests::TempFolder folder;
    const ioPath path = folder.Write(QStringLiteral("recording.mp4")).toStdString();
    const InstanceRegistry registry;
    const FileManager manager;
    StrictMock<ObserverMock> observer;
    EXPECT_CALL(observer, OnFileRemoved(path));

    auto* const found = registry.Find<IFileManager>();
    ASSERT_NE(found, nullptr);
    found->RegisterEventHandler(&observer);

    EXPECT_TRUE(found->Remove(path));
}

TEST(FileManagerRegistrationTest, TheNewestOfTwoIsFoundUntilItGoes)
{
    const InstanceRegistry registry;
    const FileManager older;
    auto newer = std::make_unique<FileManager>();
    EXPECT_EQ(registry.Find<IFileManager>(), newer.get());

    newer.reset();

    EXPECT_EQ(registry.Find<IFileManager>(), &older);
}

TEST(FileManagerRegistrationTest, WorksUnpublishedWithoutARegistry)
{
    FileManager manager;

    EXPECT_FALSE(manager.Exists("/no/such/file"));
}

TEST(FileManagerRegistrationTest, ARegistryMadeLaterDoesNotLearnOfIt)
{
    auto manager = std::make_unique<FileManager>();

    const InstanceRegistry registry;

    EXPECT_EQ(registry.Find<IFileManager>(), nullptr);
    manager.reset();
    EXPECT_EQ(registry.Find<IFileManager>(), nullptr);
}

TEST(FileManagerRegistrationTest, TheRegistryMayGoFirst)
{
    auto registry = std::make_unique<InstanceRegistry>();
    auto manager = std::make_unique<FileManager>();

    registry.reset();
    manager.reset();

    EXPECT_EQ(InstanceRegistry::Instance(), nullptr);
}

// Across libraries

TEST(FileManagerTypeTest, IsKnownByItsTypeOutsideOfItsLibrary)
{
    const std::unique_ptr<IFileManager> manager = std::make_unique<FileManager>();
    Zendra::Core::EventPublisher<IFileManagerObserver>* const publisher = manager.get();

    EXPECT_EQ(dynamic_cast<FileManager*>(publisher), manager.get());
}
