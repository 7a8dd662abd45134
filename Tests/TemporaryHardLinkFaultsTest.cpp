#include "Lib/Util/FS/TemporaryHardLink.h"

#include "Tests/Support/TempFolder.h"

#include <QDir>
#include <QFileInfo>

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdarg>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

enum class Disk
{
    HasRoom,
    IsFull,
    IsFullForLinks ///< as when it fills up once the name is reserved
};

Disk disk = Disk::HasRoom;
int refusedFiles = 0;
int refusedLinks = 0;

using Open = int (*)(const char*, int, ...);

int OpenUnlessFull(Open system, const char* path, int flags, mode_t mode)
{
    const bool makesAFile = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    if (makesAFile && disk == Disk::IsFull) {
        ++refusedFiles;
        errno = ENOSPC;
        return -1;
    }
    return system(path, flags, mode);
}

/// The argument that is there only when a file may be made.
mode_t ModeOf(int flags, std::va_list arguments)
{
    const bool makesAFile = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return makesAFile ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// In the place of the system's, for the whole program.
extern "C" {

int open(const char* path, int flags, ...)
{
    static const auto system = reinterpret_cast<Open>(::dlsym(RTLD_NEXT, "open"));
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return OpenUnlessFull(system, path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    static const auto system = reinterpret_cast<Open>(::dlsym(RTLD_NEXT, "open64"));
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
using Tests::TempFolder;
using Zendra::LW::TemporaryHardLink;

class TemporaryHardLinkFaultsTest : public testing::Test
{
protected:
    TemporaryHardLinkFaultsTest()
    {
        original = folder.Write(QStringLiteral("recording.mp4")).toStdString();
        qputenv("TMPDIR", folder.MakeFolder(QStringLiteral("tmp")).toUtf8());
        refusedFiles = 0;
        refusedLinks = 0;
    }

    ~TemporaryHardLinkFaultsTest() override
    {
        disk = Disk::HasRoom;
        systemsFolder.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", systemsFolder);
    }

    QStringList Links() const { return folder.Entries(QStringLiteral("tmp")); }

    const QByteArray systemsFolder = qgetenv("TMPDIR");
    const TempFolder folder;
    std::string original;
};

TEST_F(TemporaryHardLinkFaultsTest, RecordsNothingOnAFullDiskAndStillHasTheOriginal)
{
    disk = Disk::IsFull;

    const TemporaryHardLink link(original);

    EXPECT_GT(refusedFiles, 0);
    EXPECT_EQ(refusedLinks, 0);
    EXPECT_THAT(link.GetLinkedFilePath(), IsEmpty());
    EXPECT_EQ(link.GetExistFilePath(), original);
    EXPECT_THAT(Links(), IsEmpty());
}

TEST_F(TemporaryHardLinkFaultsTest, RecordsTheNameWhenTheDiskFillsUpBeforeTheLinkIsMade)
{
    disk = Disk::IsFullForLinks;

    const TemporaryHardLink link(original);

    EXPECT_EQ(refusedLinks, 1);
    EXPECT_EQ(QFileInfo(QString::fromStdString(link.GetLinkedFilePath())).path(), QDir::tempPath());
    EXPECT_EQ(link.GetExistFilePath(), original);
    EXPECT_THAT(Links(), IsEmpty());
}

TEST_F(TemporaryHardLinkFaultsTest, LinksAgainOnceThereIsRoom)
{
    disk = Disk::IsFull;
    TemporaryHardLink link(original);

    disk = Disk::HasRoom;
    link.Reset(original);

    EXPECT_THAT(link.GetLinkedFilePath(), IsEmpty());
    EXPECT_EQ(Links().size(), 1);
}

} // namespace
