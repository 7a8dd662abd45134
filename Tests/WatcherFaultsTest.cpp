// What each of the two watchers reports when the file system fails.

#include "Tests/Support/BothWatchersFixture.h"
#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/NextFunction.h"

#include <QFile>

#include <gmock/gmock.h>

#include <array>
#include <cerrno>
#include <climits>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

namespace Tests {
namespace {

constexpr int unlimited = std::numeric_limits<int>::max();

/// What a test changes in the calls that list folders and register paths.
struct Faults
{
    /// How many paths can still be registered for notices.
    int watchesLeft = unlimited;
    /// Runs after a path was registered.
    std::function<void(const std::string&)> afterRegistering;

    /// The folder that cannot be opened, and why.
    std::string refusedFolder;
    int refusal = 0;

    /// The folder whose reading fails after this many entries, or calls insteadOfFailing then.
    std::string brokenFolder;
    int readableEntries = unlimited;
    /// Runs instead of the failure, once.
    std::function<void()> insteadOfFailing;
};

Faults& TheFaults()
{
    static Faults faults;
    return faults;
}

std::string PathOf(DIR* folder)
{
    std::array<char, PATH_MAX> path;
    const std::string link = "/proc/self/fd/" + std::to_string(::dirfd(folder));
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
    return length < 0 ? std::string() : std::string(path.data(), static_cast<std::size_t>(length));
}

/// Counts a call that reads an entry. @return whether the call may succeed
bool MayRead(DIR* folder)
{
    Faults& faults = TheFaults();
    if (faults.brokenFolder.empty() || PathOf(folder) != faults.brokenFolder)
        return true;
    if (faults.readableEntries > 0) {
        --faults.readableEntries;
        return true;
    }
    if (faults.insteadOfFailing) {
        std::exchange(faults, {}).insteadOfFailing();
        return true;
    }
    errno = EIO;
    return false;
}

} // namespace
} // namespace Tests

// These replace the system's functions, for the library's calls and for Qt's.
extern "C" {

int inotify_add_watch(int descriptor, const char* path, uint32_t mask) noexcept
{
    static const auto original = Tests::NextFunction<decltype(inotify_add_watch)>("inotify_add_watch");
    Tests::Faults& faults = Tests::TheFaults();
    if (faults.watchesLeft == 0) {
        errno = ENOSPC;
        return -1;
    }
    if (faults.watchesLeft != Tests::unlimited)
        --faults.watchesLeft;
    const int watch = original(descriptor, path, mask);
    if (faults.afterRegistering)
        faults.afterRegistering(path);
    return watch;
}

DIR* opendir(const char* path)
{
    static const auto original = Tests::NextFunction<DIR*(const char*)>("opendir");
    const Tests::Faults& faults = Tests::TheFaults();
    if (!faults.refusedFolder.empty() && path == faults.refusedFolder) {
        errno = faults.refusal;
        return nullptr;
    }
    return original(path);
}

dirent* readdir(DIR* folder)
{
    static const auto original = Tests::NextFunction<dirent*(DIR*)>("readdir");
    return Tests::MayRead(folder) ? original(folder) : nullptr;
}

dirent64* readdir64(DIR* folder)
{
    static const auto original = Tests::NextFunction<dirent64*(DIR*)>("readdir64");
    return Tests::MayRead(folder) ? original(folder) : nullptr;
}

} // extern "C"

namespace Tests {
namespace {

class WatcherFaultsTest : public BothWatchersFixture
{
protected:
    WatcherFaultsTest() { folder.MakeFolder("root"); }
    ~WatcherFaultsTest() override { EndFaults(); }

    static void EndFaults() { TheFaults() = {}; }
    void Refuse(const char* path, int reason) const
    {
        TheFaults().refusedFolder = Path(path).toStdString();
        TheFaults().refusal = reason;
    }
    void BreakAfter(int entries, const char* path) const
    {
        TheFaults().brokenFolder = Path(path).toStdString();
        TheFaults().readableEntries = entries;
    }
};

// The limits of the system's notices

TEST_F(WatcherFaultsTest, FilesBeyondTheLimitOfNoticesAreListedByBothAndReportedByTheChecker)
{
    Write({"root/a", "root/b", "root/c"});
    TheFaults().watchesLeft = 3; // the root, a and b

    StartBoth();
    EndFaults();
    Touch({"root/b", "root/c"});
    Settle();

    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b", "root/c"));
    EXPECT_EQ(Files(), CheckerFiles());
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("root/a", "root/b"));
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/b"));
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileChanged root/b", "FileChanged root/c"));
}

TEST_F(WatcherFaultsTest, ARootBeyondTheLimitOfNoticesIsSilentForTheWatcherUntilARestart)
{
    Write({"root/a"});
    TheFaults().watchesLeft = 0;
    StartBoth();
    EndFaults();

    Write({"root/b"});
    Settle();

    EXPECT_THAT(Files(), ElementsAre("root/a"));
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileAdded root/b"));

    watcher->StopWatching();
    ASSERT_TRUE(watcher->StartWatching(Path("root"), {}, {}, 0));
    ClearLogs();
    Touch("root/a");
    Remove("root/b");
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/a", "FileRemoved root/b"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
}

int QueueLimit()
{
    int limit = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
    return limit > 0 ? limit : 16384;
}

/// Changes two files more often than the system's queue of notices can hold.
void OverflowTheQueue(const QString& file, const QString& otherFile)
{
    const std::array<QByteArray, 2> paths = {QFile::encodeName(file), QFile::encodeName(otherFile)};
    // In turns, since the system merges two equal notices that follow each other.
    for (int i = 0; i <= QueueLimit(); ++i) {
        const timespec time = {1000000000 + i, 0};
        const std::array<timespec, 2> times = {time, time};
        if (::utimensat(AT_FDCWD, paths[static_cast<std::size_t>(i % 2)].constData(), times.data(), 0) != 0)
            throw std::runtime_error("utimensat");
    }
}

TEST_F(WatcherFaultsTest, TheWatcherMissesChangesWhileTheQueueOfNoticesIsFullUntilTheFileChangesAgain)
{
    Write({"root/a", "root/b", "root/changed", "root/removed"});
    StartBoth();

    OverflowTheQueue(Path("root/a"), Path("root/b"));
    Touch("root/changed");
    Remove("root/removed");
    Write({"root/new"});
    Settle();

    // The new file is found all the same, by a scan of the whole folder.
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/new", "FileChanged root/a", "FileChanged root/b"));
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileAdded root/new", "FileChanged root/a", "FileChanged root/b",
                                          "FileChanged root/changed", "FileRemoved root/removed"));

    ClearLogs();
    Touch("root/changed");
    Remove("root/new");
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/changed", "FileRemoved root/new"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b", "root/changed", "root/removed"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/a", "root/b", "root/changed"));
}

// Folders that cannot be listed, with and without name filters, for which the listing differs

class ListingFaultsTest : public WatcherFaultsTest, public testing::WithParamInterface<const char*>
{
protected:
    static NameFilters Filters() { return *GetParam() ? NameFilters{GetParam()} : NameFilters(); }

    void StartBoth(unsigned int depth = 0, const Predicate& filter = {})
    {
        WatcherFaultsTest::StartBoth(depth, Filters(), filter);
    }
};

TEST_P(ListingFaultsTest, AnUnreadableFolderKeepsItsFilesAndReportsItsNewOnesLater)
{
    Write({"root/a", "root/b"});
    StartBoth();

    Refuse("root", EMFILE);
    Touch("root/a");
    Remove("root/b");
    Write({"root/c"});
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/a", "FileRemoved root/b"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_THAT(Files(), ElementsAre("root/a"));

    EndFaults();
    ClearLogs();
    Write({"root/d"});
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/c", "FileAdded root/d"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_EQ(Files(), CheckerFiles());
}

TEST_P(ListingFaultsTest, AnUnreadableSubfolderDoesNotAffectTheOthers)
{
    Write({"root/a", "root/sub/b", "root/tub/c"});
    StartBoth(1);

    Refuse("root/sub", EACCES);
    Write({"root/sub/new", "root/tub/new", "root/new"});
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/new", "FileAdded root/tub/new"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_THAT(Files(), Contains("root/sub/b"));
    EXPECT_THAT(CheckerFiles(), Contains("root/sub/b"));
}

TEST_P(ListingFaultsTest, AFolderThatIsUnreadableAtTheStartIsEmptyForBothAtFirst)
{
    Write({"root/a"});
    Refuse("root", EACCES);

    StartBoth();

    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(CheckerFiles(), IsEmpty());

    EndFaults();
    Write({"root/b"});
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/a", "FileAdded root/b"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
}

TEST_P(ListingFaultsTest, AListingThatFailsHalfwayRemovesNoKnownFile)
{
    Write({"root/a", "root/b", "root/c"});
    StartBoth();

    BreakAfter(0, "root");
    Touch("root/b");
    Write({"root/d"});
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/b"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b", "root/c"));

    EndFaults();
    ClearLogs();
    Write({"root/e"});
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/d", "FileAdded root/e"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_EQ(Files(), CheckerFiles());
}

TEST_P(ListingFaultsTest, AListingThatFailsHalfwayAtTheStartIsCompletedLater)
{
    Write({"root/a", "root/b", "root/c"});

    // The entries include "." and "..", so at least two of the files are read.
    BreakAfter(4, "root");
    ASSERT_TRUE(checker.StartWatching(Path("root"), Filters(), {}, 0));
    const Texts checkerFiles = CheckerFiles();
    BreakAfter(4, "root");
    ASSERT_TRUE(watcher->StartWatching(Path("root"), Filters(), {}, 0));
    const Texts files = Files();
    EndFaults();
    ClearLogs();
    Write({"root/d"});
    Settle();

    EXPECT_EQ(files.size(), 2u);
    EXPECT_EQ(checkerFiles.size(), 2u);
    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b", "root/c", "root/d"));
    EXPECT_EQ(Files(), CheckerFiles());
    EXPECT_THAT(WatcherSaw(), SizeIs(2));
    EXPECT_THAT(WatcherSaw(), Each(StartsWith("FileAdded")));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
}

// Files and folders that are deleted after their listing

TEST_P(ListingFaultsTest, ARootThatIsDeletedWhileTheCheckerReadsItIsEmptyInTheEnd)
{
    Write({"root/a", "root/b", "root/sub/c"});
    StartBoth(1);

    Write({"root/d"});
    BreakAfter(3, "root");
    TheFaults().insteadOfFailing = [&] { folder.RemoveFolder("root"); };
    checker.CheckFolder();
    checker.CheckFolder();

    EXPECT_THAT(CheckerFiles(), IsEmpty());
    for (const char* file : {"root/a", "root/b", "root/sub/c"})
        EXPECT_EQ(checkerLog.Count(std::string("FileRemoved ") + file), 1) << file;
    EXPECT_EQ(checkerLog.Count("FileAdded root/d"), checkerLog.Count("FileRemoved root/d"));
    EXPECT_THAT(checkerLog.EntriesOf("FileChanged"), IsEmpty());
}

TEST_P(ListingFaultsTest, ARootThatIsDeletedWhileTheWatcherReadsItLosesItsRegisteredFiles)
{
    Write({"root/a", "root/b", "root/sub/c"});
    StartBoth(1);

    Write({"root/d"});
    BreakAfter(3, "root");
    TheFaults().insteadOfFailing = [&] { folder.RemoveFolder("root"); };
    Settle();

    for (const char* file : {"root/a", "root/b", "root/sub/c"})
        EXPECT_EQ(signalLog.Count(std::string("FileRemoved ") + file), 1) << file;
    EXPECT_THAT(signalLog.EntriesOf("FileChanged"), IsEmpty());
    EXPECT_FALSE(QFileInfo::exists(Path("root")));
}

TEST_P(ListingFaultsTest, ASubfolderThatIsDeletedWhileItIsReadLosesItsFiles)
{
    Write({"root/a", "root/sub/b", "root/sub/c"});
    StartBoth(1);

    BreakAfter(0, "root/sub");
    TheFaults().insteadOfFailing = [&] { folder.RemoveFolder("root/sub"); };
    checker.CheckFolder();
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileRemoved root/sub/b", "FileRemoved root/sub/c"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_THAT(Files(), ElementsAre("root/a"));
    EXPECT_EQ(Files(), CheckerFiles());
}

TEST_P(ListingFaultsTest, AFileThatIsDeletedBetweenListingAndReadingStaysListedForTheWatcherOnly)
{
    Write({"root/a"});
    StartBoth(0, [this](const QFileInfo& info) {
        if (IsNamed(info, "b"))
            QFile::remove(Path("root/b"));
        return true;
    });

    Write({"root/b"});
    checker.CheckFolder();
    Write({"root/b"});
    HandleAllNotices();

    EXPECT_THAT(CheckerSaw(), ElementsAre("FileAdded root/b"));
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/b"));

    ClearLogs();
    Settle();

    EXPECT_THAT(CheckerSaw(), ElementsAre("FileRemoved root/b"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/a"));
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b"));
}

TEST_P(ListingFaultsTest, AFileThatIsDeletedAfterItsRegistrationIsRemovedByItsNotice)
{
    Write({"root/a"});
    StartBoth();
    const std::string gone = Path("root/b").toStdString();
    TheFaults().afterRegistering = [&](const std::string& path) {
        if (path == gone)
            ::unlink(gone.c_str());
    };

    Write({"root/b"});
    HandleAllNotices();

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded root/b", "FileRemoved root/b"));
    EXPECT_THAT(Files(), ElementsAre("root/a"));
}

TEST_P(ListingFaultsTest, AFileThatIsDeletedDuringTheStartStaysListedForTheWatcherOnly)
{
    Write({"root/a", "root/b"});
    const Predicate filter = [this](const QFileInfo& info) {
        if (IsNamed(info, "b"))
            QFile::remove(Path("root/b"));
        return true;
    };
    ASSERT_TRUE(checker.StartWatching(Path("root"), Filters(), filter, 0));
    Write({"root/b"});
    ASSERT_TRUE(watcher->StartWatching(Path("root"), Filters(), filter, 0));
    ClearLogs();
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/a", "root/b"));

    Settle();

    EXPECT_THAT(CheckerSaw(), ElementsAre("FileRemoved root/b"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/a"));
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b"));
}

// Links and names

TEST_P(ListingFaultsTest, LinksToThemselvesAreNotFilesForEither)
{
    Write({"root/a"});
    folder.Link("self", "root/self");
    folder.Link("there", "root/back");
    folder.Link("back", "root/there");
    StartBoth(3);

    folder.Link("late", "root/late");
    Write({"root/b"});
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/b"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b"));
    EXPECT_EQ(Files(), CheckerFiles());
}

TEST_P(ListingFaultsTest, ALinkToTheFolderAboveEndsAtTheDepthForBoth)
{
    Write({"root/a"});
    folder.Link(".", "root/loop");

    StartBoth(2);

    EXPECT_THAT(Files(), UnorderedElementsAre("root/a", "root/loop/a", "root/loop/loop/a"));
    EXPECT_THAT(CheckerFiles(), UnorderedElementsAreArray(Files()));
    Remove("root/a");
    Settle();
    EXPECT_THAT(CheckerFiles(), IsEmpty());
}

/// A path of this many bytes below a folder, with names that the system accepts.
QString LongPath(const QString& root, int bytes)
{
    QString path = root;
    // The names that are appended are ASCII; the path so far may have more bytes than characters.
    bytes -= static_cast<int>(QFile::encodeName(path).size() - path.size());
    while (bytes - path.size() > 255)
        path += QLatin1Char('/') + QString(200, QLatin1Char('d'));
    return path + QLatin1Char('/') + QString(bytes - path.size() - 1, QLatin1Char('f'));
}

TEST_P(ListingFaultsTest, APathOfTheMaximumLengthIsLikeAnyOtherForBoth)
{
    const QString path = LongPath(Path("root"), PATH_MAX - 1);
    const std::string relativePath = RelativePath(path, folder.Path());
    Write(relativePath);
    StartBoth(100);
    ASSERT_THAT(Files(), ElementsAre(relativePath));

    Touch(relativePath);
    Settle();
    Remove(relativePath);
    Settle();

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileChanged " + relativePath, "FileRemoved " + relativePath));
    EXPECT_EQ(signalLog.Entries(), checkerLog.Entries());
}

TEST_P(ListingFaultsTest, AFileBeyondTheMaximumLengthCanBeListedButNotRead)
{
    const QString subfolder = QFileInfo(LongPath(Path("root"), PATH_MAX - 100)).path();
    ASSERT_TRUE(QDir().mkpath(subfolder));
    const int descriptor =
        ::open(QFile::encodeName(subfolder).constData(), O_DIRECTORY | O_RDONLY | O_CLOEXEC);
    const std::string name(255, 'f');
    ASSERT_GE(::close(::openat(descriptor, name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600)), 0);
    Write({"root/a"});
    StartBoth(100);

    const Texts files = Files();
    checker.CheckFolder();
    const Texts first = checkerLog.Entries();
    checkerLog.Clear();
    checker.CheckFolder();
    const Texts second = checkerLog.Entries();
    Touch("root/a");
    HandleAllNotices();
    ::unlinkat(descriptor, name.c_str(), 0);
    ::close(descriptor);

    EXPECT_EQ(files.size(), 2u);
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged root/a"));
    EXPECT_THAT(first, ElementsAre(StartsWith("FileRemoved")));
    EXPECT_THAT(second, ElementsAre(StartsWith("FileAdded")));
}

TEST_P(ListingFaultsTest, NamesThatAreNotTextAreIgnoredByBoth)
{
    const ByteFolder bytes;
    bytes.Write("\xff.txt");
    bytes.Write("\xfe/a.txt");
    bytes.Write("a.txt");
    const QString root = QFile::decodeName(bytes.Path().c_str());
    ASSERT_TRUE(watcher->StartWatching(root, Filters(), {}, 1));
    ASSERT_TRUE(checker.StartWatching(root, Filters(), {}, 1));
    ClearLogs();

    bytes.Write("\xc3.txt");
    bytes.Write("b.txt");
    Settle();
    ::unlink(bytes.Path("\xff.txt").c_str());
    ::unlink(bytes.Path("a.txt").c_str());
    Settle();

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileAdded " + bytes.Path("b.txt"), "FileRemoved " + bytes.Path("a.txt")));
    EXPECT_EQ(signalLog.Entries(), checkerLog.Entries());
}

INSTANTIATE_TEST_SUITE_P(Listings, ListingFaultsTest, testing::Values("", "*[^?]*"), [](const auto& row) {
    return *row.param ? "WithAnUnusualNameFilter" : "WithoutNameFilters";
});

} // namespace
} // namespace Tests
