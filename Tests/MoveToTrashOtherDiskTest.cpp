#include "Tests/Support/TrashFixture.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

// Files on another disk than the home folder.

using namespace Tests;

namespace {

class MoveToTrashOtherDiskTest : public TrashFixture
{
protected:
    void SetUp() override
    {
        TrashFixture::SetUp();
        if (!IsSkipped())
            Mount("disk");
    }

    void TearDown() override
    {
        for (const std::string& path : mounted)
            EXPECT_EQ(::umount(path.c_str()), 0);
    }

    /// Mounts a disk in a namespace of this process, so that no other process sees it.
    void Mount(const std::string& name)
    {
        if (::geteuid() != 0)
            GTEST_SKIP() << "mounting a disk needs root";
        const std::string mkfs = FindProgram("mkfs.ext4");
        if (mkfs.empty())
            GTEST_SKIP() << "mkfs.ext4 is not installed";
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            GTEST_SKIP() << "no mount namespace: " << std::strerror(errno);

        const std::string disk = MakeFolder(name);
        const std::string image = Write(name + ".image", "");
        std::filesystem::resize_file(image, 2 << 20);
        const Outcome formatted = Run(mkfs, {"-q", "-m0", "-O^has_journal", image});
        ASSERT_EQ(formatted.exitCode, 0) << formatted.errors;
        const Outcome outcome = Run(FindProgram("mount"), {"-oloop", image, disk});
        if (outcome.exitCode != 0)
            GTEST_SKIP() << "no disk to mount: " << outcome.errors;
        mounted.push_back(disk);
        std::filesystem::remove(image);
    }

    std::vector<std::string> mounted;
};

TEST_F(MoveToTrashOtherDiskTest, TrashesOntoTheSameDisk)
{
    ExpectTrashedAndRestored(Write("disk/file"));
    ExpectTrashedAndRestored(Write("disk/one/two/line\nbreak %41 #\xC3\xBC"));
    ExpectTrashedAndRestored(Path("disk/one"));
    ExpectTrashedAndRestored(Link("missing", "disk/dangling"));
    EXPECT_FALSE(EntryExists(Path("home/data")));
}

TEST_F(MoveToTrashOtherDiskTest, TrashesALinkToAnotherDiskOnItsOwnDisk)
{
    Write("disk/file");
    Write("work/file");

    ExpectTrashedAndRestored(Link(Path("disk/file"), "work/link"));
    EXPECT_TRUE(EntryExists(Path("home/data/Trash")));
    ExpectTrashedAndRestored(Link(Path("work/file"), "disk/link"));
}

TEST_F(MoveToTrashOtherDiskTest, UsesTheDisksCommonTrash)
{
    MakeFolder("disk/.Trash", 01777);

    ExpectTrashedAndRestored(Write("disk/one/file"));

    EXPECT_TRUE(EntryExists(Path("disk/.Trash/" + std::to_string(::getuid()))));
}

TEST_F(MoveToTrashOtherDiskTest, LeavesAFileWhereTheUserCannotHaveATrash)
{
    MakeFolder("disk/open", 0777);

    ExpectRefused(Write("disk/open/file"), {asOtherUser});

    EXPECT_FALSE(EntryExists(Path("home/data/Trash/files/file")));
}

TEST_F(MoveToTrashOtherDiskTest, LeavesTheDiskItself)
{
    Write("disk/file");

    ExpectRefused(Path("disk"));
}

TEST_F(MoveToTrashOtherDiskTest, LeavesEntriesThatCouldNotBeRestored)
{
    ExpectRefused(Write("disk/file"), {fullDisk});
    ExpectRefused(Write("disk/one/two/file"), {fullDisk});
    ExpectRefused(Path("disk/one"), {fullDisk});
    EXPECT_TRUE(EntryExists(Path("disk/.Trash-" + std::to_string(::getuid()))));

    MakeFolder("disk/.Trash", 01777);
    ExpectRefused(Path("disk/one/two/file"), {fullDisk});
    EXPECT_TRUE(EntryExists(Path("disk/.Trash/" + std::to_string(::getuid()))));
}

TEST_F(MoveToTrashOtherDiskTest, DoesNotListTheTrashWhenTheFileKeepsItsNameThere)
{
    FillTrash(3);

    ExpectRefused(Write("disk/file"), {fullDisk, noListing});
}

TEST_F(MoveToTrashOtherDiskTest, DoesNotSearchATrashOnAnotherDisk)
{
    FillTrash(1);
    Write("home/data/Trash/info/file.trashinfo", "");
    TakeNamesInTrashAfter("file");

    EXPECT_TRUE(Trash(Write("disk/file"), {fewLstatCalls}));
}

// The inode numbers of two disks are the same, and the trash on one of them is searched for a file of the
// other.
TEST_F(MoveToTrashOtherDiskTest, TellsFilesWithTheSameInodeNumberApart)
{
    Mount("disk2");
    if (IsSkipped())
        return;
    dataHome = Path("disk2/data");
    Write("disk2/data/Trash/info/orphan.trashinfo", "");
    const std::string orphan = Write("disk2/data/Trash/files/orphan", "orphan");
    const std::string file = Write("disk/file");
    for (int i = 0; InodeOf(file) != InodeOf(orphan); ++i) {
        ASSERT_LT(i, 100);
        const std::string& lower = InodeOf(file) < InodeOf(orphan) ? file : orphan;
        std::filesystem::rename(lower, lower + std::to_string(i));
        std::ofstream(lower) << "content";
    }

    EXPECT_TRUE(Trash(file));

    EXPECT_FALSE(EntryExists(file));
    EXPECT_TRUE(EntryExists(orphan));
}

TEST_F(MoveToTrashOtherDiskTest, LeavesAFileOnAFullDisk)
{
    const std::string file = Write("disk/file");
    ExpectTrashedAndRestored(file);
    std::ofstream filler(Path("disk/filler"), std::ios::binary);
    while (filler << std::string(1024, 'x') << std::flush) {
    }

    ExpectRefused(file);

    EXPECT_EQ(TrashList(), "");
    filler.close();
    std::filesystem::remove(Path("disk/filler"));
    ExpectTrashedAndRestored(file);
}

} // namespace
