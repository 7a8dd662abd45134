#include "Lib/Util/FS/DirectorySnapshot.h"

#include "Lib/Util/FS/FolderScan.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/FileTexts.h"
#include "Tests/Support/SnapshotFixture.h"

#include <QDateTime>

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace Zendra::LW {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using Tests::CurrentFolder;
using Tests::RelativePath;
using Tests::Texts;
using Difference = DirectorySnapshot::Difference;

class DirectorySnapshotTest : public Tests::SnapshotFixture
{
protected:
    /// The known paths, all of which have to be in the list.
    Texts KnownPaths() const
    {
        const Zendra::LW::KnownPaths& known = *snapshot.GetKnownPaths();
        Texts paths;
        for (const QFileInfo& info : snapshot.GetFileInfos()) {
            if (known.Contains(info.filePath()))
                paths.push_back(RelativePath(info.filePath(), folder.Path()));
        }
        EXPECT_EQ(known.size(), static_cast<int>(paths.size()));
        return paths;
    }

    const QDateTime earlier = QDateTime::fromMSecsSinceEpoch(1500000000123);
    const QDateTime later = QDateTime::fromMSecsSinceEpoch(1600000000456);
};

TEST_F(DirectorySnapshotTest, IsEmptyAtFirst)
{
    EXPECT_THAT(snapshot.GetFileInfos(), IsEmpty());
    EXPECT_THAT(snapshot.GetKnownFiles().infos, IsEmpty());
    EXPECT_EQ(snapshot.GetKnownFiles().files.size(), 0);
}

TEST_F(DirectorySnapshotTest, HasNoIndexForAFileWhileItIsEmpty)
{
    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("a.txt")), -1);
}

TEST_F(DirectorySnapshotTest, HasNoIndexForANameAfterAllOthers)
{
    Have({"a.txt", "b.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("c.txt")), -1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("missing.txt")), -1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("b.txt2")), -1);
}

TEST_F(DirectorySnapshotTest, GivesANewNameTheIndexOfTheNextOne)
{
    Have({"B.txt", "b.txt", "d.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("A.txt")), 0);
    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("a.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("c.txt")), 2);
    EXPECT_EQ(snapshot.GetInfoIndex(File("missing/c.txt")), 2);
}

TEST_F(DirectorySnapshotTest, FindsEachFile)
{
    Have({"a.txt", "b.txt", "c.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(File("a.txt")), 0);
    EXPECT_EQ(snapshot.GetInfoIndex(File("b.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("c.txt")), 2);
}

TEST_F(DirectorySnapshotTest, FindsEachOfSeveralFilesOfOneName)
{
    Have({"0.txt", "a.txt", "sub/a.txt", "sub/2/a.txt", "b.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(File("a.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("sub/a.txt")), 2);
    EXPECT_EQ(snapshot.GetInfoIndex(File("sub/2/a.txt")), 3);
}

TEST_F(DirectorySnapshotTest, FindsTheLastOfSeveralFilesOfOneName)
{
    Have({"a.txt", "sub/a.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(File("sub/a.txt")), 1);
}

TEST_F(DirectorySnapshotTest, GivesAnUnknownFileOfAKnownNameTheFirstOfThatName)
{
    Have({"0.txt", "a.txt", "sub/a.txt", "b.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("other/a.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("missing/a.txt")), 1);
}

TEST_F(DirectorySnapshotTest, GivesAnUnknownFileOfTheLastNameTheFirstOfThatName)
{
    Have({"a.txt", "b.txt", "sub/b.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("other/b.txt")), 1);
}

TEST_F(DirectorySnapshotTest, DistinguishesNamesByCase)
{
    Have({"A.txt", "a.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(File("A.txt")), 0);
    EXPECT_EQ(snapshot.GetInfoIndex(File("a.txt")), 1);
}

TEST_F(DirectorySnapshotTest, TreatsALinkOfTheSameNameAsTheFileItself)
{
    Have({"a.txt", "z.txt"});
    folder.MakeFolder("sub");
    folder.Link("../a.txt", "sub/a.txt");
    folder.Link("a.txt", "b.txt");
    snapshot.Insert(1, File("sub/a.txt"));

    EXPECT_EQ(snapshot.GetInfoIndex(File("sub/a.txt")), 0);
    EXPECT_EQ(snapshot.GetInfoIndex(File("b.txt")), 2);
}

TEST_F(DirectorySnapshotTest, FindsAMissingFileAmongOthersOfItsName)
{
    Have({"1/a.txt", "2/a.txt", "3/a.txt"});
    ASSERT_EQ(snapshot.GetInfoIndex(NewFile("4/a.txt")), 0);
    Remove("2/a.txt");

    EXPECT_EQ(snapshot.GetInfoIndex(File("2/a.txt")), 1);
}

TEST_F(DirectorySnapshotTest, FindsEachOfSeveralMissingFilesOfOneName)
{
    Have({"1/a.txt", "2/a.txt", "3/a.txt"});
    Remove({"1/a.txt", "2/a.txt", "3/a.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(File("1/a.txt")), 0);
    EXPECT_EQ(snapshot.GetInfoIndex(File("2/a.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("3/a.txt")), 2);
    EXPECT_EQ(snapshot.GetInfoIndex(File("4/a.txt")), 0);
    EXPECT_FALSE(snapshot.IsFileAt(0, File("4/a.txt")));
}

TEST_F(DirectorySnapshotTest, FindsAMissingFileByAnotherSpellingOfItsPath)
{
    Have({"1/a.txt", "2/a.txt"});
    Remove("2/a.txt");
    const CurrentFolder here(folder.Path());

    EXPECT_EQ(snapshot.GetInfoIndex(QFileInfo(QStringLiteral("2/a.txt"))), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("1/../2/a.txt")), 1);
}

TEST_F(DirectorySnapshotTest, ComparesOnlyPathsIfAsked)
{
    Have({"1/a.txt", "2/a.txt"});
    folder.Link("1", "link");
    const QFileInfo linked = File("link/a.txt");

    EXPECT_TRUE(snapshot.IsFileAt(0, linked));
    EXPECT_FALSE(snapshot.IsFileAt(0, linked, DirectorySnapshot::Identity::Path));
    EXPECT_TRUE(snapshot.IsFileAt(1, File("2/a.txt"), DirectorySnapshot::Identity::Path));
    EXPECT_EQ(snapshot.GetInfoIndex(File("2/a.txt"), DirectorySnapshot::Identity::Path), 1);
}

TEST_F(DirectorySnapshotTest, UpdatesOnlyTheEntryOfThePathIfAsked)
{
    Have({"1/a.txt"});
    folder.Link("1", "2");
    snapshot.Append({File("2/a.txt")});
    SetTime("1/a.txt", later);

    EXPECT_EQ(snapshot.Update(File("2/a.txt"), DirectorySnapshot::Identity::Path), Difference::Changed);
    EXPECT_THAT(Paths(), ElementsAre("1/a.txt", "2/a.txt"));
    EXPECT_EQ(snapshot.Update(File("2/a.txt"), DirectorySnapshot::Identity::CanonicalPath),
              Difference::Changed);
    EXPECT_THAT(Paths(), ElementsAre("2/a.txt", "2/a.txt"));
}

TEST_F(DirectorySnapshotTest, HasNoFileAtIndexMinusOne)
{
    Have({"a.txt"});

    EXPECT_TRUE(snapshot.IsFileAt(0, File("a.txt")));
    EXPECT_FALSE(snapshot.IsFileAt(-1, File("a.txt")));
}

TEST_F(DirectorySnapshotTest, FindsTheSameAsALinearSearch)
{
    std::mt19937 random(7);
    QStringList paths;
    for (int file = 0; file < 300; ++file)
        paths.append(folder.Write(QStringLiteral("%1/%2").arg(random() % 5).arg(random() % 90)));
    const SortedFiles files = GetSortedFilesInDirRecursively(folder.Path(), 1, {});
    for (int i = 0; i < files.size(); ++i) {
        if (random() % 3 != 0)
            snapshot.Append(files.at(i));
    }
    const QList<QFileInfo>& known = snapshot.GetFileInfos();

    for (const QString& path : qAsConst(paths)) {
        const QFileInfo info(path);
        const auto isEqual = [&](const QFileInfo& entry) { return entry.filePath() == path; };
        const auto isNotLess = [&](const QFileInfo& entry) { return !(entry.fileName() < info.fileName()); };
        auto expected = std::find_if(known.begin(), known.end(), isEqual);
        if (expected == known.end())
            expected = std::find_if(known.begin(), known.end(), isNotLess);

        EXPECT_EQ(snapshot.GetInfoIndex(info),
                  expected == known.end() ? -1 : static_cast<int>(expected - known.begin()))
            << path.toStdString();
    }
}

TEST_F(DirectorySnapshotTest, InsertsFilesAtTheGivenIndex)
{
    Have({"c.txt"});

    snapshot.Insert(0, NewFile("a.txt"));
    snapshot.Insert(1, NewFile("b.txt"));
    snapshot.Insert(-1, NewFile("d.txt"));
    snapshot.Append({NewFile("e.txt")});

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt", "d.txt", "e.txt"));
    EXPECT_EQ(snapshot.GetInfoIndex(File("b.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("e.txt")), 4);
}

TEST_F(DirectorySnapshotTest, ReservesMemory)
{
    Have({"a.txt"});

    snapshot.Reserve(5);
    const QFileInfo* const before = &snapshot.GetFileInfos().first();
    Have({"b.txt", "c.txt", "d.txt", "e.txt", "f.txt"});

    EXPECT_EQ(&snapshot.GetFileInfos().first(), before);
    EXPECT_THAT(Paths(), SizeIs(6));
}

TEST_F(DirectorySnapshotTest, ReturnsTheNewEntry)
{
    Have({"b.txt"});
    const QFileInfo info = NewFile("a.txt");
    SetTime("a.txt", earlier);
    ASSERT_EQ(info.lastModified(), earlier);
    SetTime("a.txt", later);

    const QFileInfo entry = snapshot.Insert(0, info);

    EXPECT_EQ(entry.lastModified(), later);
    EXPECT_EQ(snapshot.GetFileInfos().first().lastModified(), later);
}

/// A check of one file.
class UpdateTest : public DirectorySnapshotTest
{
protected:
    UpdateTest() { Have({"a.txt", "b.txt", "c.txt"}); }
};

TEST_F(UpdateTest, FindsNoDifferenceInAnUnchangedFile)
{
    const unsigned int revision = snapshot.GetRevision();
    folder.Write("b.txt", "other content");
    SetTime("b.txt", snapshot.GetFileInfos().at(1).lastModified());

    EXPECT_EQ(snapshot.Update(File("b.txt")), Difference::None);
    EXPECT_EQ(snapshot.GetRevision(), revision);
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(UpdateTest, ReplacesAFileWhoseTimeDiffers)
{
    for (const QDateTime& time : {earlier, later}) {
        SetTime("b.txt", time);

        EXPECT_EQ(snapshot.Update(File("b.txt")), Difference::Changed);
        EXPECT_EQ(snapshot.GetFileInfos().at(1).lastModified(), time);
        EXPECT_EQ(snapshot.Update(File("b.txt")), Difference::None);
    }
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(UpdateTest, RemovesAMissingFile)
{
    Remove("b.txt");

    EXPECT_EQ(snapshot.Update(File("b.txt")), Difference::Removed);
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "c.txt"));
    EXPECT_EQ(snapshot.GetInfoIndex(File("c.txt")), 1);
}

// Intended: a file that is not in the list is treated as the entry at its index.
TEST_F(UpdateTest, TreatsAnUnknownFileAsTheOneAtItsIndex)
{
    EXPECT_EQ(snapshot.Update(File("aa.txt")), Difference::Removed);
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "c.txt"));

    const QFileInfo unknown = NewFile("sub/bb.txt");
    SetTime("sub/bb.txt", later);
    EXPECT_EQ(snapshot.Update(unknown), Difference::Changed);
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "sub/bb.txt"));
}

TEST_F(UpdateTest, ChangesNothingForANameAfterAllOthers)
{
    EXPECT_EQ(snapshot.Update(NewFile("z.txt")), Difference::None);
    EXPECT_EQ(snapshot.Update(File("zz.txt")), Difference::Removed);
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(DirectorySnapshotTest, IsEmptyAfterAClear)
{
    Have({"b.txt", "a.txt"});
    ASSERT_EQ(snapshot.GetKnownPaths(), nullptr);

    snapshot.Clear();

    EXPECT_THAT(snapshot.GetFileInfos(), IsEmpty());
    EXPECT_EQ(snapshot.GetInfoIndex(File("a.txt")), -1);
    EXPECT_EQ(snapshot.GetKnownFiles().files.size(), 0);
    Have({"a.txt"});
    EXPECT_THAT(KnownPaths(), ElementsAre("a.txt"));
}

TEST_F(DirectorySnapshotTest, HasAnotherRevisionAfterEveryChange)
{
    std::set<unsigned int> revisions{snapshot.GetRevision()};

    Have({"a.txt"});
    revisions.insert(snapshot.GetRevision());
    snapshot.Insert(0, NewFile("0.txt"));
    revisions.insert(snapshot.GetRevision());
    SetTime("a.txt", later);
    snapshot.Update(File("a.txt"));
    revisions.insert(snapshot.GetRevision());
    Remove("a.txt");
    snapshot.Update(File("a.txt"));
    revisions.insert(snapshot.GetRevision());
    snapshot.Clear();
    revisions.insert(snapshot.GetRevision());

    EXPECT_THAT(revisions, SizeIs(6));
}

/// The paths that a scan may leave out.
class KnownPathsTest : public DirectorySnapshotTest
{
};

TEST_F(KnownPathsTest, AreThoseOfTheList)
{
    Have({"a.txt", "c.txt"});
    snapshot.Insert(1, NewFile("b.txt"));
    Remove("a.txt");
    snapshot.Update(File("a.txt"));

    EXPECT_THAT(KnownPaths(), UnorderedElementsAre("b.txt", "c.txt"));
}

TEST_F(KnownPathsTest, FollowAReplacedEntry)
{
    Have({"b.txt"});
    const QFileInfo other = NewFile("a.txt");
    SetTime("a.txt", later);

    ASSERT_EQ(snapshot.Update(other), Difference::Changed);

    EXPECT_THAT(KnownPaths(), ElementsAre("a.txt"));
}

TEST_F(KnownPathsTest, AreNoneInAnUnsortedList)
{
    Have({"b.txt", "c.txt"});
    ASSERT_NE(snapshot.GetKnownPaths(), nullptr);

    Have({"a.txt"});

    EXPECT_EQ(snapshot.GetKnownPaths(), nullptr);
}

TEST_F(KnownPathsTest, IncludeFilesOfOneName)
{
    Have({"1/a.txt", "2/a.txt"});

    EXPECT_THAT(KnownPaths(), UnorderedElementsAre("1/a.txt", "2/a.txt"));
}

TEST_F(KnownPathsTest, AreNoneWhileTwoEntriesHaveOnePath)
{
    Have({"a.txt"});
    snapshot.Append({File("a.txt")});
    EXPECT_EQ(snapshot.GetKnownPaths(), nullptr);

    Remove("a.txt");
    snapshot.Update(File("a.txt"));

    EXPECT_EQ(snapshot.GetKnownPaths(), nullptr);
    EXPECT_THAT(Paths(), ElementsAre("a.txt"));
}

/// The times by which a pass recognizes unchanged files.
class KnownTimesTest : public DirectorySnapshotTest
{
protected:
    std::vector<qint64> Times() const
    {
        const DirectorySnapshot::KnownFiles known = snapshot.GetKnownFiles();
        EXPECT_EQ(known.infos, snapshot.GetFileInfos());
        std::vector<qint64> times;
        QStringList paths;
        for (const auto& chunk : known.files.GetChunks()) {
            for (const DirectorySnapshot::KnownFile& file : chunk) {
                times.push_back(known.canCompareTimes ? file.modificationTime : unreadableTime);
                paths.append(file.path);
            }
        }
        EXPECT_EQ(Tests::ToTexts(paths), Tests::PathsOf(known.infos));
        return times;
    }

    QFileInfo FileOfTime(const char* path, const QDateTime& time) const
    {
        const QFileInfo info = NewFile(path);
        SetTime(path, time);
        return info;
    }

    const qint64 earlierTime = earlier.toMSecsSinceEpoch();
    const qint64 laterTime = later.toMSecsSinceEpoch();
};

TEST_F(KnownTimesTest, AreReadWhenFilesAreAdded)
{
    snapshot.Append({FileOfTime("b.txt", earlier)});
    snapshot.Insert(0, FileOfTime("a.txt", later));
    snapshot.Insert(-1, FileOfTime("c.txt", later));
    SetTime("b.txt", later);

    EXPECT_THAT(Times(), ElementsAre(laterTime, earlierTime, laterTime));
}

TEST_F(KnownTimesTest, AreThoseOfTheListingIfItHasReadThem)
{
    snapshot.Append({FileOfTime("a.txt", earlier), laterTime});

    EXPECT_THAT(Times(), ElementsAre(laterTime));
}

TEST_F(KnownTimesTest, AreThoseOfTheFileThatReplacesAnEntry)
{
    snapshot.Append({FileOfTime("b.txt", earlier)});

    ASSERT_EQ(snapshot.Update(FileOfTime("a.txt", later)), Difference::Changed);

    EXPECT_THAT(Times(), ElementsAre(laterTime));
}

TEST_F(KnownTimesTest, AreNotReadForNotices)
{
    snapshot = DirectorySnapshot(DirectorySnapshot::Use::Notices);
    snapshot.Append({FileOfTime("b.txt", earlier)});
    snapshot.Insert(0, FileOfTime("a.txt", earlier));
    SetTime("b.txt", later);
    ASSERT_EQ(snapshot.Update(File("b.txt")), Difference::Changed);

    EXPECT_THAT(Times(), ElementsAre(unreadableTime, unreadableTime));
    EXPECT_EQ(snapshot.GetFileInfos().at(1).lastModified(), later);
}

TEST_F(KnownTimesTest, FollowTheEntries)
{
    for (const char* path : {"a.txt", "b.txt", "c.txt"})
        snapshot.Append({FileOfTime(path, earlier)});
    SetTime("b.txt", later);
    snapshot.Update(File("b.txt"));
    Remove("a.txt");
    snapshot.Update(File("a.txt"));

    EXPECT_THAT(Times(), ElementsAre(laterTime, earlierTime));
}

TEST_F(KnownTimesTest, AreUnreadableForAMissingFile)
{
    snapshot.Append({File("missing.txt")});

    EXPECT_THAT(Times(), ElementsAre(unreadableTime));
}

// Such a path may lead to another file than the absolute path.
TEST_F(KnownTimesTest, AreUnreadableForAPathThatIsRelativeOrUnclean)
{
    const CurrentFolder here(folder.Path());
    NewFile("a.txt");
    Write("sub/b.txt");
    snapshot.Append({QFileInfo(QStringLiteral("a.txt"))});
    snapshot.Append({File("sub/../sub/b.txt")});

    EXPECT_THAT(Times(), ElementsAre(unreadableTime, unreadableTime));
}

TEST_F(KnownTimesTest, AreUnreadableInAnUnsortedList)
{
    snapshot.Append({FileOfTime("b.txt", earlier)});
    snapshot.Append({FileOfTime("a.txt", earlier)});

    EXPECT_THAT(Times(), ElementsAre(unreadableTime, unreadableTime));
}

/// The size and the time of an entry, which are those at the time when it was added.
class SnapshotMetadataTest : public DirectorySnapshotTest
{
protected:
    void Change(const char* path) const
    {
        folder.Write(path, "much longer than before");
        SetTime(path, later);
    }

    QFileInfo ListedEarlier() const
    {
        folder.Write("a.txt", "short");
        SetTime("a.txt", earlier);
        return GetSortedFilesInDirRecursively(folder.Path(), 0, {}).at(0).info;
    }

    void ExpectEarlierMetadata(const QFileInfo& entry) const
    {
        EXPECT_EQ(entry.lastModified(), earlier);
        EXPECT_EQ(entry.size(), 5);
    }
};

TEST_F(SnapshotMetadataTest, IsReadWhenAFileIsAppended)
{
    snapshot.Append({ListedEarlier()});
    Change("a.txt");

    ExpectEarlierMetadata(snapshot.GetFileInfos().at(0));
}

TEST_F(SnapshotMetadataTest, IsReadWhenAFileIsInserted)
{
    Have({"b.txt"});
    snapshot.Insert(0, ListedEarlier());
    Change("a.txt");

    ExpectEarlierMetadata(snapshot.GetFileInfos().at(0));
}

TEST_F(SnapshotMetadataTest, IsReadWhenAFileIsReplaced)
{
    Have({"a.txt"});
    const QFileInfo listed = ListedEarlier();
    ASSERT_EQ(snapshot.Update(listed), Difference::Changed);
    Change("a.txt");

    ExpectEarlierMetadata(snapshot.GetFileInfos().at(0));
}

TEST_F(SnapshotMetadataTest, IsReadWhenAFileIsAddedNotWhenAPredicateReadsIt)
{
    const QFileInfo listed = ListedEarlier();
    ExpectEarlierMetadata(listed);
    Change("a.txt");
    snapshot.Append({listed});

    EXPECT_EQ(snapshot.GetFileInfos().at(0).lastModified(), later);
    EXPECT_EQ(snapshot.GetKnownFiles().files.at(0).modificationTime, later.toMSecsSinceEpoch());
}

TEST_F(SnapshotMetadataTest, IsReadWhenAFileIsAddedNotWhenItIsListed)
{
    const QFileInfo listed = ListedEarlier();
    Change("a.txt");
    snapshot.Append({listed});

    EXPECT_EQ(snapshot.GetFileInfos().at(0).lastModified(), later);
}

TEST_F(SnapshotMetadataTest, StaysWhenTheFileIsDeleted)
{
    snapshot.Append({ListedEarlier()});
    Remove("a.txt");

    ExpectEarlierMetadata(snapshot.GetFileInfos().at(0));
}

TEST_F(SnapshotMetadataTest, IsEmptyForAFileDeletedAfterItsListing)
{
    const QFileInfo listed = ListedEarlier();
    Remove("a.txt");
    snapshot.Append({listed});

    EXPECT_FALSE(snapshot.GetFileInfos().at(0).lastModified().isValid());
    EXPECT_EQ(snapshot.GetFileInfos().at(0).size(), 0);
}

} // namespace
} // namespace Zendra::LW
