// The validation when system calls fail. A program of its own, since it replaces functions of the system.

#include "Util/PathValidation.h"

#include "Tests/Support/NextFunction.h"
#include "Tests/Support/PathValidationFixture.h"
#include "Tests/Support/TempFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Tests;

namespace {

/// The faults that a test injects into the system calls of the program, and a log of these calls. An error of
/// 0 is none.
struct SystemCalls
{
    /// Runs once, before the first file is created in a folder, and gets its name.
    std::function<void(const QString&)> beforeCreating;
    /// Of no call.
    int errorOfNothing = 0;
    int errorOfCreating = 0;
    int errorOfWriting = 0;
    int errorOfClosing = 0;
    int errorOfRemoving = 0;
    int errorOfListing = 0;
    bool listsNothing = false;
    int errorOfFdopendir = 0;

    std::vector<std::string> made;
    std::vector<unsigned int> modes;
    /// Whether a program that is started meanwhile would inherit a descriptor of the folder or the file.
    bool leaksIntoPrograms = false;
    std::vector<std::string> removed;
    bool removesOpenFile = false;
    int bytesWritten = 0;
    /// The file created last, until it is closed.
    int file = -1;
};

/// Null while no faults are injected.
SystemCalls* injected = nullptr;

int Fail(int error)
{
    errno = error;
    return -1;
}

} // namespace

// The library calls these, since the symbols of a program come before those of the C library.
extern "C" {

int openat(int folder, const char* name, int flags, ...)
{
    unsigned int mode = 0;
    if (flags & O_CREAT) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, unsigned int);
        va_end(arguments);
    }
    SystemCalls* const calls = injected;
    if (!calls)
        return static_cast<int>(::syscall(SYS_openat, folder, name, flags, mode));

    calls->made.emplace_back(name);
    calls->modes.push_back(mode);
    if (!(flags & O_CLOEXEC))
        calls->leaksIntoPrograms = true;
    if (const auto prepare = std::exchange(calls->beforeCreating, nullptr)) {
        injected = nullptr;
        prepare(QString::fromLatin1(name));
        injected = calls;
    }
    if (calls->errorOfCreating != 0)
        return Fail(calls->errorOfCreating);
    calls->file = static_cast<int>(::syscall(SYS_openat, folder, name, flags, mode));
    return calls->file;
}

ssize_t write(int file, const void* bytes, size_t size)
{
    if (injected && file == injected->file) {
        if (injected->errorOfWriting != 0)
            return Fail(injected->errorOfWriting);
        injected->bytesWritten += static_cast<int>(size);
    }
    return ::syscall(SYS_write, file, bytes, size);
}

int close(int file)
{
    const int result = static_cast<int>(::syscall(SYS_close, file));
    if (!injected || file != injected->file)
        return result;
    injected->file = -1;
    return injected->errorOfClosing != 0 ? Fail(injected->errorOfClosing) : result;
}

int unlinkat(int folder, const char* name, int flags) noexcept
{
    if (injected) {
        injected->removed.emplace_back(name);
        injected->removesOpenFile = injected->file >= 0;
        if (injected->errorOfRemoving != 0)
            return Fail(injected->errorOfRemoving);
    }
    return static_cast<int>(::syscall(SYS_unlinkat, folder, name, flags));
}

struct dirent* readdir(DIR* folder)
{
    if (injected && injected->errorOfListing != 0) {
        errno = injected->errorOfListing;
        return nullptr;
    }
    if (injected && injected->listsNothing)
        return nullptr;
    static const auto original = NextFunction<struct dirent*(DIR*)>("readdir");
    return original(folder);
}

DIR* fdopendir(int folder)
{
    if (injected && injected->errorOfFdopendir != 0) {
        errno = injected->errorOfFdopendir;
        return nullptr;
    }
    if (injected && !(::fcntl(folder, F_GETFD) & FD_CLOEXEC))
        injected->leaksIntoPrograms = true;
    static const auto original = NextFunction<DIR*(int)>("fdopendir");
    return original(folder);
}

} // extern "C"

namespace {

/// Injects its faults while it lives.
class InjectedFaults : public SystemCalls
{
public:
    InjectedFaults() { injected = this; }
    ~InjectedFaults() { injected = nullptr; }
    InjectedFaults(const InjectedFaults&) = delete;
    InjectedFaults& operator=(const InjectedFaults&) = delete;
};

/// The numbers of the descriptors that the process has open.
QStringList OpenDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoFilter | QDir::System, QDir::Name);
}

class PathValidationFaultsTest : public PathValidationFixture
{
protected:
    QByteArray ContentOf(const QString& relativePath) const
    {
        QFile file(folder.Path(relativePath));
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }
};

TEST_F(PathValidationFaultsTest, RefusesAFolderThatCannotHoldFilesDespiteItsPermissions)
{
    EXPECT_EQ(Validate("/proc"), Unwritable());
}

TEST_F(PathValidationFaultsTest, TriesWithOneHiddenFileThatOnlyTheOwnerMayRead)
{
    InjectedFaults calls;

    Validate(folder.Path());

    ASSERT_EQ(calls.made.size(), 1U);
    EXPECT_EQ(calls.made.front().front(), '.');
    EXPECT_EQ(calls.modes.front(), 0600U);
    EXPECT_GT(calls.bytesWritten, 0);
    EXPECT_EQ(calls.removed, calls.made);
}

TEST_F(PathValidationFaultsTest, UsesAnotherNameEachTime)
{
    InjectedFaults calls;

    Validate(folder.Path());
    Validate(folder.Path());

    ASSERT_EQ(calls.made.size(), 2U);
    EXPECT_NE(calls.made.front(), calls.made.back());
}

TEST_F(PathValidationFaultsTest, TriesAnotherNameWhenAFileHasTheChosenOne)
{
    QString existing;
    InjectedFaults calls;
    calls.beforeCreating = [&](const QString& name) {
        existing = name;
        folder.Write(name, "precious");
    };

    const Validation validation = Validate(folder.Path());

    EXPECT_EQ(validation, Valid());
    EXPECT_EQ(calls.made.size(), 2U);
    EXPECT_EQ(folder.Entries(), QStringList(existing));
    EXPECT_EQ(ContentOf(existing), QByteArray("precious"));
}

TEST_F(PathValidationFaultsTest, DoesNotFollowALinkThatHasTheChosenName)
{
    InjectedFaults calls;
    calls.beforeCreating = [&](const QString& name) { folder.Link("elsewhere", name); };

    const Validation validation = Validate(folder.Path());

    EXPECT_EQ(validation, Valid());
    EXPECT_EQ(folder.Entries().size(), 1);
    EXPECT_FALSE(QFile::exists(folder.Path("elsewhere")));
}

TEST_F(PathValidationFaultsTest, StopsTryingWhenAllNamesAreTaken)
{
    InjectedFaults calls;
    calls.errorOfCreating = EEXIST;

    EXPECT_EQ(Validate(folder.Path()), Unwritable());
    EXPECT_GT(calls.made.size(), 1U);
    EXPECT_TRUE(calls.removed.empty());
}

struct ErrorAndVerdict
{
    int error;
    Validation expected;
    const char* name;
};

std::string NameOf(const testing::TestParamInfo<ErrorAndVerdict>& row)
{
    return row.param.name;
}

/// Errors of the system when something cannot be written.
const auto writingErrors = testing::Values(
    ErrorAndVerdict{ENOSPC, DiskFull(), "NoSpace"}, ErrorAndVerdict{EDQUOT, DiskFull(), "QuotaUsedUp"},
    ErrorAndVerdict{EROFS, Unwritable(), "ReadOnly"}, ErrorAndVerdict{EPERM, Unwritable(), "NotPermitted"},
    ErrorAndVerdict{ENOENT, Unwritable(), "NoSuchThing"}, ErrorAndVerdict{EIO, Unwritable(), "BrokenDisk"});

class PathValidationWritingTest : public PathValidationFaultsTest,
                                  public testing::WithParamInterface<ErrorAndVerdict>
{
};

TEST_P(PathValidationWritingTest, GivesTheReasonWhenTheFileCannotBeCreated)
{
    InjectedFaults calls;
    calls.errorOfCreating = GetParam().error;

    EXPECT_EQ(Validate(folder.Path()), GetParam().expected);
    EXPECT_EQ(calls.made.size(), 1U);
}

TEST_P(PathValidationWritingTest, GivesTheReasonWhenTheFileCannotBeWrittenAndRemovesIt)
{
    InjectedFaults calls;
    calls.errorOfWriting = GetParam().error;

    EXPECT_EQ(Validate(folder.Path()), GetParam().expected);
    EXPECT_TRUE(folder.Entries().isEmpty());
}

TEST_P(PathValidationWritingTest, GivesTheReasonWhenOnlyClosingTheFileReportsTheError)
{
    InjectedFaults calls;
    calls.errorOfClosing = GetParam().error;

    EXPECT_EQ(Validate(folder.Path()), GetParam().expected);
    EXPECT_TRUE(folder.Entries().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(EveryError, PathValidationWritingTest, writingErrors, NameOf);

TEST_F(PathValidationFaultsTest, GivesTheReasonOfWritingWhenClosingFailsToo)
{
    InjectedFaults calls;
    calls.errorOfWriting = ENOSPC;
    calls.errorOfClosing = EIO;

    EXPECT_EQ(Validate(folder.Path()), DiskFull());
}

TEST_F(PathValidationFaultsTest, RefusesAFolderFromWhichFilesCannotBeRemoved)
{
    InjectedFaults calls;
    calls.errorOfRemoving = EPERM;

    EXPECT_EQ(Validate(folder.Path()), Unwritable());
}

TEST_F(PathValidationFaultsTest, LeavesOneHiddenFileForEachCheckWhenFilesCannotBeRemoved)
{
    InjectedFaults calls;
    calls.errorOfRemoving = EPERM;

    Validate(folder.Path());
    Validate(folder.Path());

    const QStringList entries = folder.Entries();
    ASSERT_EQ(entries.size(), 2);
    for (const QString& entry : entries) {
        EXPECT_TRUE(entry.startsWith(QLatin1String(".write-test-"))) << entry.toStdString();
        EXPECT_EQ(QFileInfo(folder.Path(entry)).size(), 1);
    }
}

/// Lets chattr make a folder append-only while it lives: files in it can be created but not removed.
class AppendOnly
{
public:
    explicit AppendOnly(const QString& folder) : path(folder) { done = Chattr("+a"); }
    ~AppendOnly() { Chattr("-a"); }
    AppendOnly(const AppendOnly&) = delete;
    AppendOnly& operator=(const AppendOnly&) = delete;

    bool IsDone() const { return done; }

private:
    bool Chattr(const char* flag) const
    {
        return QProcess::execute(QStringLiteral("chattr"), {QString::fromLatin1(flag), path}) == 0;
    }

    const QString path;
    bool done = false;
};

TEST_F(PathValidationFaultsTest, RefusesAnAppendOnlyFolderAndLeavesItsFileThere)
{
    {
        const AppendOnly appendOnly(folder.Path());
        if (!appendOnly.IsDone())
            GTEST_SKIP() << "chattr cannot make a folder append-only here";

        EXPECT_EQ(Validate(folder.Path()), Unwritable());
    }

    EXPECT_EQ(folder.Entries().size(), 1);
}

TEST_F(PathValidationFaultsTest, ReportsAFullDiskEvenWhenTheFileCannotBeRemoved)
{
    InjectedFaults calls;
    calls.errorOfWriting = ENOSPC;
    calls.errorOfRemoving = EPERM;

    EXPECT_EQ(Validate(folder.Path()), DiskFull());
}

TEST_F(PathValidationFaultsTest, RefusesAFolderThatOpensButCannotBeListed)
{
    InjectedFaults calls;
    calls.errorOfListing = EIO;

    EXPECT_EQ(Validate(folder.Path()), Unreadable());
    EXPECT_TRUE(calls.made.empty());
}

// Network file systems keep an open file that is removed under another name, and no longer report its errors.
TEST_F(PathValidationFaultsTest, RemovesTheFileAfterClosingIt)
{
    InjectedFaults calls;

    Validate(folder.Path());

    EXPECT_EQ(calls.removed.size(), 1U);
    EXPECT_FALSE(calls.removesOpenFile);
}

TEST_F(PathValidationFaultsTest, AcceptsAFolderThatListsNoEntriesAtAll)
{
    InjectedFaults calls;
    calls.listsNothing = true;
    errno = EIO;

    EXPECT_EQ(Validate(folder.Path()), Valid());
}

TEST_F(PathValidationFaultsTest, DoesNotLeakDescriptorsIntoStartedPrograms)
{
    InjectedFaults calls;

    Validate(folder.Path());

    EXPECT_EQ(calls.made.size(), 1U);
    EXPECT_FALSE(calls.leaksIntoPrograms);
}

TEST_F(PathValidationFaultsTest, RefusesAFolderWhenThereIsNoMemoryToListIt)
{
    InjectedFaults calls;
    calls.errorOfFdopendir = ENOMEM;

    EXPECT_EQ(Validate(folder.Path()), Unreadable());
    EXPECT_TRUE(calls.made.empty());
}

class PathValidationDescriptorTest : public PathValidationFaultsTest,
                                     public testing::WithParamInterface<int SystemCalls::*>
{
};

TEST_P(PathValidationDescriptorTest, ClosesItsDescriptors)
{
    InjectedFaults calls;
    calls.*GetParam() = EIO;
    const QStringList before = OpenDescriptors();

    Validate(folder.Path());

    EXPECT_EQ(OpenDescriptors(), before);
}

INSTANTIATE_TEST_SUITE_P(EveryFailure, PathValidationDescriptorTest,
                         testing::Values(&SystemCalls::errorOfNothing, &SystemCalls::errorOfFdopendir,
                                         &SystemCalls::errorOfListing, &SystemCalls::errorOfCreating,
                                         &SystemCalls::errorOfWriting, &SystemCalls::errorOfRemoving));

/// Runs a function with a disk mounted on a folder, which no other process can see.
///
/// @return why this is not possible here; empty if it was done
std::string RunWithDisk(const QString& path, unsigned long flags, const char* options,
                        const std::function<void()>& run)
{
    std::string refusal;
    // In a mount namespace of its own, a thread's mounts are private to it and end with it.
    std::thread([&] {
        const QByteArray name = QFile::encodeName(path);
        if (::unshare(CLONE_NEWNS) != 0)
            refusal = "cannot make a mount namespace";
        else if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            refusal = "cannot make mounts private";
        else if (::mount("tmpfs", name.constData(), "tmpfs", flags, options) != 0)
            refusal = "cannot mount a disk in memory";
        if (refusal.empty())
            run();
        else
            refusal += std::string(": ") + std::strerror(errno);
    }).join();
    return refusal;
}

TEST_F(PathValidationFaultsTest, RefusesAReadOnlyMount)
{
    const QString disk = folder.MakeFolder("disk");
    Validation validation;

    const std::string refusal = RunWithDisk(disk, MS_RDONLY, "", [&] { validation = Validate(disk); });

    if (!refusal.empty())
        GTEST_SKIP() << refusal;
    EXPECT_EQ(validation, Unwritable());
}

TEST_F(PathValidationFaultsTest, ReportsAFullDiskThatStillStoresEmptyFiles)
{
    const QString disk = folder.MakeFolder("disk");
    const QString filler = disk + QStringLiteral("/filler");
    Validation validation;
    QStringList entries;

    const std::string refusal = RunWithDisk(disk, 0, "size=64k", [&] {
        QFile file(filler);
        file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
        while (file.write(QByteArray(4096, 'x')) > 0) {
        }
        validation = Validate(disk);
        entries = folder.Entries("disk");
    });

    if (!refusal.empty())
        GTEST_SKIP() << refusal;
    EXPECT_EQ(validation, DiskFull());
    EXPECT_EQ(entries, QStringList(QStringLiteral("filler")));
}

TEST_F(PathValidationFaultsTest, ReportsAFullDiskThatStoresNoMoreFiles)
{
    const QString disk = folder.MakeFolder("disk");
    Validation validation;

    const std::string refusal = RunWithDisk(disk, 0, "nr_inodes=1", [&] { validation = Validate(disk); });

    if (!refusal.empty())
        GTEST_SKIP() << refusal;
    EXPECT_EQ(validation, DiskFull());
}

} // namespace
