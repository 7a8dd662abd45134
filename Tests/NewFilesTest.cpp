#include "Lib/Util/FS/NewFiles.h"

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/FileTexts.h"
#include "Tests/Support/TempFolder.h"

#include <QDateTime>

#include <gmock/gmock.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace Zendra::LW {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using Tests::CurrentFolder;
using Tests::NamesOf;
using Tests::PathsOf;
using Tests::TempFolder;
using Tests::Texts;

/// A walk over the new files of a folder, each of which enters the snapshot.
class NewFilesTest : public testing::Test
{
protected:
    NewFilesTest()
    {
        settings.dirPath = folder.Path();
        settings.depth = 2;
    }

    struct Taken
    {
        std::string path;
        bool fillsEmptySnapshot;
    };
    friend bool operator==(const Taken& a, const Taken& b)
    {
        return a.path == b.path && a.fillsEmptySnapshot == b.fillsEmptySnapshot;
    }
    friend std::ostream& operator<<(std::ostream& stream, const Taken& file)
    {
        return stream << file.path << (file.fillsEmptySnapshot ? ", fills an empty snapshot" : "");
    }

    QFileInfo File(const char* path) const { return QFileInfo(folder.Path(QString::fromUtf8(path))); }
    QFileInfo NewFile(const char* path) const { return QFileInfo(folder.Write(QString::fromUtf8(path))); }

    void Write(std::initializer_list<const char*> paths) const
    {
        for (const char* path : paths)
            folder.Write(QString::fromUtf8(path));
    }
    void Have(std::initializer_list<const char*> paths)
    {
        for (const char* path : paths)
            snapshot.Append({NewFile(path)});
    }

    void Remove(const char* path)
    {
        folder.Remove(QString::fromUtf8(path));
        snapshot.Update(File(path));
    }
    void RemoveForAMoment(const char* path)
    {
        Remove(path);
        Write({path});
    }
    /// An update for a file that is not in the snapshot replaces the next one.
    void ReplaceNextBy(const char* path)
    {
        const QFileInfo info = NewFile(path);
        folder.SetModificationTime(QString::fromUtf8(path), QDateTime::fromMSecsSinceEpoch(1500000000123));
        ASSERT_EQ(snapshot.Update(info), DirectorySnapshot::Difference::Changed);
    }

    Texts Paths() const { return PathsOf(snapshot.GetFileInfos(), folder.Path()); }

    void Pass() { Pass(folder.Path()); }
    void Pass(const QString& path)
    {
        NewFiles files = NewFiles::OfPass(snapshot, path, source.GetToken());
        while (files.MoveNext()) {
            const QFileInfo info = files.Get();
            taken.push_back({PathsOf({info}, folder.Path()).front(), files.SnapshotWasEmpty()});
            EXPECT_EQ(files.TakeIn().filePath(), info.filePath());
            if (afterEach)
                afterEach(info.fileName());
        }
    }

    void SetPredicate(std::function<bool(const QString&)> predicate)
    {
        settings.filter = [this, predicate = std::move(predicate)](const QFileInfo& info) {
            asked.push_back(PathsOf({info}, folder.Path()).front());
            return predicate(info.fileName());
        };
    }

    TempFolder folder;
    DirectorySnapshot snapshot;
    WatchSettings& settings = snapshot.settings;
    WatchTokenSource source;
    std::vector<Taken> taken;
    Texts asked;
    std::function<void(const QString&)> afterEach;
};

TEST_F(NewFilesTest, FillsAnEmptySnapshotInOrder)
{
    Write({"b.txt", "a.txt", "c.txt"});

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{"a.txt", true}, Taken{"b.txt", true}, Taken{"c.txt", true}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(NewFilesTest, PutsEachNewFileAtItsIndex)
{
    Have({"b.txt", "d.txt"});
    Write({"a.txt", "c.txt", "e.txt", "f.txt"});

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{"a.txt", false}, Taken{"c.txt", false}, Taken{"e.txt", false},
                                   Taken{"f.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt", "d.txt", "e.txt", "f.txt"));
}

TEST_F(NewFilesTest, ReservesMemoryForAllFilesOfAnEmptySnapshot)
{
    for (int file = 0; file < 100; ++file)
        folder.Write(QString::number(file));
    NewFiles files = NewFiles::OfPass(snapshot, folder.Path(), source.GetToken());
    ASSERT_TRUE(files.MoveNext());
    files.TakeIn();
    const QFileInfo* const before = &snapshot.GetFileInfos().first();

    while (files.MoveNext())
        files.TakeIn();

    EXPECT_EQ(&snapshot.GetFileInfos().first(), before);
}

TEST_F(NewFilesTest, AddsNoFileTwice)
{
    Write({"a.txt", "b.txt"});
    Pass();
    taken.clear();

    Pass();

    EXPECT_THAT(taken, IsEmpty());
}

TEST_F(NewFilesTest, KeepsMissingFiles)
{
    Have({"a.txt", "b.txt"});
    folder.Remove(QStringLiteral("a.txt"));

    Pass();

    EXPECT_THAT(taken, IsEmpty());
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt"));
}

TEST_F(NewFilesTest, InsertsAFileOfAKnownNameBeforeTheOthers)
{
    Have({"a.txt", "b.txt", "c.txt"});
    Write({"sub/b.txt"});

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{"sub/b.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "sub/b.txt", "b.txt", "c.txt"));
}

TEST_F(NewFilesTest, TreatsALinkOfTheSameNameAsTheKnownFile)
{
    Have({"a.txt"});
    folder.MakeFolder(QStringLiteral("sub"));
    folder.Link(QStringLiteral("../a.txt"), QStringLiteral("sub/a.txt"));

    Pass();

    EXPECT_THAT(taken, IsEmpty());
}

TEST_F(NewFilesTest, ContinuesAfterALinkToAKnownFile)
{
    Have({"b.txt"});
    folder.MakeFolder(QStringLiteral("sub"));
    folder.Link(QStringLiteral("../b.txt"), QStringLiteral("sub/b.txt"));
    Write({"a.txt", "c.txt"});
    SetPredicate([](const QString&) { return true; });

    Pass();

    EXPECT_THAT(asked, ElementsAre("a.txt", "c.txt"));
    EXPECT_THAT(taken, ElementsAre(Taken{"a.txt", false}, Taken{"c.txt", false}));
}

TEST_F(NewFilesTest, AddsALinkAndItsTargetToAnEmptySnapshot)
{
    Write({"a.txt"});
    folder.MakeFolder(QStringLiteral("sub"));
    folder.Link(QStringLiteral("../a.txt"), QStringLiteral("sub/a.txt"));

    Pass();

    EXPECT_THAT(Paths(), UnorderedElementsAre("a.txt", "sub/a.txt"));
    EXPECT_THAT(taken, SizeIs(2));
}

TEST_F(NewFilesTest, AddsARemovedFileAgain)
{
    Write({"a.txt", "b.txt"});
    Pass();
    taken.clear();
    RemoveForAMoment("a.txt");

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{"a.txt", false}));
}

TEST_F(NewFilesTest, AddsAReplacedFileAgain)
{
    Write({"b.txt", "c.txt"});
    Pass();
    taken.clear();
    ReplaceNextBy("a.txt");

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{"b.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(NewFilesTest, AddsAllFilesAgainAfterAClear)
{
    Write({"a.txt", "b.txt"});
    Pass();
    taken.clear();
    snapshot.Clear();

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{"a.txt", true}, Taken{"b.txt", true}));
}

TEST_F(NewFilesTest, ForgetsKnownFilesInAClear)
{
    Have({"a.txt"});
    Pass();
    snapshot.Clear();
    snapshot.Append({NewFile("b.txt")});

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{"a.txt", false}));
}

TEST_F(NewFilesTest, KnowsAFileWhenOneOfItsTwoEntriesIsRemoved)
{
    Have({"a.txt", "b.txt"});
    snapshot.Insert(0, File("a.txt"));
    Pass();
    RemoveForAMoment("a.txt");

    Pass();

    EXPECT_THAT(taken, IsEmpty());
}

TEST_F(NewFilesTest, AddsNoFileTwiceForAnotherSpellingOfTheFolder)
{
    Write({"sub/a.txt", "sub/b.txt"});
    settings.dirPath = folder.Path(QStringLiteral("sub"));
    Pass(settings.dirPath);
    taken.clear();
    const CurrentFolder here(settings.dirPath);
    folder.Link(QStringLiteral("sub"), QStringLiteral("link"));

    for (const QString& spelling :
         {QString(), folder.Path(QStringLiteral("sub/../sub")), folder.Path(QStringLiteral("link"))})
        Pass(spelling);

    EXPECT_THAT(taken, IsEmpty());
}

// What the relative path meant then is not what it means now.
TEST_F(NewFilesTest, AddsNoFileTwiceWhenARelativePathMeansAnotherFolder)
{
    Write({"1/2/a.txt", "2/b.txt"});
    folder.Link(QStringLiteral("../1/2/a.txt"), QStringLiteral("2/a.txt"));
    settings.dirPath = QStringLiteral("2");
    settings.depth = 0;
    {
        const CurrentFolder here(folder.Path(QStringLiteral("1")));
        snapshot.Append({QFileInfo(folder.Path(QStringLiteral("1/2/a.txt")))});
    }
    const CurrentFolder here(folder.Path());

    Pass(settings.dirPath);

    EXPECT_THAT(taken, SizeIs(1));
    EXPECT_EQ(taken.front().path, "2/b.txt");
}

/// Files whose paths begin at the current folder.
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

    EXPECT_THAT(taken, IsEmpty());
}

TEST_F(NewRelativeFilesTest, AreNewAgainAfterRemoval)
{
    RemoveForAMoment("a.txt");

    Pass(QString());

    EXPECT_THAT(taken, ElementsAre(Taken{"./a.txt", false}));
}

TEST_F(NewRelativeFilesTest, AreNewAgainAfterReplacement)
{
    ReplaceNextBy("0.txt");

    Pass(QString());

    EXPECT_THAT(taken, ElementsAre(Taken{"./a.txt", false}));
}

/// The files of a start, which go to the end of the snapshot.
class InitialFilesTest : public NewFilesTest
{
protected:
    using Times = ListingOptions::Times;

    void Start(Times times = Times::ReadLater)
    {
        NewFiles files = NewFiles::OfStart(snapshot, folder.Path(), times, source.GetToken());
        while (files.MoveNext()) {
            EXPECT_EQ(files.GetScan().at(files.GetPosition()).info, files.Get());
            files.TakeIn();
        }
    }
};

TEST_F(InitialFilesTest, AreThoseThatThePredicateAccepts)
{
    Write({"c.txt", "a.txt", "b.mov", "sub/b.txt"});
    settings.nameFilters = QStringList{QStringLiteral("*.txt")};
    SetPredicate([](const QString& name) { return name != QStringLiteral("c.txt"); });

    Start();

    EXPECT_THAT(asked, ElementsAre("a.txt", "sub/b.txt", "c.txt"));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "sub/b.txt"));
}

// Intended: the list is not cleared, and nothing is looked up in it.
TEST_F(InitialFilesTest, FollowTheExistingEntries)
{
    Have({"b.txt", "c.txt"});
    Write({"a.txt"});

    Start();

    EXPECT_THAT(Paths(), ElementsAre("b.txt", "c.txt", "a.txt", "b.txt", "c.txt"));
}

TEST_F(InitialFilesTest, AreNotAddedTwiceWhenThePredicateRunsAPass)
{
    Write({"a.txt", "b.txt", "c.txt"});
    bool inside = false;
    SetPredicate([&](const QString& name) {
        if (name == QStringLiteral("b.txt") && !std::exchange(inside, true))
            Pass();
        return true;
    });

    Start();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(InitialFilesTest, EndWithTheWatch)
{
    Write({"a.txt", "b.txt", "c.txt"});
    SetPredicate([this](const QString& name) {
        if (name == QStringLiteral("b.txt"))
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
    Write({"a.txt"});
    for (const Times times : {Times::ReadLater, Times::ReadWhileListing}) {
        snapshot.Clear();
        folder.SetModificationTime(QStringLiteral("a.txt"), earlier);
        NewFiles files = NewFiles::OfStart(snapshot, folder.Path(), times, source.GetToken());
        folder.SetModificationTime(QStringLiteral("a.txt"), later);

        ASSERT_TRUE(files.MoveNext());
        EXPECT_EQ(files.TakeIn().lastModified(), times == Times::ReadLater ? later : earlier);
    }
}

TEST_F(NewFilesTest, ComparesCanonicalPathsOnceASlotHasScannedAnotherFolder)
{
    Have({"0.txt"});
    Write({"a.txt", "b.txt"});
    const TempFolder elsewhere;
    elsewhere.Link(folder.Path(), QStringLiteral("link"));
    afterEach = [&](const QString& name) {
        if (name == QStringLiteral("a.txt") && taken.size() == 1)
            Pass(elsewhere.Path(QStringLiteral("link")));
    };

    Pass();

    EXPECT_THAT(NamesOf(snapshot.GetFileInfos()), ElementsAre("0.txt", "a.txt", "b.txt"));
}

/// What tells that a listed file is one of the snapshot: where there is no link, its path alone.
class FileIdentityTest : public NewFilesTest
{
protected:
    using Identity = DirectorySnapshot::Identity;

    Identity IdentityOf(const QString& path)
    {
        NewFiles::OfPass(snapshot, path, source.GetToken());
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
    Write({"1/2/a.txt"});
    folder.Link(QStringLiteral("a.txt"), QStringLiteral("1/2/b.txt"));

    EXPECT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
}

// Entries may remember where their paths led to.
TEST_F(FileIdentityTest, StaysTheCanonicalPathUntilTheSnapshotIsCleared)
{
    Write({"a.txt"});
    folder.Link(QStringLiteral("a.txt"), QStringLiteral("link"));
    ASSERT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
    folder.Remove(QStringLiteral("link"));

    EXPECT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
    snapshot.Clear();
    EXPECT_EQ(IdentityOf(folder.Path()), Identity::Path);
}

TEST_F(FileIdentityTest, IsTheCanonicalPathAfterAStartWithALink)
{
    Write({"a.txt"});
    folder.Link(QStringLiteral("a.txt"), QStringLiteral("link"));
    NewFiles::OfStart(snapshot, folder.Path(), ListingOptions::Times::ReadLater, source.GetToken());
    folder.Remove(QStringLiteral("link"));

    EXPECT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
}

TEST_F(FileIdentityTest, IsTheCanonicalPathOnceAnotherFolderIsScanned)
{
    folder.MakeFolder(QStringLiteral("sub"));

    EXPECT_EQ(IdentityOf(folder.Path(QStringLiteral("sub"))), Identity::CanonicalPath);
    EXPECT_EQ(IdentityOf(folder.Path()), Identity::CanonicalPath);
}

TEST_F(FileIdentityTest, IsTheCanonicalPathBelowARelativeOrUncleanPath)
{
    folder.MakeFolder(QStringLiteral("sub"));
    const CurrentFolder here(folder.Path());
    for (const QString& path : {QStringLiteral("sub"), QString(), folder.Path(QStringLiteral("sub/.."))}) {
        snapshot.Clear();
        settings.dirPath = path;
        EXPECT_EQ(IdentityOf(path), Identity::CanonicalPath) << path.toStdString();
    }
}

TEST_F(FileIdentityTest, IsTheCanonicalPathAfterAStartWithAnEmptyPath)
{
    const CurrentFolder here(folder.Path());
    NewFiles::OfStart(snapshot, QString(), ListingOptions::Times::ReadLater, source.GetToken());

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
    folder.SetModificationTime(QStringLiteral("a.txt"), QDateTime::fromMSecsSinceEpoch(1500000000123));
    ASSERT_EQ(snapshot.Update(File("a.txt")), DirectorySnapshot::Difference::Changed);

    EXPECT_EQ(IdentityOf(folder.Path()), Identity::Path);
}

TEST_F(NewFilesTest, AsksThePredicateAboutUnknownFilesOnly)
{
    Have({"a.txt", "c.txt"});
    Write({"b.txt", "d.txt"});
    SetPredicate([](const QString& name) { return name == QStringLiteral("d.txt"); });

    Pass();

    EXPECT_THAT(asked, ElementsAre("b.txt", "d.txt"));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "c.txt", "d.txt"));
}

TEST_F(NewFilesTest, AsksThePredicateAboutEveryFileForAnEmptySnapshot)
{
    Write({"a.txt", "b.txt", "c.txt"});
    SetPredicate([](const QString& name) { return name != QStringLiteral("b.txt"); });

    Pass();

    EXPECT_THAT(asked, ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(taken, ElementsAre(Taken{"a.txt", true}, Taken{"c.txt", true}));
}

TEST_F(NewFilesTest, AsksAgainAboutARejectedFile)
{
    Have({"a.txt"});
    Write({"b.txt"});
    bool answer = false;
    SetPredicate([&](const QString&) { return answer; });
    Pass();
    ASSERT_THAT(taken, IsEmpty());

    answer = true;
    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{"b.txt", false}));
}

TEST_F(NewFilesTest, EndsWithTheWatch)
{
    Have({"a.txt"});
    Write({"b.txt", "c.txt"});
    SetPredicate([](const QString&) { return true; });
    afterEach = [this](const QString&) { source.Invalidate(); };

    Pass();

    EXPECT_THAT(taken, SizeIs(1));
    EXPECT_THAT(asked, SizeIs(1));
}

TEST_F(NewFilesTest, EndsWhenThePredicateEndsTheWatch)
{
    Write({"a.txt", "b.txt"});
    SetPredicate([this](const QString&) {
        source.Invalidate();
        return true;
    });

    Pass();

    EXPECT_THAT(taken, IsEmpty());
    EXPECT_THAT(asked, SizeIs(1));
}

TEST_F(NewFilesTest, KeepsThePredicateAliveDuringItsCall)
{
    Write({"a.txt", "b.txt"});
    auto text = std::make_shared<std::string>("still here");
    std::string seen;
    settings.filter = [this, text, &seen](const QFileInfo&) {
        settings.filter = {};
        snapshot.Clear();
        seen = *text;
        return true;
    };
    text.reset();

    Pass();

    EXPECT_EQ(seen, "still here");
}

TEST_F(NewFilesTest, AddsNoFileTwiceAfterAPassInASlot)
{
    Write({"a.txt", "b.txt", "c.txt"});
    afterEach = [this](const QString& name) {
        if (name == QStringLiteral("a.txt"))
            Pass();
    };

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(taken, SizeIs(3));
}

TEST_F(NewFilesTest, AddsNoFileTwiceAfterAPassInThePredicate)
{
    Have({"b.txt"});
    Write({"a.txt", "c.txt", "d.txt"});
    bool inside = false;
    SetPredicate([&](const QString&) {
        if (!std::exchange(inside, true))
            Pass();
        return true;
    });

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt", "d.txt"));
    EXPECT_THAT(taken, SizeIs(3));
}

TEST_F(NewFilesTest, ContinuesAfterAFileThatAPassInThePredicateHasAdded)
{
    Have({"b.txt"});
    Write({"a.txt", "c.txt"});
    bool outside = true;
    SetPredicate([&](const QString& name) {
        if (std::exchange(outside, false)) {
            Pass();
            outside = true;
        }
        return outside || name == QStringLiteral("a.txt");
    });

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(taken, SizeIs(2));
}

TEST_F(NewFilesTest, AddsNoFileTwiceAfterAPassInThePredicateHasFilledTheSnapshot)
{
    Write({"a.txt", "b.txt", "c.txt"});
    bool inside = false;
    SetPredicate([&](const QString& name) {
        if (name == QStringLiteral("b.txt") && !std::exchange(inside, true))
            Pass();
        return true;
    });

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(taken, SizeIs(3));
}

TEST_F(NewFilesTest, FindsTheNewIndexWhenThePredicateHasChangedTheSnapshot)
{
    Have({"b.txt", "d.txt"});
    Write({"c.txt"});
    SetPredicate([this](const QString&) {
        Remove("b.txt");
        return true;
    });

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{"c.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("c.txt", "d.txt"));
}

TEST_F(NewFilesTest, FindsTheNewIndexWhenThePredicateHasReplacedAFile)
{
    Have({"a.txt", "z.txt"});
    Write({"m.txt"});
    SetPredicate([this](const QString&) {
        ReplaceNextBy("b.txt");
        return true;
    });

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{"m.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "m.txt"));
}

TEST_F(NewFilesTest, FindsTheNewIndexWhenThePredicateHasClearedTheSnapshot)
{
    Have({"a.txt", "z.txt"});
    Write({"m.txt"});
    SetPredicate([this](const QString&) {
        snapshot.Clear();
        return true;
    });

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{"m.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("m.txt"));
}

TEST_F(NewFilesTest, KeepsTheOrderWhenASlotHasRemovedAFile)
{
    Have({"b.txt", "d.txt"});
    Write({"a.txt", "c.txt", "e.txt"});
    afterEach = [this](const QString& name) {
        if (name == QStringLiteral("c.txt"))
            Remove("b.txt");
    };

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "c.txt", "d.txt", "e.txt"));
}

TEST_F(NewFilesTest, KeepsTheOrderWhenASlotHasAppendedAFile)
{
    const TempFolder other;
    const QFileInfo appended(other.Write(QStringLiteral("m.txt")));
    Write({"a.txt", "b.txt", "z.txt"});
    afterEach = [&](const QString& name) {
        if (name == QStringLiteral("a.txt"))
            snapshot.Append({appended});
    };

    Pass();

    EXPECT_THAT(NamesOf(snapshot.GetFileInfos()), ElementsAre("a.txt", "b.txt", "m.txt", "z.txt"));
    EXPECT_THAT(taken, ElementsAre(Taken{"a.txt", true}, Taken{"b.txt", true}, Taken{"z.txt", true}));
}

TEST_F(NewFilesTest, AddsTheRemainingFilesWhenASlotHasEmptiedTheSnapshot)
{
    Write({"a.txt", "b.txt", "c.txt"});
    afterEach = [this](const QString& name) {
        if (name == QStringLiteral("a.txt"))
            Remove("a.txt");
    };

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("b.txt", "c.txt"));
}

} // namespace
} // namespace Zendra::LW
