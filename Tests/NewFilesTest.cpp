#include "Lib/Util/FS/NewFiles.h"

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/NewFilesFixture.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>

namespace Zendra::LW {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using Tests::AddedFile;
using Tests::CurrentFolder;
using NewFilesTest = Tests::NewFilesFixture;

TEST_F(NewFilesTest, FillsAnEmptySnapshotInOrder)
{
    Write({"b.txt", "a.txt", "c.txt"});

    Pass();

    EXPECT_THAT(added,
                ElementsAre(AddedFile{"a.txt", true}, AddedFile{"b.txt", true}, AddedFile{"c.txt", true}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(NewFilesTest, PutsEachNewFileAtItsIndex)
{
    Have({"b.txt", "d.txt"});
    Write({"a.txt", "c.txt", "e.txt", "f.txt"});

    Pass();

    EXPECT_THAT(added, ElementsAre(AddedFile{"a.txt", false}, AddedFile{"c.txt", false},
                                   AddedFile{"e.txt", false}, AddedFile{"f.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt", "d.txt", "e.txt", "f.txt"));
}

TEST_F(NewFilesTest, ReservesMemoryForAllFilesOfAnEmptySnapshot)
{
    for (int file = 0; file < 100; ++file)
        folder.Write(QString::number(file));
    NewFiles files = NewFiles::ForPass(snapshot, folder.Path(), source.GetToken());
    ASSERT_TRUE(files.MoveNext());
    files.Add();
    const QFileInfo* const before = &snapshot.GetFileInfos().first();

    while (files.MoveNext())
        files.Add();

    EXPECT_EQ(&snapshot.GetFileInfos().first(), before);
}

TEST_F(NewFilesTest, RemembersTheOrderOfTheListing)
{
    WriteInManyFolders();

    Pass();

    ExpectTheOrderOfTheListing();
}

TEST_F(NewFilesTest, PutsLaterFilesBehindTheOrderOfTheListing)
{
    Write({"b.txt", "a.txt"});
    Pass();
    Write({"0.txt"});

    Pass();

    KnownPathFinder finder(*snapshot.GetKnownPaths());
    EXPECT_FALSE(finder.IsNext(Path("0.txt")));
    ASSERT_TRUE(finder.Find(Path(finder.IsNext(Path("a.txt")) ? "b.txt" : "a.txt")));
    EXPECT_TRUE(finder.IsNext(Path("0.txt")));
}

TEST_F(NewFilesTest, AddsNoFileTwice)
{
    Write({"a.txt", "b.txt"});
    Pass();
    added.clear();

    Pass();

    EXPECT_THAT(added, IsEmpty());
}

TEST_F(NewFilesTest, KeepsMissingFiles)
{
    Have({"a.txt", "b.txt"});
    Remove("a.txt");

    Pass();

    EXPECT_THAT(added, IsEmpty());
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt"));
}

TEST_F(NewFilesTest, InsertsAFileOfAKnownNameBeforeTheOthers)
{
    Have({"a.txt", "b.txt", "c.txt"});
    Write("sub/b.txt");

    Pass();

    EXPECT_THAT(added, ElementsAre(AddedFile{"sub/b.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "sub/b.txt", "b.txt", "c.txt"));
}

TEST_F(NewFilesTest, TreatsALinkOfTheSameNameAsTheKnownFile)
{
    Have({"a.txt"});
    folder.MakeFolder("sub");
    folder.Link("../a.txt", "sub/a.txt");

    Pass();

    EXPECT_THAT(added, IsEmpty());
}

TEST_F(NewFilesTest, ContinuesAfterALinkToAKnownFile)
{
    Have({"b.txt"});
    folder.MakeFolder("sub");
    folder.Link("../b.txt", "sub/b.txt");
    Write({"a.txt", "c.txt"});
    SetPredicate([](const std::string&) { return true; });

    Pass();

    EXPECT_THAT(asked, ElementsAre("a.txt", "c.txt"));
    EXPECT_THAT(added, ElementsAre(AddedFile{"a.txt", false}, AddedFile{"c.txt", false}));
}

TEST_F(NewFilesTest, AddsALinkAndItsTargetToAnEmptySnapshot)
{
    Write("a.txt");
    folder.MakeFolder("sub");
    folder.Link("../a.txt", "sub/a.txt");

    Pass();

    EXPECT_THAT(Paths(), UnorderedElementsAre("a.txt", "sub/a.txt"));
    EXPECT_THAT(added, SizeIs(2));
}

TEST_F(NewFilesTest, AddsARemovedFileAgain)
{
    Write({"a.txt", "b.txt"});
    Pass();
    added.clear();
    RemoveAndRestore("a.txt");

    Pass();

    EXPECT_THAT(added, ElementsAre(AddedFile{"a.txt", false}));
}

TEST_F(NewFilesTest, AddsAReplacedFileAgain)
{
    Write({"b.txt", "c.txt"});
    Pass();
    added.clear();
    ReplaceNextBy("a.txt");

    Pass();

    EXPECT_THAT(added, ElementsAre(AddedFile{"b.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(NewFilesTest, AddsAllFilesAgainAfterAClear)
{
    Write({"a.txt", "b.txt"});
    Pass();
    added.clear();
    snapshot.Clear();

    Pass();

    EXPECT_THAT(added, ElementsAre(AddedFile{"a.txt", true}, AddedFile{"b.txt", true}));
}

TEST_F(NewFilesTest, ForgetsKnownFilesInAClear)
{
    Have({"a.txt"});
    Pass();
    snapshot.Clear();
    snapshot.Append({NewFile("b.txt")});

    Pass();

    EXPECT_THAT(added, ElementsAre(AddedFile{"a.txt", false}));
}

TEST_F(NewFilesTest, KnowsAFileWhenOneOfItsTwoEntriesIsRemoved)
{
    Have({"a.txt", "b.txt"});
    snapshot.Insert(0, File("a.txt"));
    Pass();
    RemoveAndRestore("a.txt");

    Pass();

    EXPECT_THAT(added, IsEmpty());
}

TEST_F(NewFilesTest, AddsNoFileTwiceForAnotherSpellingOfTheFolder)
{
    Write({"sub/a.txt", "sub/b.txt"});
    settings.dirPath = Path("sub");
    Pass(settings.dirPath);
    added.clear();
    const CurrentFolder here(settings.dirPath);
    folder.Link("sub", "link");

    for (const QString& spelling : {QString(), Path("sub/../sub"), Path("link")})
        Pass(spelling);

    EXPECT_THAT(added, IsEmpty());
}

// The entry was added while the relative path meant another folder.
TEST_F(NewFilesTest, AddsNoFileTwiceWhenARelativePathMeansAnotherFolder)
{
    Write({"1/2/a.txt", "2/b.txt"});
    folder.Link("../1/2/a.txt", "2/a.txt");
    settings.dirPath = QStringLiteral("2");
    settings.depth = 0;
    {
        const CurrentFolder here(Path("1"));
        snapshot.Append({QFileInfo(Path("1/2/a.txt"))});
    }
    const CurrentFolder here(folder.Path());

    Pass(settings.dirPath);

    EXPECT_THAT(added, SizeIs(1));
    EXPECT_EQ(added.front().path, "2/b.txt");
}

/// Files with relative paths.
class NewRelativeFilesTest : public NewFilesTest
{
protected:
    NewRelativeFilesTest()
    {
        Write({"a.txt", "b.txt"});
        snapshot.Append({QFileInfo(QStringLiteral("./a.txt"))});
        snapshot.Append({QFileInfo(QStringLiteral("./b.txt"))});
    }

    const CurrentFolder here{folder.Path()};
};

TEST_F(NewRelativeFilesTest, AreKnown)
{
    Pass(QString());

    EXPECT_THAT(added, IsEmpty());
}

TEST_F(NewRelativeFilesTest, AreNewAgainAfterRemoval)
{
    RemoveAndRestore("a.txt");

    Pass(QString());

    EXPECT_THAT(added, ElementsAre(AddedFile{"./a.txt", false}));
}

TEST_F(NewRelativeFilesTest, AreNewAgainAfterReplacement)
{
    ReplaceNextBy("0.txt");

    Pass(QString());

    EXPECT_THAT(added, ElementsAre(AddedFile{"./a.txt", false}));
}

/// The files of a start, which are appended to the snapshot.
class InitialFilesTest : public NewFilesTest
{
protected:
    using Times = ListingOptions::Times;

    void Start(Times times = Times::ReadLater)
    {
        NewFiles files = NewFiles::ForStart(snapshot, folder.Path(), times, source.GetToken());
        while (files.MoveNext()) {
            EXPECT_EQ(files.GetScan().at(files.GetPosition()).info, files.Get());
            files.Add();
        }
    }
};

TEST_F(InitialFilesTest, RememberTheOrderOfTheListing)
{
    WriteInManyFolders();

    Start();

    ExpectTheOrderOfTheListing();
}

TEST_F(InitialFilesTest, AreThoseThatThePredicateAccepts)
{
    Write({"c.txt", "a.txt", "b.mov", "sub/b.txt"});
    settings.nameFilters = QStringList{QStringLiteral("*.txt")};
    SetPredicate([](const std::string& name) { return name != "c.txt"; });

    Start();

    EXPECT_THAT(asked, ElementsAre("a.txt", "sub/b.txt", "c.txt"));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "sub/b.txt"));
}

// Intended: the list is not cleared, and nothing is looked up in it.
TEST_F(InitialFilesTest, FollowTheExistingEntries)
{
    Have({"b.txt", "c.txt"});
    Write("a.txt");

    Start();

    EXPECT_THAT(Paths(), ElementsAre("b.txt", "c.txt", "a.txt", "b.txt", "c.txt"));
}

TEST_F(InitialFilesTest, AreNotAddedTwiceWhenThePredicateRunsAPass)
{
    Write({"a.txt", "b.txt", "c.txt"});
    bool inside = false;
    SetPredicate([&](const std::string& name) {
        if (name == "b.txt" && !std::exchange(inside, true))
            Pass();
        return true;
    });

    Start();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(InitialFilesTest, EndWithTheWatch)
{
    Write({"a.txt", "b.txt", "c.txt"});
    SetPredicate([this](const std::string& name) {
        if (name == "b.txt")
            source.Invalidate();
        return true;
    });

    Start();

    EXPECT_THAT(asked, ElementsAre("a.txt", "b.txt"));
    EXPECT_THAT(Paths(), ElementsAre("a.txt"));
}

TEST_F(InitialFilesTest, HaveTheTimesOfTheListingOnlyIfAsked)
{
    const QDateTime earlier = QDateTime::fromMSecsSinceEpoch(1500000000123);
    const QDateTime later = QDateTime::fromMSecsSinceEpoch(1600000000456);
    Write("a.txt");
    for (const Times times : {Times::ReadLater, Times::ReadWhileListing}) {
        snapshot.Clear();
        SetTime("a.txt", earlier);
        NewFiles files = NewFiles::ForStart(snapshot, folder.Path(), times, source.GetToken());
        SetTime("a.txt", later);

        ASSERT_TRUE(files.MoveNext());
        EXPECT_EQ(files.Add().lastModified(), times == Times::ReadLater ? later : earlier);
    }
}

/// How a listed file is compared with the entries of the snapshot: by its path if there are no links.
class FileIdentityTest : public NewFilesTest
{
protected:
    using Identity = DirectorySnapshot::Identity;

    Identity IdentityOf(const QString& path)
    {
        NewFiles::ForPass(snapshot, path, source.GetToken());
        return snapshot.GetIdentity();
    }
};

TEST_F(FileIdentityTest, IsThePathWhereThereIsNoLink)
{
    Write({"a.txt", "sub/a.txt"});

    EXPECT_EQ(IdentityOf(folder.Path()), Identity::Path);
}

TEST_F(FileIdentityTest, IsTheCanonicalPathWhereThereIsALink)
{
    Write("1/2/a.txt");
    folder.Link("a.txt", "1/2/b.txt");

    EXPECT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
}

// Entries may remember the canonical paths that they had.
TEST_F(FileIdentityTest, StaysTheCanonicalPathUntilTheSnapshotIsCleared)
{
    Write("a.txt");
    folder.Link("a.txt", "link");
    ASSERT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
    Remove("link");

    EXPECT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
    snapshot.Clear();
    EXPECT_EQ(IdentityOf(folder.Path()), Identity::Path);
}

TEST_F(FileIdentityTest, IsTheCanonicalPathAfterAStartWithALink)
{
    Write("a.txt");
    folder.Link("a.txt", "link");
    NewFiles::ForStart(snapshot, folder.Path(), ListingOptions::Times::ReadLater, source.GetToken());
    Remove("link");

    EXPECT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
}

TEST_F(FileIdentityTest, IsTheCanonicalPathOnceAnotherFolderIsScanned)
{
    folder.MakeFolder("sub");

    EXPECT_EQ(IdentityOf(Path("sub")), Identity::CanonicalPath);
    EXPECT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
}

TEST_F(FileIdentityTest, IsTheCanonicalPathBelowARelativeOrUncleanPath)
{
    folder.MakeFolder("sub");
    const CurrentFolder here(folder.Path());
    for (const QString& path : {QStringLiteral("sub"), QString(), Path("sub/..")}) {
        snapshot.Clear();
        settings.dirPath = path;
        EXPECT_EQ(IdentityOf(path), Identity::CanonicalPath) << path.toStdString();
    }
}

TEST_F(FileIdentityTest, IsTheCanonicalPathAfterAStartWithAnEmptyPath)
{
    const CurrentFolder here(folder.Path());
    NewFiles::ForStart(snapshot, QString(), ListingOptions::Times::ReadLater, source.GetToken());

    EXPECT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
}

TEST_F(FileIdentityTest, IsTheCanonicalPathAfterAFileFromElsewhereHasReplacedAnother)
{
    Have({"b.txt"});
    ASSERT_EQ(IdentityOf(folder.Path()), Identity::Path);
    ReplaceNextBy("a.txt");

    EXPECT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
}

TEST_F(FileIdentityTest, StaysThePathWhenAFileHasChanged)
{
    Have({"a.txt"});
    SetTime("a.txt", QDateTime::fromMSecsSinceEpoch(1500000000123));
    ASSERT_EQ(snapshot.Update(File("a.txt")), DirectorySnapshot::Difference::Changed);

    EXPECT_EQ(IdentityOf(folder.Path()), Identity::Path);
}

TEST_F(NewFilesTest, AsksThePredicateAboutUnknownFilesOnly)
{
    Have({"a.txt", "c.txt"});
    Write({"b.txt", "d.txt"});
    SetPredicate([](const std::string& name) { return name == "d.txt"; });

    Pass();

    EXPECT_THAT(asked, ElementsAre("b.txt", "d.txt"));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "c.txt", "d.txt"));
}

TEST_F(NewFilesTest, DoesNotAskAboutFilesThatASlotHasAdded)
{
    Have({"a.txt"});
    Write({"b.txt", "c.txt", "d.txt", "e.txt"});
    SetPredicate([](const std::string&) { return true; });
    afterEach = [&](const std::string& name) {
        if (name != "b.txt")
            return;
        for (const char* path : {"c.txt", "d.txt"})
            snapshot.Insert(snapshot.GetInfoIndex(File(path)), File(path));
    };

    Pass();

    EXPECT_THAT(asked, ElementsAre("b.txt", "e.txt"));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt", "d.txt", "e.txt"));
}

TEST_F(NewFilesTest, DoesNotAskAboutFilesThatThePredicateHasAdded)
{
    Have({"a.txt"});
    Write({"b.txt", "c.txt", "d.txt", "e.txt"});
    SetPredicate([&](const std::string& name) {
        if (name == "b.txt") {
            for (const char* path : {"c.txt", "d.txt"})
                snapshot.Insert(snapshot.GetInfoIndex(File(path)), File(path));
        }
        return name != "b.txt";
    });

    Pass();

    EXPECT_THAT(asked, ElementsAre("b.txt", "e.txt"));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "c.txt", "d.txt", "e.txt"));
}

// The nested pass changes nothing in the snapshot, but from then on canonical paths are compared.
TEST_F(NewFilesTest, DoesNotAskAboutAFileThatANestedPassFoundToBeALinkToAKnownOne)
{
    Have({"c.txt"});
    Write({"b.txt", "sub/c.txt"});
    bool isNested = false;
    SetPredicate([&](const std::string&) {
        if (!isNested) {
            isNested = true;
            Remove("sub/c.txt");
            folder.Link("../c.txt", "sub/c.txt");
            Pass();
        }
        return false;
    });

    Pass();

    EXPECT_THAT(asked, ElementsAre("b.txt", "b.txt"));
    EXPECT_THAT(Paths(), ElementsAre("c.txt"));
}

// The file is compared with the entry before the predicate replaces the entry's file by a link.
TEST_F(NewFilesTest, AddsARejectedFileLaterThoughAnEntryOfItsNameHasBecomeALinkToIt)
{
    Have({"a.txt", "sub/c.txt"});
    Write({"b.txt", "c.txt"});
    folder.MakeFolder("empty");
    bool accepts = false;
    SetPredicate([&](const std::string& name) {
        if (accepts)
            return true;
        if (name == "b.txt") {
            Pass(Path("./empty"));
        } else {
            Remove("sub/c.txt");
            folder.Link("../c.txt", "sub/c.txt");
        }
        return false;
    });
    Pass();
    accepts = true;

    Pass();

    EXPECT_THAT(Paths(), testing::UnorderedElementsAre("a.txt", "b.txt", "c.txt", "sub/c.txt"));
}

// Then the scan cannot skip the known files.
TEST_F(NewFilesTest, DoesNotAskAboutKnownFilesWhenTwoEntriesShareAPath)
{
    Have({"a.txt", "a.txt", "b.txt"});
    Write("c.txt");
    SetPredicate([](const std::string&) { return true; });

    Pass();

    EXPECT_THAT(asked, ElementsAre("c.txt"));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "a.txt", "b.txt", "c.txt"));
}

TEST_F(NewFilesTest, AsksThePredicateAboutEveryFileForAnEmptySnapshot)
{
    Write({"a.txt", "b.txt", "c.txt"});
    SetPredicate([](const std::string& name) { return name != "b.txt"; });

    Pass();

    EXPECT_THAT(asked, ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(added, ElementsAre(AddedFile{"a.txt", true}, AddedFile{"c.txt", true}));
}

TEST_F(NewFilesTest, AsksAgainAboutARejectedFile)
{
    Have({"a.txt"});
    Write("b.txt");
    bool answer = false;
    SetPredicate([&](const std::string&) { return answer; });
    Pass();
    ASSERT_THAT(added, IsEmpty());

    answer = true;
    Pass();

    EXPECT_THAT(added, ElementsAre(AddedFile{"b.txt", false}));
}

} // namespace
} // namespace Zendra::LW
