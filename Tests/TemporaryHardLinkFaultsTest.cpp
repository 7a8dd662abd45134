#include "Lib/Util/FS/TemporaryHardLink.h"

#include "Tests/Support/NextFunction.h"
#include "Tests/Support/TemporaryHardLinkFixture.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdarg>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

enum class Disk
{
    HasRoom,
    IsFull,
    IsFullForLinks ///< as if it had become full after the name was reserved
};

Disk disk = Disk::HasRoom;
int refusedFiles = 0;
int refusedLinks = 0;

using Open = int(const char*, int, ...);

int OpenUnlessFull(Open* system, const char* path, int flags, mode_t mode)
{
    const bool makesAFile = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    if (makesAFile && disk == Disk::IsFull) {
        ++refusedFiles;
        errno = ENOSPC;
        return -1;
    }
    return system(path, flags, mode);
}

/// The argument that is only passed when a file may be made.
mode_t ModeOf(int flags, std::va_list arguments)
{
    const bool makesAFile = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return makesAFile ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// These replace the functions of the system.
extern "C" {

int open(const char* path, int flags, ...)
{
    static const auto system = Tests::NextFunction<Open>("open");
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return OpenUnlessFull(system, path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    static const auto system = Tests::NextFunction<Open>("open64");
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return OpenUnlessFull(system, path, flags, mode);
}

int symlink(const char* target, const char* path) noexcept
{
    if (disk != Disk::HasRoom) {
        ++refusedLinks;
        errno = ENOSPC;
        return -1;
    }
    return ::symlinkat(target, AT_FDCWD, path);
}

} // extern "C"

namespace {

using testing::IsEmpty;
using Zendra::LW::TemporaryHardLink;

class TemporaryHardLinkFaultsTest : public Tests::TemporaryHardLinkFixture
{
protected:
    TemporaryHardLinkFaultsTest()
    {
        refusedFiles = 0;
        refusedLinks = 0;
    }

    ~TemporaryHardLinkFaultsTest() override { disk = Disk::HasRoom; }

    const std::string original = WriteOriginal();
};

TEST_F(TemporaryHardLinkFaultsTest, RecordsNothingOnAFullDiskAndKeepsTheOriginal)
{
    disk = Disk::IsFull;

    const TemporaryHardLink link(original);

    EXPECT_GT(refusedFiles, 0);
    EXPECT_EQ(refusedLinks, 0);
    EXPECT_THAT(link.GetLinkedFilePath(), IsEmpty());
    EXPECT_EQ(link.GetExistFilePath(), original);
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkFaultsTest, RecordsTheNameWhenTheDiskFillsUpBeforeTheLinkIsMade)
{
    disk = Disk::IsFullForLinks;

    const TemporaryHardLink link(original);

    EXPECT_EQ(refusedLinks, 1);
    EXPECT_EQ(std::filesystem::path(link.GetLinkedFilePath()).parent_path(), Path("temp"));
    EXPECT_EQ(link.GetExistFilePath(), original);
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkFaultsTest, LinksAgainOnceThereIsRoom)
{
    disk = Disk::IsFull;
    TemporaryHardLink link(original);

    disk = Disk::HasRoom;
    link.Reset(original);

    EXPECT_THAT(link.GetLinkedFilePath(), IsEmpty());
    EXPECT_EQ(TemporaryFiles().size(), 1U);
}

} // namespace
