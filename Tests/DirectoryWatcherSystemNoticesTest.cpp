// The system's notices, through the event loop.

#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/Surroundings.h"
#include "Tests/Support/WatcherFixture.h"

#include <gmock/gmock.h>

#include <string>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

namespace Tests {
namespace {

class DirectoryWatcherSystemNoticesTest : public WatcherFixture
{
protected:
    void SetUp() override
    {
        if (const std::string why = WhyNoticesAreLate(); !why.empty())
            GTEST_SKIP() << why;
    }
};

TEST_F(DirectoryWatcherSystemNoticesTest, ReportANewFile)
{
    StartWith({"b.txt"});

    Write({"a.txt"});

    ASSERT_TRUE(signalLog.WaitFor("FileAdded a.txt"));
    EXPECT_THAT(signalLog.EntriesOf("FileAdded"), SizeIs(1));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherSystemNoticesTest, ReportAChangeOnce)
{
    StartWith({"a.txt", "b.txt"});

    Touch("a.txt");

    ASSERT_TRUE(signalLog.WaitFor("FileChanged a.txt"));
    Touch("b.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileChanged b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged a.txt", "FileChanged b.txt"));
}

TEST_F(DirectoryWatcherSystemNoticesTest, ReportEveryChange)
{
    StartWith({"a.txt"});

    for (size_t change = 1; change <= 3; ++change) {
        Touch("a.txt");
        ASSERT_TRUE(signalLog.WaitForCount(change));
    }

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileChanged a.txt", "FileChanged a.txt", "FileChanged a.txt"));
}

TEST_F(DirectoryWatcherSystemNoticesTest, ReportARemovalOnce)
{
    StartWith({"a.txt", "b.txt"});

    Remove("a.txt");

    ASSERT_TRUE(signalLog.WaitFor("FileRemoved a.txt"));
    Remove("b.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileRemoved b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved a.txt", "FileRemoved b.txt"));
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(RegisteredFiles(), IsEmpty());
}

TEST_F(DirectoryWatcherSystemNoticesTest, ReportAFileFromCreationToRemoval)
{
    StartWith({"b.txt"});

    Write({"a.txt"});
    ASSERT_TRUE(signalLog.WaitFor("FileAdded a.txt"));
    Touch("a.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileChanged a.txt"));
    Remove("a.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileRemoved a.txt"));
    Write({"a.txt"});
    ASSERT_TRUE(signalLog.WaitForCount(4));

    EXPECT_EQ(signalLog.Entries().back(), "FileAdded a.txt");
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherSystemNoticesTest, ReportARenamedFileAsARemovalAndAnAddition)
{
    StartWith({"a.txt", "c.txt"});

    folder.Rename("a.txt", "b.txt");

    ASSERT_TRUE(signalLog.WaitForCount(2));
    EXPECT_THAT(signalLog.Entries(), UnorderedElementsAre("FileRemoved a.txt", "FileAdded b.txt"));
    EXPECT_THAT(Files(), ElementsAre("b.txt", "c.txt"));
}

TEST_F(DirectoryWatcherSystemNoticesTest, ReportNoChangeOfPermissionsAlone)
{
    StartWith({"a.txt", "b.txt"});

    folder.SetPermissions("a.txt", 0400);
    Touch("b.txt");

    ASSERT_TRUE(signalLog.WaitFor("FileChanged b.txt"));
    Touch("b.txt");
    ASSERT_TRUE(signalLog.WaitForCount(2));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt", "FileChanged b.txt"));
}

TEST_F(DirectoryWatcherSystemNoticesTest, ReportASubfoldersNewFileAtTheNextNoticeOfTheRoot)
{
    StartWith({"b.txt", "sub/c.txt"}, 1);

    Write({"sub/a.txt"});
    Touch("b.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileChanged b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt"));
    Write({"d.txt"});

    ASSERT_TRUE(signalLog.WaitFor("FileAdded d.txt"));
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileChanged b.txt", "FileAdded sub/a.txt", "FileAdded d.txt"));
}

TEST_F(DirectoryWatcherSystemNoticesTest, ReportChangesAndRemovalsInSubfolders)
{
    StartWith({"sub/a.txt", "sub/b.txt"}, 1);

    Touch("sub/a.txt");
    Remove("sub/b.txt");

    ASSERT_TRUE(signalLog.WaitForCount(2));
    EXPECT_THAT(signalLog.Entries(), UnorderedElementsAre("FileChanged sub/a.txt", "FileRemoved sub/b.txt"));
}

TEST_F(DirectoryWatcherSystemNoticesTest, DoNotComeForFilesThatFilledAnEmptyFolder)
{
    StartWith({});

    Write({"a.txt"});
    ASSERT_TRUE(signalLog.WaitFor("FileAdded a.txt"));
    Touch("a.txt");
    Remove("a.txt");
    Write({"b.txt"});
    ASSERT_TRUE(signalLog.WaitFor("FileAdded b.txt"));
    Touch("b.txt");

    ASSERT_TRUE(signalLog.WaitFor("FileChanged b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt", "FileAdded b.txt", "FileChanged b.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherSystemNoticesTest, DoNotComeForFilesThatWereRejected)
{
    StartWith({"a.txt", "b.txt", "c.mp4"}, 0, {"*.txt"},
              [](const QFileInfo& info) { return !IsNamed(info, "a.txt"); });

    Touch({"a.txt", "c.mp4"});
    Remove("c.mp4");
    Touch("b.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileChanged b.txt"));
    Remove("b.txt");

    ASSERT_TRUE(signalLog.WaitFor("FileRemoved b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt", "FileRemoved b.txt"));
}

TEST_F(DirectoryWatcherSystemNoticesTest, ReportEveryFileOfABatch)
{
    StartWith({"0.txt"});
    Texts expected;
    for (int file = 100; file < 200; ++file) {
        expected.push_back("FileAdded " + std::to_string(file) + ".txt");
        folder.Write(std::to_string(file) + ".txt");
    }

    ASSERT_TRUE(signalLog.WaitForCount(100));
    EXPECT_EQ(signalLog.Entries(), expected);
    EXPECT_EQ(watcher->GetFileInfoList().size(), 101);
}

TEST_F(DirectoryWatcherSystemNoticesTest, ComeForUnusualNames)
{
    StartWith({"a"});
    for (const std::string& name : {std::string(" two  words "), std::string("one\ntwo"),
                                    std::string("\u00e4\U0001F600"), std::string(255, 'x')}) {
        Write(name);
        ASSERT_TRUE(signalLog.WaitFor("FileAdded " + name));
        Touch(name);
        ASSERT_TRUE(signalLog.WaitFor("FileChanged " + name));
        Remove(name);
        ASSERT_TRUE(signalLog.WaitFor("FileRemoved " + name));
    }

    EXPECT_EQ(signalLog.Entries().size(), 12U);
}

TEST_F(DirectoryWatcherSystemNoticesTest, NeverEmitPathChanged)
{
    StartWith({"root/a.txt"}, 1);
    watcher->StopWatching();
    watcher->StartWatching(Path("root"), {}, {}, 0);
    Write({"root/b.txt"});
    ASSERT_TRUE(signalLog.WaitFor("FileAdded root/b.txt"));
    folder.Rename("root", "other");
    watcher->StopWatching();

    EXPECT_THAT(signalLog.EntriesOf("PathChanged"), IsEmpty());
}

} // namespace
} // namespace Tests
