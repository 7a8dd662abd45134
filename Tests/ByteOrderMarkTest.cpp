// Names that begin with U+FEFF, a byte order mark, which a decoder of UTF-8 drops at the start of a text.

#include "Tests/Support/BothWatchersFixture.h"
#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/CurrentFolder.h"

#include <gmock/gmock.h>

#include <QDir>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace Tests {
namespace {

#define MARK "\xEF\xBB\xBF"

class ByteOrderMarkTest : public BothWatchersFixture
{
};

TEST_F(ByteOrderMarkTest, IsKeptAtTheStartOfAFileName)
{
    Write({"root/" MARK "a.txt", "root/a.txt", "root/" MARK, "root/" MARK MARK "b"});

    StartBoth();

    const Texts expected = {"root/a.txt", "root/" MARK, "root/" MARK "a.txt", "root/" MARK MARK "b"};
    EXPECT_THAT(Files(), ElementsAreArray(expected));
    EXPECT_THAT(CheckerFiles(), ElementsAreArray(expected));
    EXPECT_THAT(RegisteredFiles(), ElementsAreArray(expected));
}

TEST_F(ByteOrderMarkTest, IsKeptInsideAndAtTheEndOfAFileName)
{
    Write({"root/a" MARK, "root/a" MARK "b"});

    StartBoth();

    EXPECT_THAT(Files(), ElementsAre("root/a" MARK, "root/a" MARK "b"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/a" MARK, "root/a" MARK "b"));
}

TEST_F(ByteOrderMarkTest, IsKeptInTheNameOfASubfolder)
{
    Write({"root/" MARK "sub/" MARK "deep/a.txt", "root/" MARK "sub/" MARK "b.txt"});

    StartBoth(2);

    EXPECT_THAT(Files(),
                ElementsAre("root/" MARK "sub/" MARK "deep/a.txt", "root/" MARK "sub/" MARK "b.txt"));
    EXPECT_THAT(CheckerFiles(),
                ElementsAre("root/" MARK "sub/" MARK "deep/a.txt", "root/" MARK "sub/" MARK "b.txt"));
}

TEST_F(ByteOrderMarkTest, DoesNotHideAFileFromNameFilters)
{
    Write({"root/" MARK "a.txt", "root/" MARK "a.mp4"});

    StartBoth(0, {"*.txt"});

    EXPECT_THAT(Files(), ElementsAre("root/" MARK "a.txt"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/" MARK "a.txt"));
}

TEST_F(ByteOrderMarkTest, IsKeptInTheCurrentFolder)
{
    Write({"root/" MARK "a.txt"});
    const CurrentFolder current(Path("root"));
    const QStringList byQt = QDir(QString()).entryList(QDir::Files);

    ASSERT_TRUE(watcher->StartWatching(QStringLiteral("."), {}, {}, 0));
    ASSERT_TRUE(checker.StartWatching(QString(), {}, {}, 0));

    ASSERT_EQ(byQt.size(), 1);
    ASSERT_EQ(checker.GetFileInfoList().size(), 1);
    ASSERT_EQ(watcher->GetFileInfoList().size(), 1);
    EXPECT_EQ(checker.GetFileInfoList().first().fileName(), byQt.first());
    EXPECT_EQ(watcher->GetFileInfoList().first().fileName(), byQt.first());
}

TEST_F(ByteOrderMarkTest, IsInTheNameThatEverySignalReports)
{
    Write({"root/m"});
    StartBoth();

    Write({"root/" MARK "a.txt"});
    Settle();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/" MARK "a.txt"));
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileAdded root/" MARK "a.txt"));

    ClearLogs();
    Touch("root/" MARK "a.txt");
    Settle();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/" MARK "a.txt"));
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileChanged root/" MARK "a.txt"));

    ClearLogs();
    Remove("root/" MARK "a.txt");
    Settle();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileRemoved root/" MARK "a.txt"));
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileRemoved root/" MARK "a.txt"));

    ClearLogs();
    Settle();
    EXPECT_THAT(CheckerSaw(), IsEmpty());
}

TEST_F(ByteOrderMarkTest, IsListedAsQDirListsItInFrontOfUnusualNames)
{
    const ByteFolder bytes;
    for (const char* name : {MARK " b", MARK "\xC3\xBC", MARK "u\xCC\x88", MARK "\xF0\x9F\x98\x80",
                             MARK "\xFF", "\xFF" MARK, MARK ".h", "." MARK})
        bytes.Write(name);
    const QString path = QString::fromStdString(bytes.Path());

    ASSERT_TRUE(watcher->StartWatching(path, {}, {}, 0));
    ASSERT_TRUE(checker.StartWatching(path, {}, {}, 0));

    QStringList sorted = QDir(path).entryList(QDir::Files, QDir::Unsorted);
    std::sort(sorted.begin(), sorted.end());
    Texts byQt;
    for (const QString& name : sorted)
        byQt.push_back(name.toStdString());
    EXPECT_EQ(NamesOf(checker.GetFileInfoList()), byQt);
    EXPECT_EQ(NamesOf(watcher->GetFileInfoList()), byQt);
}

#undef MARK

} // namespace
} // namespace Tests
