#include "Util/PathValidation.h"

#include "Tests/Support/TempFolder.h"
#include "Tests/Support/Unprivileged.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTranslator>

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using Tests::TempFolder;
using Tests::Unprivileged;
using Zendra::Util::IsThisPathValid;

namespace {

/// What a test does to the system calls of the program; 0 is the number of no error.
struct SystemCalls
{
    /// Runs once, before the first file is made in a folder, and gets the name that it will have.
    std::function<void(const QString&)> beforeMaking;
    /// No call looks at it.
    int errorOfNothing = 0;
    int errorOfMaking = 0;
    int errorOfWriting = 0;
    int errorOfClosing = 0;
    int errorOfRemoving = 0;
    int errorOfListing = 0;
    bool listsNothing = false;
    int errorOfFdopendir = 0;

    std::vector<std::string> made;
    std::vector<unsigned int> modes;
    /// Whether a program that is started meanwhile would get a descriptor of the folder or of the file.
    bool leaksIntoPrograms = false;
    std::vector<std::string> removed;
    bool removesOpenFile = false;
    int bytesWritten = 0;
    /// The file made last, until it is closed.
    int file = -1;
};

/// Null when no test meddles.
SystemCalls* meddler = nullptr;

int Fail(int error)
{
    errno = error;
    return -1;
}

} // namespace

// The library's calls arrive here, since a program's symbols come before those of the C library.
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
    SystemCalls* const calls = meddler;
    if (!calls)
        return static_cast<int>(::syscall(SYS_openat, folder, name, flags, mode));

    calls->made.emplace_back(name);
    calls->modes.push_back(mode);
    if (!(flags & O_CLOEXEC))
        calls->leaksIntoPrograms = true;
    if (const auto prepare = std::exchange(calls->beforeMaking, nullptr)) {
        meddler = nullptr;
        prepare(QString::fromLatin1(name));
        meddler = calls;
    }
    if (calls->errorOfMaking != 0)
        return Fail(calls->errorOfMaking);
    calls->file = static_cast<int>(::syscall(SYS_openat, folder, name, flags, mode));
    return calls->file;
}

ssize_t write(int file, const void* bytes, size_t size)
{
    if (meddler && file == meddler->file) {
        if (meddler->errorOfWriting != 0)
            return Fail(meddler->errorOfWriting);
        meddler->bytesWritten += static_cast<int>(size);
    }
    return ::syscall(SYS_write, file, bytes, size);
}

int close(int file)
{
    const int result = static_cast<int>(::syscall(SYS_close, file));
    if (!meddler || file != meddler->file)
        return result;
    meddler->file = -1;
    return meddler->errorOfClosing != 0 ? Fail(meddler->errorOfClosing) : result;
}

int unlinkat(int folder, const char* name, int flags) noexcept
{
    if (meddler) {
        meddler->removed.emplace_back(name);
        meddler->removesOpenFile = meddler->file >= 0;
        if (meddler->errorOfRemoving != 0)
            return Fail(meddler->errorOfRemoving);
    }
    return static_cast<int>(::syscall(SYS_unlinkat, folder, name, flags));
}

struct dirent* readdir(DIR* folder)
{
    if (meddler && meddler->errorOfListing != 0) {
        errno = meddler->errorOfListing;
        return nullptr;
    }
    if (meddler && meddler->listsNothing)
        return nullptr;
    using Function = struct dirent* (*)(DIR*);
    static const auto original = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "readdir"));
    return original(folder);
}

DIR* fdopendir(int folder)
{
    if (meddler && meddler->errorOfFdopendir != 0) {
        errno = meddler->errorOfFdopendir;
        return nullptr;
    }
    if (meddler && !(::fcntl(folder, F_GETFD) & FD_CLOEXEC))
        meddler->leaksIntoPrograms = true;
    using Function = DIR* (*)(int);
    static const auto original = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "fdopendir"));
    return original(folder);
}

} // extern "C"

namespace {

/// System calls that are meddled with while it lives.
class Meddling : public SystemCalls
{
public:
    Meddling() { meddler = this; }
    ~Meddling() { meddler = nullptr; }
    Meddling(const Meddling&) = delete;
    Meddling& operator=(const Meddling&) = delete;
};

/// A language in which every text of the validation stands in brackets.
class Brackets : public QTranslator
{
public:
    bool isEmpty() const override { return false; }

    QString translate(const char* context, const char* text, const char*, int) const override
    {
        if (qstrcmp(context, "PathValidation") != 0)
            return QString();
        return QLatin1Char('[') + QString::fromLatin1(text) + QLatin1Char(']');
    }
};

/// What the validation said: the verdict and, for a refusal, the reason.
struct Said
{
    bool valid;
    QString reason;
};

bool operator==(const Said& left, const Said& right)
{
    return left.valid == right.valid && left.reason == right.reason;
}

std::ostream& operator<<(std::ostream& stream, const Said& said)
{
    return stream << (said.valid ? "valid, " : "invalid, ") << '"' << said.reason.toStdString() << '"';
}

const QString untouched = QStringLiteral("nobody wrote here");

Said Valid()
{
    return {true, untouched};
}

Said Invalid(const char* reason)
{
    return {false, QLatin1Char('[') + QString::fromLatin1(reason) + QLatin1Char(']')};
}

Said NothingGiven()
{
    return Invalid("No folder is given");
}

Said Missing()
{
    return Invalid("The folder does not exist");
}

Said NotAFolder()
{
    return Invalid("This is not a folder");
}

Said Unreadable()
{
    return Invalid("The folder cannot be read");
}

Said Unwritable()
{
    return Invalid("The folder cannot be written to");
}

Said DiskFull()
{
    return Invalid("The disk is full");
}

Said Validate(const QString& path)
{
    QString reason = untouched;
    const bool valid = IsThisPathValid(path, &reason);
    return {valid, reason};
}

/// The process's current folder while it lives.
class CurrentFolder
{
public:
    explicit CurrentFolder(const QString& path) : before(QDir::currentPath()) { QDir::setCurrent(path); }
    ~CurrentFolder() { QDir::setCurrent(before); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    const QString before;
};

/// The numbers of the descriptors that the process has open.
QStringList OpenDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoFilter | QDir::System, QDir::Name);
}

class PathValidationTest : public testing::Test
{
protected:
    PathValidationTest() { QCoreApplication::installTranslator(&brackets); }
    ~PathValidationTest() override { QCoreApplication::removeTranslator(&brackets); }

    /// Gives something in the folder to the user that Unprivileged becomes, with this mode, and lets that
    /// user reach it.
    void GiveAway(const QString& relativePath, unsigned int mode) const
    {
        folder.SetPermissions(QStringLiteral("."), 0755);
        const QByteArray name = QFile::encodeName(folder.Path(relativePath));
        if (::geteuid() == 0) {
            ASSERT_EQ(::chown(name.constData(), Unprivileged::userId, Unprivileged::userId), 0);
        }
        folder.SetPermissions(relativePath, mode);
    }

    QByteArray ContentOf(const QString& relativePath) const
    {
        QFile file(folder.Path(relativePath));
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

    const TempFolder folder;

private:
    Brackets brackets;
};

TEST_F(PathValidationTest, AcceptsAFolderThatCanBeListedAndWrittenTo)
{
    EXPECT_EQ(Validate(folder.Path()), Valid());
}

TEST_F(PathValidationTest, AcceptsAFolderWithSlashesAtTheEnd)
{
    EXPECT_EQ(Validate(folder.Path() + QStringLiteral("//")), Valid());
}

TEST_F(PathValidationTest, AcceptsAFolderThatIsNotEmpty)
{
    folder.Write(QStringLiteral("a.mp4"));
    folder.MakeFolder(QStringLiteral("b"));

    EXPECT_EQ(Validate(folder.Path()), Valid());
}

TEST_F(PathValidationTest, AcceptsALinkToAFolder)
{
    folder.MakeFolder(QStringLiteral("target"));
    const QString link = folder.Link(QStringLiteral("target"), QStringLiteral("link"));

    EXPECT_EQ(Validate(link), Valid());
}

TEST_F(PathValidationTest, AcceptsAPathThatIsRelativeToTheCurrentFolder)
{
    folder.MakeFolder(QStringLiteral("recordings"));
    const CurrentFolder current(folder.Path());

    EXPECT_EQ(Validate(QStringLiteral("recordings")), Valid());
    EXPECT_EQ(Validate(QStringLiteral(".")), Valid());
}

TEST_F(PathValidationTest, KnowsTheRootFolderAsAFolder)
{
    const Unprivileged user;

    EXPECT_EQ(Validate(QStringLiteral("/")), Unwritable());
}

TEST_F(PathValidationTest, AcceptsAFolderWithAnOddName)
{
    const QString odd = folder.MakeFolder(QString::fromUtf8(" a\n<b>&amp;\"%1 ä a\u0308 🫏"));

    EXPECT_EQ(Validate(odd), Valid());
}

TEST_F(PathValidationTest, TakesAPathThatBeginsWithAColonForAnOrdinaryName)
{
    folder.MakeFolder(QStringLiteral("./:/recordings"));
    ASSERT_FALSE(QDir(QStringLiteral(":/recordings")).exists());
    const CurrentFolder current(folder.Path());

    EXPECT_EQ(Validate(QStringLiteral(":/recordings")), Valid());
}

TEST_F(PathValidationTest, DoesNotTakeAResourceForAFolder)
{
    const QString resource = QStringLiteral(":/qt-project.org");
    ASSERT_TRUE(QDir(resource).exists());

    EXPECT_EQ(Validate(resource), Missing());
    EXPECT_EQ(Validate(QStringLiteral(":")), Missing());
}

TEST_F(PathValidationTest, KnowsNoSearchPaths)
{
    folder.MakeFolder(QStringLiteral("sub"));
    QDir::setSearchPaths(QStringLiteral("recordings"), {folder.Path()});
    ASSERT_TRUE(QDir(QStringLiteral("recordings:sub")).exists());

    const Said said = Validate(QStringLiteral("recordings:sub"));

    QDir::setSearchPaths(QStringLiteral("recordings"), {});
    EXPECT_EQ(said, Missing());
}

TEST_F(PathValidationTest, RefusesAnEmptyPath)
{
    EXPECT_EQ(Validate(QStringLiteral("")), NothingGiven());
}

TEST_F(PathValidationTest, RefusesANullPath)
{
    EXPECT_EQ(Validate(QString()), NothingGiven());
}

TEST_F(PathValidationTest, RefusesAMissingFolder)
{
    EXPECT_EQ(Validate(folder.Path(QStringLiteral("missing"))), Missing());
}

TEST_F(PathValidationTest, RefusesADanglingLinkAsMissing)
{
    const QString link = folder.Link(QStringLiteral("missing"), QStringLiteral("link"));

    EXPECT_EQ(Validate(link), Missing());
}

TEST_F(PathValidationTest, RefusesALoopOfLinksAsMissing)
{
    folder.Link(QStringLiteral("one"), QStringLiteral("other"));
    const QString link = folder.Link(QStringLiteral("other"), QStringLiteral("one"));

    EXPECT_EQ(Validate(link), Missing());
}

TEST_F(PathValidationTest, RefusesATooLongNameAsMissing)
{
    EXPECT_EQ(Validate(folder.Path(QString(300, QLatin1Char('a')))), Missing());
}

TEST_F(PathValidationTest, RefusesATooLongPathAsMissing)
{
    EXPECT_EQ(Validate(folder.Path() + QStringLiteral("/.").repeated(5000)), Missing());
}

TEST_F(PathValidationTest, RefusesAPathUnderAFileAsMissing)
{
    const QString file = folder.Write(QStringLiteral("file"));

    EXPECT_EQ(Validate(file + QStringLiteral("/sub")), Missing());
}

TEST_F(PathValidationTest, RefusesALinkToAPathUnderAFileAsMissing)
{
    folder.Write(QStringLiteral("file"));
    const QString link = folder.Link(QStringLiteral("file/sub"), QStringLiteral("link"));

    EXPECT_EQ(Validate(link), Missing());
}

TEST_F(PathValidationTest, DoesNotReadAPathWithANullCharacterOnlyUpToThere)
{
    EXPECT_EQ(Validate(folder.Path() + QChar(QChar::Null) + QStringLiteral("more")), Missing());
}

TEST_F(PathValidationTest, RefusesAFile)
{
    const QString file = folder.Write(QStringLiteral("file"));

    EXPECT_EQ(Validate(file), NotAFolder());
}

TEST_F(PathValidationTest, RefusesAFileWithASlashAtTheEndAsAFile)
{
    const QString file = folder.Write(QStringLiteral("file"));

    EXPECT_EQ(Validate(file + QStringLiteral("//")), NotAFolder());
}

TEST_F(PathValidationTest, RefusesALinkToAFile)
{
    folder.Write(QStringLiteral("file"));
    const QString link = folder.Link(QStringLiteral("file"), QStringLiteral("link"));

    EXPECT_EQ(Validate(link), NotAFolder());
}

TEST_F(PathValidationTest, RefusesAPipeWithoutWaitingForItsOtherEnd)
{
    const QString pipe = folder.Path(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);

    EXPECT_EQ(Validate(pipe), NotAFolder());
}

TEST_F(PathValidationTest, RefusesAFolderThatTakesNoFilesWhateverItsPermissionsSay)
{
    EXPECT_EQ(Validate(QStringLiteral("/proc")), Unwritable());
}

struct ModeAndVerdict
{
    unsigned int mode;
    Said expected;
    const char* name;
};

class PathValidationModeTest : public PathValidationTest, public testing::WithParamInterface<ModeAndVerdict>
{
};

TEST_P(PathValidationModeTest, TriesWhatAnOrdinaryUserMayDo)
{
    const QString tried = folder.MakeFolder(QStringLiteral("tried"));
    GiveAway(QStringLiteral("tried"), GetParam().mode);
    Said said;
    {
        const Unprivileged user;

        said = Validate(tried);
    }

    EXPECT_EQ(said, GetParam().expected);
    EXPECT_TRUE(folder.Entries(QStringLiteral("tried")).isEmpty());
}

INSTANTIATE_TEST_SUITE_P(EveryMode, PathValidationModeTest,
                         testing::Values(ModeAndVerdict{0700, Valid(), "All"},
                                         ModeAndVerdict{0600, Unwritable(), "NoEntering"},
                                         ModeAndVerdict{0500, Unwritable(), "NoWriting"},
                                         ModeAndVerdict{0400, Unwritable(), "ReadingOnly"},
                                         ModeAndVerdict{0300, Unreadable(), "NoReading"},
                                         ModeAndVerdict{0000, Unreadable(), "Nothing"}),
                         [](const testing::TestParamInfo<ModeAndVerdict>& row) {
                             return std::string(row.param.name);
                         });

TEST_F(PathValidationTest, RefusesAFolderInsideOneThatMayNotBeEnteredAsUnreadable)
{
    const QString inner = folder.MakeFolder(QStringLiteral("closed/inner"));
    GiveAway(QStringLiteral("closed"), 0600);
    Said said;
    {
        const Unprivileged user;

        said = Validate(inner);
    }

    folder.SetPermissions(QStringLiteral("closed"), 0700);
    EXPECT_EQ(said, Unreadable());
}

TEST_F(PathValidationTest, NeedsNoPlaceForTheReason)
{
    EXPECT_TRUE(IsThisPathValid(folder.Path(), nullptr));
    EXPECT_FALSE(IsThisPathValid(QString(), nullptr));
}

TEST_F(PathValidationTest, LeavesNothingBehind)
{
    Validate(folder.Path());

    EXPECT_TRUE(folder.Entries().isEmpty());
}

TEST_F(PathValidationTest, TriesWithOneHiddenFileThatNobodyElseMayRead)
{
    Meddling calls;

    Validate(folder.Path());

    ASSERT_EQ(calls.made.size(), 1U);
    EXPECT_EQ(calls.made.front().front(), '.');
    EXPECT_EQ(calls.modes.front(), 0600U);
    EXPECT_GT(calls.bytesWritten, 0);
    EXPECT_EQ(calls.removed, calls.made);
}

TEST_F(PathValidationTest, NamesTheHiddenFileDifferentlyEachTime)
{
    Meddling calls;

    Validate(folder.Path());
    Validate(folder.Path());

    ASSERT_EQ(calls.made.size(), 2U);
    EXPECT_NE(calls.made.front(), calls.made.back());
}

TEST_F(PathValidationTest, TriesAnotherNameWhenAFileHasTheOneItChose)
{
    QString existing;
    Meddling calls;
    calls.beforeMaking = [&](const QString& name) {
        existing = name;
        folder.Write(name, "precious");
    };

    const Said said = Validate(folder.Path());

    EXPECT_EQ(said, Valid());
    EXPECT_EQ(calls.made.size(), 2U);
    EXPECT_EQ(folder.Entries(), QStringList(existing));
    EXPECT_EQ(ContentOf(existing), QByteArray("precious"));
}

TEST_F(PathValidationTest, DoesNotFollowALinkThatHasTheNameItChose)
{
    Meddling calls;
    calls.beforeMaking = [&](const QString& name) { folder.Link(QStringLiteral("elsewhere"), name); };

    const Said said = Validate(folder.Path());

    EXPECT_EQ(said, Valid());
    EXPECT_EQ(folder.Entries().size(), 1);
    EXPECT_FALSE(QFile::exists(folder.Path(QStringLiteral("elsewhere"))));
}

TEST_F(PathValidationTest, GivesUpWhenEveryNameItChoosesIsTaken)
{
    Meddling calls;
    calls.errorOfMaking = EEXIST;

    EXPECT_EQ(Validate(folder.Path()), Unwritable());
    EXPECT_GT(calls.made.size(), 1U);
    EXPECT_TRUE(calls.removed.empty());
}

struct ErrorAndVerdict
{
    int error;
    Said expected;
    const char* name;
};

std::string NameOf(const testing::TestParamInfo<ErrorAndVerdict>& row)
{
    return row.param.name;
}

/// What the system says when something cannot be written.
const auto writingErrors = testing::Values(
    ErrorAndVerdict{ENOSPC, DiskFull(), "NoSpace"}, ErrorAndVerdict{EDQUOT, DiskFull(), "QuotaUsedUp"},
    ErrorAndVerdict{EROFS, Unwritable(), "ReadOnly"}, ErrorAndVerdict{EPERM, Unwritable(), "NotPermitted"},
    ErrorAndVerdict{ENOENT, Unwritable(), "NoSuchThing"}, ErrorAndVerdict{EIO, Unwritable(), "BrokenDisk"});

class PathValidationWritingTest : public PathValidationTest,
                                  public testing::WithParamInterface<ErrorAndVerdict>
{
};

TEST_P(PathValidationWritingTest, TellsWhyTheFileCannotBeMade)
{
    Meddling calls;
    calls.errorOfMaking = GetParam().error;

    EXPECT_EQ(Validate(folder.Path()), GetParam().expected);
    EXPECT_EQ(calls.made.size(), 1U);
}

TEST_P(PathValidationWritingTest, TellsWhyTheFileCannotBeWrittenAndRemovesIt)
{
    Meddling calls;
    calls.errorOfWriting = GetParam().error;

    EXPECT_EQ(Validate(folder.Path()), GetParam().expected);
    EXPECT_TRUE(folder.Entries().isEmpty());
}

TEST_P(PathValidationWritingTest, TellsWhyTheFileCannotBeWrittenThoughTheSystemOnlySaysSoWhenItIsClosed)
{
    Meddling calls;
    calls.errorOfClosing = GetParam().error;

    EXPECT_EQ(Validate(folder.Path()), GetParam().expected);
    EXPECT_TRUE(folder.Entries().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(EveryError, PathValidationWritingTest, writingErrors, NameOf);

TEST_F(PathValidationTest, TellsWhyWritingFailedAndNotWhyClosingDidAfterwards)
{
    Meddling calls;
    calls.errorOfWriting = ENOSPC;
    calls.errorOfClosing = EIO;

    EXPECT_EQ(Validate(folder.Path()), DiskFull());
}

TEST_F(PathValidationTest, RefusesAFolderFromWhichFilesCannotBeRemoved)
{
    Meddling calls;
    calls.errorOfRemoving = EPERM;

    EXPECT_EQ(Validate(folder.Path()), Unwritable());
}

TEST_F(PathValidationTest, LeavesOneHiddenFileForEveryCheckOfAFolderFromWhichFilesCannotBeRemoved)
{
    Meddling calls;
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

/// A folder in which files can be made and not removed, while it lives; made so by chattr.
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

TEST_F(PathValidationTest, RefusesAnAppendOnlyFolderAndLeavesItsFileThere)
{
    {
        const AppendOnly appendOnly(folder.Path());
        if (!appendOnly.IsDone())
            GTEST_SKIP() << "chattr cannot make a folder append-only here";

        EXPECT_EQ(Validate(folder.Path()), Unwritable());
    }

    EXPECT_EQ(folder.Entries().size(), 1);
}

TEST_F(PathValidationTest, TellsOfAFullDiskEvenWhenTheFileCannotBeRemoved)
{
    Meddling calls;
    calls.errorOfWriting = ENOSPC;
    calls.errorOfRemoving = EPERM;

    EXPECT_EQ(Validate(folder.Path()), DiskFull());
}

TEST_F(PathValidationTest, RefusesAFolderThatOpensButCannotBeListed)
{
    Meddling calls;
    calls.errorOfListing = EIO;

    EXPECT_EQ(Validate(folder.Path()), Unreadable());
    EXPECT_TRUE(calls.made.empty());
}

// Network file systems keep an open file that is removed, under another name, and don't tell of errors any
// more.
TEST_F(PathValidationTest, RemovesTheFileOnceItIsClosed)
{
    Meddling calls;

    Validate(folder.Path());

    EXPECT_EQ(calls.removed.size(), 1U);
    EXPECT_FALSE(calls.removesOpenFile);
}

TEST_F(PathValidationTest, AcceptsAFolderThatListsNotEvenItself)
{
    Meddling calls;
    calls.listsNothing = true;
    errno = EIO;

    EXPECT_EQ(Validate(folder.Path()), Valid());
}

TEST_F(PathValidationTest, KeepsWhatItOpensFromProgramsThatAreStartedMeanwhile)
{
    Meddling calls;

    Validate(folder.Path());

    EXPECT_EQ(calls.made.size(), 1U);
    EXPECT_FALSE(calls.leaksIntoPrograms);
}

TEST_F(PathValidationTest, RefusesAFolderThatOpensButTakesTooMuchMemoryToList)
{
    Meddling calls;
    calls.errorOfFdopendir = ENOMEM;

    EXPECT_EQ(Validate(folder.Path()), Unreadable());
    EXPECT_TRUE(calls.made.empty());
}

class PathValidationDescriptorTest : public PathValidationTest,
                                     public testing::WithParamInterface<int SystemCalls::*>
{
};

TEST_P(PathValidationDescriptorTest, ClosesWhatItOpened)
{
    Meddling calls;
    calls.*GetParam() = EIO;
    const QStringList before = OpenDescriptors();

    Validate(folder.Path());

    EXPECT_EQ(OpenDescriptors(), before);
}

INSTANTIATE_TEST_SUITE_P(WhateverFails, PathValidationDescriptorTest,
                         testing::Values(&SystemCalls::errorOfNothing, &SystemCalls::errorOfFdopendir,
                                         &SystemCalls::errorOfListing, &SystemCalls::errorOfMaking,
                                         &SystemCalls::errorOfWriting, &SystemCalls::errorOfRemoving));

/// Runs with a disk of its own mounted on a folder, which nobody else on the machine can see.
///
/// @return why that cannot be done here; empty when it was done
std::string OnADiskOfItsOwn(const QString& path, unsigned long flags, const char* options,
                            const std::function<void()>& run)
{
    std::string refusal;
    // What a thread mounts after it has left the others stays with it, and goes when it ends.
    std::thread([&] {
        const QByteArray name = QFile::encodeName(path);
        if (::unshare(CLONE_NEWNS) != 0)
            refusal = "cannot leave the machine's mounts";
        else if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            refusal = "cannot keep mounts private";
        else if (::mount("tmpfs", name.constData(), "tmpfs", flags, options) != 0)
            refusal = "cannot mount a disk in memory";
        if (refusal.empty())
            run();
        else
            refusal += std::string(": ") + std::strerror(errno);
    }).join();
    return refusal;
}

TEST_F(PathValidationTest, RefusesAReadOnlyMount)
{
    const QString disk = folder.MakeFolder(QStringLiteral("disk"));
    Said said;

    const std::string refusal = OnADiskOfItsOwn(disk, MS_RDONLY, "", [&] { said = Validate(disk); });

    if (!refusal.empty())
        GTEST_SKIP() << refusal;
    EXPECT_EQ(said, Unwritable());
}

TEST_F(PathValidationTest, TellsAFullDiskThatStillTakesEmptyFiles)
{
    const QString disk = folder.MakeFolder(QStringLiteral("disk"));
    const QString filler = disk + QStringLiteral("/filler");
    Said said;
    QStringList entries;

    const std::string refusal = OnADiskOfItsOwn(disk, 0, "size=64k", [&] {
        QFile file(filler);
        file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
        while (file.write(QByteArray(4096, 'x')) > 0) {
        }
        said = Validate(disk);
        entries = folder.Entries(QStringLiteral("disk"));
    });

    if (!refusal.empty())
        GTEST_SKIP() << refusal;
    EXPECT_EQ(said, DiskFull());
    EXPECT_EQ(entries, QStringList(QStringLiteral("filler")));
}

TEST_F(PathValidationTest, TellsAFullDiskThatTakesNoMoreFiles)
{
    const QString disk = folder.MakeFolder(QStringLiteral("disk"));
    Said said;

    const std::string refusal = OnADiskOfItsOwn(disk, 0, "nr_inodes=1", [&] { said = Validate(disk); });

    if (!refusal.empty())
        GTEST_SKIP() << refusal;
    EXPECT_EQ(said, DiskFull());
}

} // namespace
