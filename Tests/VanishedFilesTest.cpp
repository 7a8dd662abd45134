// Removed files of one name: none of them has a canonical path any more, and still they are different files.

#include "Tests/Support/BothWatchersFixture.h"
#include "Tests/Support/CurrentFolder.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace Tests {
namespace {

/// Three files of one name; the parameter is the position in the snapshot of the one that is removed.
class VanishedFilesTest : public BothWatchersFixture, public testing::WithParamInterface<int>
{
protected:
    VanishedFilesTest() { Write({"root/1/a", "root/2/a", "root/3/a", "root/z"}); }

    /// The texts without the one at a position.
    static Texts Without(Texts texts, int position)
    {
        texts.erase(texts.begin() + position);
        return texts;
    }

    /// Removes all three files. @return the path of the one at a position of the list
    QString RemoveAllThree(const Texts& listed, int position) const
    {
        for (int i = 0; i < 3; ++i)
            Remove(listed.at(static_cast<std::size_t>(i)));
        return Path(listed.at(static_cast<std::size_t>(position)));
    }
};

TEST_P(VanishedFilesTest, AreRemovedEachByItsOwnNotice)
{
    StartBoth(1);
    const Texts watcherFiles = Files();
    const Texts checkerFiles = CheckerFiles();
    ASSERT_EQ(watcherFiles, checkerFiles);
    const QString path = RemoveAllThree(watcherFiles, GetParam());

    watcher->OnFileChanged(path);
    checker.OnFileChanged(path);

    EXPECT_EQ(Files(), Without(watcherFiles, GetParam()));
    EXPECT_EQ(CheckerFiles(), Without(checkerFiles, GetParam()));
}

TEST_P(VanishedFilesTest, AreRemovedEachByItsOwnNoticeAfterAPassToo)
{
    StartBoth(1);
    Write("root/4/a");
    watcher->OnDirectoryChanged(Path("root"));
    checker.CheckFolder();
    Remove("root/4/a");
    watcher->OnFileChanged(Path("root/4/a"));
    checker.CheckFolder();
    const Texts watcherFiles = Files();
    const Texts checkerFiles = CheckerFiles();
    ASSERT_THAT(watcherFiles, UnorderedElementsAre("root/1/a", "root/2/a", "root/3/a", "root/z"));
    ASSERT_EQ(watcherFiles, checkerFiles);
    const QString path = RemoveAllThree(watcherFiles, GetParam());

    watcher->OnFileChanged(path);
    checker.OnFileChanged(path);

    EXPECT_EQ(Files(), Without(watcherFiles, GetParam()));
    EXPECT_EQ(CheckerFiles(), Without(checkerFiles, GetParam()));
}

TEST_P(VanishedFilesTest, AreRemovedEachByItsOwnNoticeBelowARelativeRoot)
{
    const CurrentFolder current(folder.Path());
    ASSERT_TRUE(watcher->StartWatching(QStringLiteral("root"), {}, {}, 1));
    ASSERT_TRUE(checker.StartWatching(QStringLiteral("./root/"), {}, {}, 1));
    const Texts watcherFiles = Files();
    const QString path = RemoveAllThree(watcherFiles, GetParam());

    watcher->OnFileChanged(path);
    checker.OnFileChanged(path);

    EXPECT_EQ(Files(), Without(watcherFiles, GetParam()));
    EXPECT_EQ(checker.GetFileInfoList().size(), 3);
    for (const QFileInfo& info : checker.GetFileInfoList())
        EXPECT_NE(info.absoluteFilePath(), path);
}

/// The files of the root itself are listed by relative paths and compared by absolute ones.
TEST_P(VanishedFilesTest, AreFoundByTheirAbsolutePathInAListOfRelativeOnes)
{
    const CurrentFolder current(Path("root"));
    Write("root/a");
    ASSERT_TRUE(checker.StartWatching(QStringLiteral("."), {}, {}, 1));
    checker.CheckFolder();
    Remove({"root/a", "root/1/a", "root/2/a", "root/3/a"});
    const QString path = checker.GetFileInfoList().at(GetParam()).absoluteFilePath();

    checker.OnFileChanged(path);

    EXPECT_EQ(checker.GetFileInfoList().size(), 4);
    for (const QFileInfo& info : checker.GetFileInfoList())
        EXPECT_NE(info.absoluteFilePath(), path);
}

INSTANTIATE_TEST_SUITE_P(Place, VanishedFilesTest, testing::Values(0, 1, 2),
                         [](const auto& row) { return std::to_string(row.param); });

using VanishedFilesInAPassTest = VanishedFilesTest;

TEST_F(VanishedFilesInAPassTest, AreNoLongerListedWhenTheyAreReported)
{
    StartBoth(1);
    checker.CheckFolder();
    Texts left = CheckerFiles();
    RemoveAllThree(left, 0);
    std::vector<Texts> expected;
    for (int i = 0; i < 3; ++i) {
        left.erase(left.begin());
        expected.push_back(left);
    }
    std::vector<Texts> seen;
    QObject::connect(&checker, &Zendra::LW::DirectoryChecker::FileRemoved, [&](const QFileInfo& info) {
        seen.push_back(CheckerFiles());
        for (const QFileInfo& known : checker.GetFileInfoList())
            EXPECT_NE(known.filePath(), info.filePath());
    });

    checker.CheckFolder();

    EXPECT_EQ(seen, expected);
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/z"));
}

TEST_F(VanishedFilesInAPassTest, DoNotRemoveAnExistingFileOfTheirName)
{
    StartBoth(1);
    const Texts listed = Files();
    Remove(listed.at(0));
    Remove(listed.at(2));

    watcher->OnFileChanged(Path(listed.at(2)));
    checker.CheckFolder();

    EXPECT_THAT(Files(), ElementsAre(listed.at(0), listed.at(1), "root/z"));
    EXPECT_THAT(CheckerFiles(), ElementsAre(listed.at(1), "root/z"));
}

TEST_F(VanishedFilesInAPassTest, AreReportedByTheSystemsNoticesToo)
{
    StartBoth(1);
    QObject::connect(watcher.get(), &Zendra::LW::DirectoryWatcher::FileRemoved, [&](const QFileInfo& info) {
        for (const QFileInfo& known : watcher->GetFileInfoList())
            EXPECT_NE(known.filePath(), info.filePath());
    });
    RemoveAllThree(Files(), 0);

    HandleAllNotices();

    EXPECT_THAT(WatcherSaw(),
                ElementsAre("FileRemoved root/1/a", "FileRemoved root/2/a", "FileRemoved root/3/a"));
    EXPECT_THAT(Files(), ElementsAre("root/z"));
    EXPECT_THAT(RegisteredFiles(), ElementsAre("root/z"));
}

} // namespace
} // namespace Tests
