#include "Lib/Util/FS/TemporaryHardLink.h"

#include "Tests/Support/TemporaryHardLinkFixture.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

// What happens to the recorded path when a holder is reset, moved or destroyed.

using namespace Tests;
using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::LW::TemporaryHardLink;

namespace {

/// QFile finds it among Qt's resources, but it is no file of the system and cannot be linked.
const std::string unlinkableButExisting = ":/";

using TemporaryHardLinkResetTest = TemporaryHardLinkFixture;

TEST_F(TemporaryHardLinkResetTest, FallsBackToTheRecordedPathIfThereIsAFile)
{
    const TemporaryHardLink link(unlinkable);
    ASSERT_EQ(link.GetExistFilePath(), "");

    WriteAt(link.GetLinkedFilePath());

    EXPECT_EQ(link.GetExistFilePath(), link.GetLinkedFilePath());
}

TEST_F(TemporaryHardLinkResetTest, PrefersTheOriginal)
{
    const TemporaryHardLink link(unlinkableButExisting);
    ASSERT_NE(link.GetLinkedFilePath(), "");
    WriteAt(link.GetLinkedFilePath());

    EXPECT_EQ(link.GetExistFilePath(), unlinkableButExisting);
}

TEST_F(TemporaryHardLinkResetTest, RemovesAnyFileAtTheRecordedPathWhenItIsDestroyed)
{
    auto link = std::make_unique<TemporaryHardLink>(unlinkable);
    WriteAt(link->GetLinkedFilePath());
    ASSERT_EQ(TemporaryFiles().size(), 1U);

    link.reset();

    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkResetTest, IsDestroyedWithoutAnErrorWhenTheRecordedPathCannotBeRemoved)
{
    auto link = std::make_unique<TemporaryHardLink>(unlinkable);
    const std::string recorded = link->GetLinkedFilePath();
    WriteAt(recorded + "/file");

    link.reset();

    EXPECT_THAT(TemporaryFiles(), ElementsAre(recorded));
}

TEST_F(TemporaryHardLinkResetTest, ResetRemovesTheRecordedPathAndLinksTheNewFile)
{
    TemporaryHardLink link(unlinkable);
    WriteAt(link.GetLinkedFilePath());
    const std::string original = WriteOriginal();

    link.Reset(original);

    EXPECT_EQ(link.GetOriginalFilePath(), original);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_THAT(LinkTexts(), ElementsAre(original));
}

TEST_F(TemporaryHardLinkResetTest, ResetRecordsAnotherNameWhenTheLinkFailsAgain)
{
    TemporaryHardLink link(unlinkable);
    const std::string first = link.GetLinkedFilePath();
    WriteAt(first);

    link.Reset(unlinkable + "y");

    EXPECT_EQ(link.GetOriginalFilePath(), unlinkable + "y");
    EXPECT_NE(link.GetLinkedFilePath(), first);
    EXPECT_NE(link.GetLinkedFilePath(), "");
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkResetTest, ResetToAnEmptyPathRemovesTheRecordedPath)
{
    TemporaryHardLink link(unlinkable);
    WriteAt(link.GetLinkedFilePath());

    link.Reset("");

    EXPECT_EQ(link.GetOriginalFilePath(), "");
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkResetTest, ResetRemovesTheRecordedPathAlsoWhenTheTemporaryFolderHasBecomeUnusable)
{
    TemporaryHardLink link(unlinkable);
    WriteAt(link.GetLinkedFilePath());
    MakeTemporaryFolderUnusable();

    link.Reset(WriteOriginal());

    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkResetTest, ResetWithTheSamePathLeavesOneMoreLink)
{
    const std::string original = WriteOriginal();
    TemporaryHardLink link(original);

    link.Reset(original);
    link.Reset(link.GetOriginalFilePath());

    EXPECT_EQ(link.GetOriginalFilePath(), original);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_THAT(LinkTexts(), ElementsAre(original, original, original));
}

TEST_F(TemporaryHardLinkResetTest, ResetNeverRemovesTheOriginal)
{
    const std::string original = WriteOriginal();
    TemporaryHardLink link(original);

    link.Reset("");

    EXPECT_TRUE(TemporaryHardLink::exists(original));
}

TEST_F(TemporaryHardLinkResetTest, ResetAcceptsItsOwnRecordedPath)
{
    TemporaryHardLink link(unlinkable);
    const std::string recorded = link.GetLinkedFilePath();
    WriteAt(recorded);

    link.Reset(link.GetLinkedFilePath());

    EXPECT_EQ(link.GetOriginalFilePath(), recorded);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(link.GetExistFilePath(), "");
    EXPECT_THAT(LinkTexts(), ElementsAre(recorded));
}

class MovedTemporaryHardLinkTest : public TemporaryHardLinkFixture
{
protected:
    TemporaryHardLink source{unlinkable};
    const std::string recorded = source.GetLinkedFilePath();
};

TEST_F(MovedTemporaryHardLinkTest, MovesItsPathsToANewObject)
{
    const TemporaryHardLink target(std::move(source));

    EXPECT_EQ(target.GetOriginalFilePath(), unlinkable);
    EXPECT_EQ(target.GetLinkedFilePath(), recorded);
    EXPECT_EQ(source.GetOriginalFilePath(), "");
    EXPECT_EQ(source.GetLinkedFilePath(), "");
}

TEST_F(MovedTemporaryHardLinkTest, RemovesTheRecordedPathOnlyWhenItsNewOwnerIsDestroyed)
{
    WriteAt(recorded);
    auto first = std::make_unique<TemporaryHardLink>(std::move(source));
    auto second = std::make_unique<TemporaryHardLink>(std::move(*first));

    first.reset();
    source.Reset("");
    EXPECT_TRUE(TemporaryHardLink::exists(recorded));

    second.reset();
    EXPECT_FALSE(TemporaryHardLink::exists(recorded));
}

TEST_F(MovedTemporaryHardLinkTest, MovesItsPathsToAnAssignedObject)
{
    TemporaryHardLink target("");

    target = std::move(source);

    EXPECT_EQ(target.GetOriginalFilePath(), unlinkable);
    EXPECT_EQ(target.GetLinkedFilePath(), recorded);
    EXPECT_EQ(source.GetOriginalFilePath(), "");
    EXPECT_EQ(source.GetLinkedFilePath(), "");
}

TEST_F(MovedTemporaryHardLinkTest, RemovesTheAssignedObjectsOwnRecordedPath)
{
    TemporaryHardLink target(unlinkable + "y");
    const std::string replaced = target.GetLinkedFilePath();
    WriteAt(replaced);
    WriteAt(recorded);

    target = std::move(source);

    EXPECT_FALSE(TemporaryHardLink::exists(replaced));
    EXPECT_TRUE(TemporaryHardLink::exists(recorded));
    EXPECT_EQ(target.GetLinkedFilePath(), recorded);
    EXPECT_EQ(source.GetOriginalFilePath(), "");
    EXPECT_EQ(source.GetLinkedFilePath(), "");
}

TEST_F(MovedTemporaryHardLinkTest, KeepsItsPathsWhenItIsAssignedToItself)
{
    WriteAt(recorded);
    TemporaryHardLink& itself = source;

    source = std::move(itself);

    EXPECT_EQ(source.GetOriginalFilePath(), unlinkable);
    EXPECT_EQ(source.GetLinkedFilePath(), recorded);
    EXPECT_TRUE(TemporaryHardLink::exists(recorded));
}

TEST_F(MovedTemporaryHardLinkTest, CanBeUsedAgain)
{
    const TemporaryHardLink target(std::move(source));
    const std::string original = WriteOriginal();

    source.Reset(original);

    EXPECT_EQ(source.GetOriginalFilePath(), original);
    EXPECT_EQ(target.GetLinkedFilePath(), recorded);
    EXPECT_EQ(TemporaryFiles().size(), 1U);
}

TEST_F(MovedTemporaryHardLinkTest, CanBeKeptInAContainer)
{
    std::vector<TemporaryHardLink> links;
    links.emplace_back(unlinkable);
    const std::string first = links[0].GetLinkedFilePath();
    WriteAt(first);

    for (int number = 0; number < 20; ++number)
        links.emplace_back("");

    EXPECT_EQ(links[0].GetLinkedFilePath(), first);
    EXPECT_TRUE(TemporaryHardLink::exists(first));
    links.clear();
    EXPECT_FALSE(TemporaryHardLink::exists(first));
}

} // namespace
