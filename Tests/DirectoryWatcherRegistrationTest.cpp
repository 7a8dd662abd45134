// When and how files and folders are registered for the system's notices.

#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/LogCapture.h"
#include "Tests/Support/NextFunction.h"
#include "Tests/Support/WatcherFixture.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <functional>
#include <string>

#include <sys/inotify.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace Tests {
namespace {

/// What a test changes in the calls that register files and folders with the system.
struct SystemNotices
{
    /// Runs before a path is registered.
    std::function<void(const std::string&)> beforeRegistering;
    /// Refuses every path, as the system does when too many are registered.
    bool areExhausted = false;
};

SystemNotices& TheSystem()
{
    static SystemNotices notices;
    return notices;
}

class DirectoryWatcherRegistrationTest : public WatcherFixture
{
protected:
    ~DirectoryWatcherRegistrationTest() override { TheSystem() = {}; }
};

} // namespace
} // namespace Tests

// Replaces the system's function, for Qt's calls too.
extern "C" int inotify_add_watch(int descriptor, const char* path, uint32_t mask) noexcept
{
    static const auto original = Tests::NextFunction<decltype(inotify_add_watch)>("inotify_add_watch");
    if (Tests::TheSystem().areExhausted) {
        errno = ENOSPC;
        return -1;
    }
    if (Tests::TheSystem().beforeRegistering)
        Tests::TheSystem().beforeRegistering(path);
    return original(descriptor, path, mask);
}

namespace Tests {
namespace {

TEST_F(DirectoryWatcherRegistrationTest, ComesBeforeTheTimesAreReadAtTheStart)
{
    Write({"a.txt"});
    TheSystem().beforeRegistering = [this](const std::string& path) {
        if (path == Path("a.txt").toStdString())
            Touch("a.txt");
    };

    watcher->StartWatching(folder.Path(), {}, {}, 0);

    EXPECT_EQ(Entry(0).lastModified(), QFileInfo(Path("a.txt")).lastModified())
        << "a change between the two would never be reported";
}

TEST_F(DirectoryWatcherRegistrationTest, ComesBeforeTheTimesOfANewFileAreRead)
{
    StartWith({"b.txt"});
    Write({"a.txt"});
    TheSystem().beforeRegistering = [this](const std::string& path) {
        if (path == Path("a.txt").toStdString())
            Touch("a.txt");
    };

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_EQ(Entry(0).lastModified(), QFileInfo(Path("a.txt")).lastModified());
}

TEST_F(DirectoryWatcherRegistrationTest, OfTheRootComesBeforeTheFirstScan)
{
    Write({"a.txt"});
    TheSystem().beforeRegistering = [this](const std::string& path) {
        if (path == RootPath())
            Write({"b.txt"});
    };

    watcher->StartWatching(folder.Path(), {}, {}, 0);

    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherRegistrationTest, MayFailAndTheFilesStay)
{
    Write({"a.txt"});
    TheSystem().areExhausted = true;

    EXPECT_TRUE(watcher->StartWatching(folder.Path(), {}, {}, 0));

    EXPECT_THAT(Files(), ElementsAre("a.txt"));
    EXPECT_THAT(RegisteredFiles(), IsEmpty());
    EXPECT_THAT(RegisteredFolders(), IsEmpty());
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted"));
}

TEST_F(DirectoryWatcherRegistrationTest, OfANewFileMayFailAndTheFileStays)
{
    StartWith({"a.txt"});
    Write({"b.txt"});
    TheSystem().areExhausted = true;
    const LogCapture log;

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt"));
    EXPECT_THAT(RegisteredFiles(), ElementsAre("a.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded b.txt"));
    EXPECT_THAT(log.Messages(), IsEmpty());
    Remove("b.txt");
    watcher->OnFileChanged(Path("b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded b.txt", "FileRemoved b.txt"));
}

} // namespace
} // namespace Tests
