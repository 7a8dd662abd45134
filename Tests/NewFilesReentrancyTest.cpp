// What predicates and slots may do to the snapshot while a pass adds files to it.

#include "Lib/Util/FS/NewFiles.h"

#include "Tests/Support/NewFilesFixture.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>

namespace Zendra::LW {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Tests::AddedFile;
using Tests::NamesOf;
using Tests::TempFolder;
using NewFilesReentrancyTest = Tests::NewFilesFixture;

TEST_F(NewFilesReentrancyTest, ComparesCanonicalPathsOnceASlotHasScannedAnotherFolder)
{
    Have({"0.txt"});
    Write({"a.txt", "b.txt"});
    const TempFolder elsewhere;
    elsewhere.Link(folder.Path(), "link");
    afterEach = [&](const std::string& name) {
        if (name == "a.txt" && added.size() == 1)
            Pass(elsewhere.Path("link"));
    };

    Pass();

    EXPECT_THAT(NamesOf(snapshot.GetFileInfos()), ElementsAre("0.txt", "a.txt", "b.txt"));
}

TEST_F(NewFilesReentrancyTest, EndsWithTheWatch)
{
    Have({"a.txt"});
    Write({"b.txt", "c.txt"});
    SetPredicate([](const std::string&) { return true; });
    afterEach = [this](const std::string&) { source.Invalidate(); };

    Pass();

    EXPECT_THAT(added, SizeIs(1));
    EXPECT_THAT(asked, SizeIs(1));
}

TEST_F(NewFilesReentrancyTest, EndsWhenThePredicateEndsTheWatch)
{
    Write({"a.txt", "b.txt"});
    SetPredicate([this](const std::string&) {
        source.Invalidate();
        return true;
    });

    Pass();

    EXPECT_THAT(added, IsEmpty());
    EXPECT_THAT(asked, SizeIs(1));
}

TEST_F(NewFilesReentrancyTest, KeepsThePredicateAliveDuringItsCall)
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

TEST_F(NewFilesReentrancyTest, AddsNoFileTwiceAfterAPassInASlot)
{
    Write({"a.txt", "b.txt", "c.txt"});
    afterEach = [this](const std::string& name) {
        if (name == "a.txt")
            Pass();
    };

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(added, SizeIs(3));
}

TEST_F(NewFilesReentrancyTest, AddsNoFileTwiceAfterAPassInThePredicate)
{
    Have({"b.txt"});
    Write({"a.txt", "c.txt", "d.txt"});
    bool inside = false;
    SetPredicate([&](const std::string&) {
        if (!std::exchange(inside, true))
            Pass();
        return true;
    });

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt", "d.txt"));
    EXPECT_THAT(added, SizeIs(3));
}

TEST_F(NewFilesReentrancyTest, ContinuesAfterAFileThatAPassInThePredicateHasAdded)
{
    Have({"b.txt"});
    Write({"a.txt", "c.txt"});
    bool outside = true;
    SetPredicate([&](const std::string& name) {
        if (std::exchange(outside, false)) {
            Pass();
            outside = true;
        }
        return outside || name == "a.txt";
    });

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(added, SizeIs(2));
}

TEST_F(NewFilesReentrancyTest, AddsNoFileTwiceAfterAPassInThePredicateHasFilledTheSnapshot)
{
    Write({"a.txt", "b.txt", "c.txt"});
    bool inside = false;
    SetPredicate([&](const std::string& name) {
        if (name == "b.txt" && !std::exchange(inside, true))
            Pass();
        return true;
    });

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(added, SizeIs(3));
}

TEST_F(NewFilesReentrancyTest, FindsTheNewIndexWhenThePredicateHasChangedTheSnapshot)
{
    Have({"b.txt", "d.txt"});
    Write("c.txt");
    SetPredicate([this](const std::string&) {
        RemoveKnown("b.txt");
        return true;
    });

    Pass();

    EXPECT_THAT(added, ElementsAre(AddedFile{"c.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("c.txt", "d.txt"));
}

TEST_F(NewFilesReentrancyTest, FindsTheNewIndexWhenThePredicateHasReplacedAFile)
{
    Have({"a.txt", "z.txt"});
    Write("m.txt");
    SetPredicate([this](const std::string&) {
        ReplaceNextBy("b.txt");
        return true;
    });

    Pass();

    EXPECT_THAT(added, ElementsAre(AddedFile{"m.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "m.txt"));
}

TEST_F(NewFilesReentrancyTest, FindsTheNewIndexWhenThePredicateHasClearedTheSnapshot)
{
    Have({"a.txt", "z.txt"});
    Write("m.txt");
    SetPredicate([this](const std::string&) {
        snapshot.Clear();
        return true;
    });

    Pass();

    EXPECT_THAT(added, ElementsAre(AddedFile{"m.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("m.txt"));
}

TEST_F(NewFilesReentrancyTest, KeepsTheOrderWhenASlotHasRemovedAFile)
{
    Have({"b.txt", "d.txt"});
    Write({"a.txt", "c.txt", "e.txt"});
    afterEach = [this](const std::string& name) {
        if (name == "c.txt")
            RemoveKnown("b.txt");
    };

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "c.txt", "d.txt", "e.txt"));
}

TEST_F(NewFilesReentrancyTest, KeepsTheOrderWhenASlotHasAppendedAFile)
{
    const TempFolder other;
    const QFileInfo appended(other.Write("m.txt"));
    Write({"a.txt", "b.txt", "z.txt"});
    afterEach = [&](const std::string& name) {
        if (name == "a.txt")
            snapshot.Append({appended});
    };

    Pass();

    EXPECT_THAT(NamesOf(snapshot.GetFileInfos()), ElementsAre("a.txt", "b.txt", "m.txt", "z.txt"));
    EXPECT_THAT(added,
                ElementsAre(AddedFile{"a.txt", true}, AddedFile{"b.txt", true}, AddedFile{"z.txt", true}));
}

TEST_F(NewFilesReentrancyTest, AddsTheRemainingFilesWhenASlotHasEmptiedTheSnapshot)
{
    Write({"a.txt", "b.txt", "c.txt"});
    afterEach = [this](const std::string& name) {
        if (name == "a.txt")
            RemoveKnown("a.txt");
    };

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("b.txt", "c.txt"));
}

} // namespace
} // namespace Zendra::LW
