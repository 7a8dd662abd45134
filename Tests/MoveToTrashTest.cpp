#include "Tests/Support/ByteFolder.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <vector>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

// What comes into the trash is looked at, and taken out again, by programs that were not written here.

using namespace std::string_literals;
using testing::HasSubstr;

namespace {

const QString asStranger = QStringLiteral("--as-stranger");
const QString unableToWrite = QStringLiteral("--unable-to-write");
const QString loseNote = QStringLiteral("--lose-note");
const QString replaceAtOnce = QStringLiteral("--replace-at-once");
const QString renamedInTrash = QStringLiteral("--rename-in-trash=renamed");
const QString fewLooks = QStringLiteral("--few-looks");
const QString noListing = QStringLiteral("--no-listing");

struct Outcome
{
    int exitCode = -1;
    std::string output;
    std::string errors;
};

bool IsThere(const std::string& path)
{
    return std::filesystem::exists(std::filesystem::symlink_status(path));
}

ino_t NumberOf(const std::string& path)
{
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0)
        throw std::runtime_error("nothing at " + path);
    return status.st_ino;
}

QString FindProgram(const char* name)
{
    const QString program = QString::fromLatin1(name);
    const QString found = QStandardPaths::findExecutable(program);
    const QStringList onlyForRoot = {QStringLiteral("/usr/sbin"), QStringLiteral("/sbin")};
    return found.isEmpty() ? QStandardPaths::findExecutable(program, onlyForRoot) : found;
}

bool IsOnDiskWithoutTrash(const QString& path)
{
    return QStorageInfo(path).fileSystemType() == "tmpfs";
}

/// A user's home with no trash in it yet, and a folder beside it to trash things from.
class MoveToTrashTest : public testing::Test, protected Tests::ByteFolder
{
protected:
    static void SetUpTestSuite()
    {
        // Temporary folders often lie in memory, and nothing in memory is ever trashed.
        if (IsOnDiskWithoutTrash(QDir::tempPath()))
            qputenv("TMPDIR", "/var/tmp");
    }

    void SetUp() override
    {
        if (IsOnDiskWithoutTrash(QString::fromStdString(Path())))
            GTEST_SKIP() << "both the temporary folder and /var/tmp lie in memory";
        if (FindProgram("trash-list").isEmpty() || FindProgram("trash-restore").isEmpty())
            GTEST_SKIP() << "trash-list and trash-restore are not installed (trash-cli)";
        MakeFolder("home", 0777);
        MakeFolder("work", 0777);
    }

    Outcome Run(const QString& program, const QStringList& arguments, const QByteArray& input = {}) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), QString::fromStdString(Path("home")));
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        if (dataHome.isNull())
            environment.remove(QStringLiteral("XDG_DATA_HOME"));
        else
            environment.insert(QStringLiteral("XDG_DATA_HOME"), dataHome);

        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(QString::fromStdString(Path("work")));
        process.start(program, arguments);
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
            throw std::runtime_error("did not end well: " + program.toStdString());
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }

    bool Trash(const std::string& path, const QStringList& options = {}) const
    {
        const QByteArray encoded = QByteArray::fromStdString(path).toPercentEncoding();
        const Outcome outcome =
            Run(QStringLiteral(TRASH_TOOL), options + QStringList(QString::fromLatin1(encoded)));
        EXPECT_THAT(outcome.exitCode, testing::AnyOf(EXIT_SUCCESS, EXIT_FAILURE)) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        return outcome.exitCode == EXIT_SUCCESS;
    }

    /// What trash-list says: a line with date and original path for each entry.
    std::string TrashList() const
    {
        const Outcome outcome = Run(FindProgram("trash-list"), {});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.errors, "");
        return outcome.output;
    }

    /// The original path of the only entry.
    std::string TheOneInTheTrash() const
    {
        const size_t dateLength = "2000-12-31 23:59:59 "s.size();
        const std::string list = TrashList();
        if (list.size() < dateLength)
            return "nothing in " + list;
        return list.substr(dateLength, list.size() - dateLength - 1);
    }

    /// Lets trash-restore bring back the entry with this number.
    void Restore(int index = 0) const
    {
        const QStringList everywhere(QStringLiteral("/"));
        const Outcome outcome =
            Run(FindProgram("trash-restore"), everywhere, QByteArray::number(index) + '\n');
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.errors, "");
    }

    /// Every file with its content and every link with its target, also in the home and in its trash.
    std::map<std::string, std::string> Files() const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(Path())) {
            std::string& content = files[entry.path().string()];
            if (entry.is_symlink())
                content = "link to " + std::filesystem::read_symlink(entry).string();
            else if (entry.is_regular_file())
                content.assign(std::istreambuf_iterator<char>(std::ifstream(entry.path()).rdbuf()), {});
            else
                files.erase(entry.path().string());
        }
        return files;
    }

    /// Trashes an entry, given by any path that leads to it, and lets trash-cli find and restore it.
    void ExpectTrashedAndRestored(const std::string& path, const std::string& entry) const
    {
        const auto before = Files();

        EXPECT_TRUE(Trash(path)) << path;

        EXPECT_FALSE(IsThere(entry)) << path;
        EXPECT_EQ(TheOneInTheTrash(), entry);
        EXPECT_NE(Files(), before);
        Restore();
        EXPECT_EQ(Files(), before);
        EXPECT_EQ(TrashList(), "");
    }

    void ExpectTrashedAndRestored(const std::string& entry) const { ExpectTrashedAndRestored(entry, entry); }

    void ExpectRefused(const std::string& path, const QStringList& options = {}) const
    {
        const auto before = Files();

        EXPECT_FALSE(Trash(path, options)) << path;

        EXPECT_EQ(Files(), before) << path;
    }

    /// Another hard link to a file, straight in the folder "files" of the trash. Without an info nobody could
    /// restore it.
    std::string HardLinkIntoTrash(const std::string& file, const std::string& name) const
    {
        MakeFolder("home/data/Trash/files");
        MakeFolder("home/data/Trash/info");
        const std::string link = Path("home/data/Trash/files/" + name);
        std::filesystem::create_hard_link(file, link);
        return link;
    }

    /// Takes the names that come after this one in the trash.
    void TakeNamesInTrashAfter(const std::string& name) const
    {
        for (int i = 2; i <= 300; ++i)
            Write("home/data/Trash/info/" + name + "." + std::to_string(i) + ".trashinfo", "");
    }

    /// What has been in the trash for long: files with their infos.
    void FillTrash(int count) const
    {
        for (int i = 0; i < count; ++i) {
            const std::string name = "old " + std::to_string(i);
            Write("home/data/Trash/files/" + name);
            Write("home/data/Trash/info/" + name + ".trashinfo",
                  "[Trash Info]\nPath=" + Path(name) + "\nDeletionDate=2020-01-01T00:00:00\n");
        }
    }

    QString dataHome = QString::fromStdString(Path("home/data"));
};

// What is trashed

class MoveToTrashNameTest : public MoveToTrashTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(MoveToTrashNameTest, BringsAFileWhereItCanBeRestoredFrom)
{
    ExpectTrashedAndRestored(Write("work/"s + GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Names, MoveToTrashNameTest,
                         testing::Values("recording.mov", "no_suffix", ".hidden", "two words", " ", "100%",
                                         "%41", "a#b?c=d", "line\nbreak", "tab\t", "back\\slash",
                                         "\"quoted\" & <b>'it'", "*", "-rf", "a=b;[c]", "\xC3\xBC",
                                         "u\xCC\x88", "\xF0\x9F\xAB\x8F", "x.trashinfo"));

// trash-cli reads every note as UTF-8, so the bytes are looked for where they are kept.
TEST_F(MoveToTrashTest, KeepsANameThatIsNotUtf8)
{
    const std::string file = Write("work/latin \xFC");

    EXPECT_TRUE(Trash(file));

    EXPECT_FALSE(IsThere(file));
    const auto files = Files();
    EXPECT_EQ(files.at(Path("home/data/Trash/files/latin \xFC")), "content");
    EXPECT_THAT(
        files.at(Path("home/data/Trash/info/latin \xFC.trashinfo")),
        HasSubstr("\nPath=" + QByteArray::fromStdString(file).toPercentEncoding("/").toStdString() + "\n"));
}

TEST_F(MoveToTrashTest, TrashesAFileOfTheLongestNameThatCanBeRestored)
{
    ExpectTrashedAndRestored(Write("work/" + std::string(238, 'x')));
}

TEST_F(MoveToTrashTest, TrashesAnEmptyFile)
{
    ExpectTrashedAndRestored(Write("work/empty", ""));
}

TEST_F(MoveToTrashTest, TrashesAFolderWithAllThatIsInIt)
{
    Write("work/folder/file", "one");
    Write("work/folder/below/file", "two");
    Link("nowhere", "work/folder/below/dangling");

    ExpectTrashedAndRestored(Path("work/folder"));
}

TEST_F(MoveToTrashTest, TrashesAnEmptyFolder)
{
    const std::string empty = MakeFolder("work/empty");

    EXPECT_TRUE(Trash(empty));

    EXPECT_FALSE(IsThere(empty));
    EXPECT_EQ(TheOneInTheTrash(), empty);
    Restore();
    EXPECT_TRUE(std::filesystem::is_directory(empty));
}

TEST_F(MoveToTrashTest, TrashesALinkAndNeverItsTarget)
{
    const std::string file = Write("work/file");
    Write("work/folder/file");

    for (const std::string& link :
         {Link("file", "work/toFile"), Link("folder", "work/toFolder"), Link(file, "work/absolute")}) {
        ExpectTrashedAndRestored(link);
        EXPECT_TRUE(Trash(link));
        EXPECT_TRUE(IsThere(file));
        EXPECT_TRUE(IsThere(Path("work/folder/file")));
        Restore();
    }
}

TEST_F(MoveToTrashTest, TrashesALinkThatLeadsNowhere)
{
    ExpectTrashedAndRestored(Link("missing", "work/dangling"));
    ExpectTrashedAndRestored(Link("loop", "work/loop"));
}

TEST_F(MoveToTrashTest, TrashesTheLinkAlsoWithASlashBehindIt)
{
    Write("work/folder/file");

    ExpectTrashedAndRestored(Link("folder", "work/link") + "/", Path("work/link"));
}

TEST_F(MoveToTrashTest, KeepsFilesOfOneNameApart)
{
    const std::string one = Write("work/one/same", "one");
    const std::string two = Write("work/two/same", "two");
    const auto before = Files();

    EXPECT_TRUE(Trash(one));
    EXPECT_TRUE(Trash(two));

    EXPECT_THAT(TrashList(), HasSubstr(" " + one + "\n"));
    EXPECT_THAT(TrashList(), HasSubstr(" " + two + "\n"));
    Restore();
    Restore();
    EXPECT_EQ(Files(), before);
}

TEST_F(MoveToTrashTest, TrashesWhatTheUserMayNotReadButMove)
{
    const std::string file = Write("work/file");
    SetMode("work/file", 0);

    EXPECT_TRUE(Trash(file, {asStranger}));

    EXPECT_FALSE(IsThere(file));
    EXPECT_TRUE(IsThere(Path("home/data/Trash/files/file")));
    EXPECT_TRUE(IsThere(Path("home/data/Trash/info/file.trashinfo")));
}

// How it is named

TEST_F(MoveToTrashTest, TakesAPathFromTheCurrentFolder)
{
    const std::string file = Write("work/file");
    Write("work/sub/file");
    const std::string beside = Write("beside");

    ExpectTrashedAndRestored("file", file);
    ExpectTrashedAndRestored("./file", file);
    ExpectTrashedAndRestored("sub//file", Path("work/sub/file"));
    ExpectTrashedAndRestored("../beside", beside);
    ExpectTrashedAndRestored("sub/../file", file);
}

TEST_F(MoveToTrashTest, TakesAFolderWithSlashesAndDotsBehindIt)
{
    Write("work/folder/file");
    MakeFolder("work/folder/below");

    for (const char* path : {"folder/", "folder//", "folder/.", "folder/./", "folder/below/.."})
        ExpectTrashedAndRestored(path, Path("work/folder"));
}

TEST_F(MoveToTrashTest, FollowsLinksInTheFoldersAboveAsTheSystemDoes)
{
    Write("file", "another one");
    Write("work/file", "another one");
    Write("elsewhere/file", "this one");
    MakeFolder("elsewhere/below");
    Link(Path("elsewhere/below"), "work/link");

    ExpectTrashedAndRestored("link/../file", Path("elsewhere/file"));
    ExpectTrashedAndRestored(Path("work/link/../file"), Path("elsewhere/file"));
    ExpectTrashedAndRestored("link/..", Path("elsewhere"));
}

TEST_F(MoveToTrashTest, RefusesAPathThatNamesNothing)
{
    Write("work/file");
    Link("file", "work/toFile");
    Link("missing", "work/dangling");
    Link("loop", "work/loop");

    for (const std::string& path :
         {""s, "missing"s, "missing/file"s, "missing/../file"s, "file/"s, "file/."s, "file/x"s, "toFile/"s,
          "dangling/"s, "dangling/x"s, "loop/"s, "loop/x"s, std::string(256, 'x'), std::string(20000, 'x')})
        ExpectRefused(path);
    EXPECT_FALSE(IsThere(Path("home/data")));
}

TEST_F(MoveToTrashTest, SparesAFileWhoseNameGoesOnAfterANullCharacter)
{
    const std::string file = Write("work/file");

    ExpectRefused(file + "\0"s);
    ExpectRefused(file + "\0.tmp"s);
}

TEST_F(MoveToTrashTest, RefusesTheRootFolder)
{
    ExpectRefused("/");
}

TEST_F(MoveToTrashTest, RefusesAFolderThatTheTrashIsIn)
{
    ExpectRefused(Path("home"));
}

// Where the trash is

TEST_F(MoveToTrashTest, MakesTheTrashInADataHomeThatIsNotThereYet)
{
    dataHome = QString::fromStdString(Path("home/not/there/yet"));

    ExpectTrashedAndRestored(Write("work/file"));

    EXPECT_TRUE(IsThere(Path("home/not/there/yet/Trash/files")));
}

TEST_F(MoveToTrashTest, TakesTheHomeFoldersTrashWithoutADataHome)
{
    dataHome = QString();

    ExpectTrashedAndRestored(Write("work/file"));

    EXPECT_TRUE(IsThere(Path("home/.local/share/Trash/files")));
}

TEST_F(MoveToTrashTest, RefusesADataHomeThatIsNoAbsolutePath)
{
    dataHome = QStringLiteral("data");

    ExpectRefused(Write("work/file"));

    EXPECT_FALSE(IsThere(Path("work/data")));
}

TEST_F(MoveToTrashTest, RefusesADataHomeOnAnotherDisk)
{
    const QTemporaryDir inMemory(QStringLiteral("/dev/shm/MoveToTrashTest-XXXXXX"));
    if (!inMemory.isValid())
        GTEST_SKIP() << "no other disk: " << inMemory.errorString().toStdString();
    dataHome = inMemory.path();

    ExpectRefused(Write("work/file"));

    const std::filesystem::path files = inMemory.filePath(QStringLiteral("Trash/files")).toStdString();
    EXPECT_TRUE(!IsThere(files) || std::filesystem::is_empty(files));
}

TEST_F(MoveToTrashTest, RefusesAFileInMemory)
{
    const QTemporaryDir inMemory(QStringLiteral("/dev/shm/MoveToTrashTest-XXXXXX"));
    if (!inMemory.isValid() || !IsOnDiskWithoutTrash(inMemory.path()))
        GTEST_SKIP() << "no folder in memory: " << inMemory.errorString().toStdString();
    const std::string file = inMemory.filePath(QStringLiteral("file")).toStdString();
    std::ofstream(file) << "content";

    ExpectRefused(file);

    EXPECT_EQ(std::filesystem::file_size(file), "content"s.size());
    EXPECT_EQ(QDir(inMemory.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(),
              1);
}

// A trash that cannot take it

class MoveToTrashObstacleTest : public MoveToTrashTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(MoveToTrashObstacleTest, LeavesTheFileWhereAFileIsInTheWayOfTheTrash)
{
    Write("home/"s + GetParam());

    ExpectRefused(Write("work/file"));
}

TEST_P(MoveToTrashObstacleTest, LeavesTheFileWhereALinkThatLeadsNowhereIsInTheWayOfTheTrash)
{
    MakeFolder("home/data/Trash");
    std::filesystem::remove_all(Path("home/"s + GetParam()));
    Link("missing", "home/"s + GetParam());

    ExpectRefused(Write("work/file"));
}

TEST_P(MoveToTrashObstacleTest, LeavesTheFileWhereTheUserMayNotWriteToTheTrash)
{
    for (const char* name : {"home/data", "home/data/Trash", "home/data/Trash/info", "home/data/Trash/files"})
        MakeFolder(name, 0777);
    if (GetParam() == "data"s)
        std::filesystem::remove_all(Path("home/data/Trash"));
    if (GetParam() == "data/Trash"s)
        std::filesystem::remove(Path("home/data/Trash/info"));
    MakeFolder("home/"s + GetParam(), 0555);

    ExpectRefused(Write("work/file"), {asStranger});
}

INSTANTIATE_TEST_SUITE_P(Places, MoveToTrashObstacleTest,
                         testing::Values("data", "data/Trash", "data/Trash/info", "data/Trash/files"));

TEST_F(MoveToTrashTest, LeavesAFileThatTheUserMayNotMove)
{
    const std::string file = Write("work/guarded/file");
    SetMode("work/guarded/file", 0666);
    MakeFolder("work/guarded", 0555);

    ExpectRefused(file, {asStranger});
}

TEST_F(MoveToTrashTest, LeavesAFileThatTheUserMayNotEvenSee)
{
    const std::string file = Write("work/closed/file");
    MakeFolder("work/closed", 0666);

    ExpectRefused(file, {asStranger});
}

// The trash would keep these without a word about where they came from.

// There is no room for the note's suffix behind such a name: an older GIO moves the file without a note, a
// newer one shortens the name that the file has in the trash.
TEST_F(MoveToTrashTest, TrashesAFileWithALongNameOnlyWhereItCanBeRestoredFrom)
{
    for (const size_t length : {239U, 245U, 246U, 255U}) {
        const std::string file = Write("work/" + std::string(length, 'x'));
        const auto before = Files();

        if (Trash(file)) {
            EXPECT_FALSE(IsThere(file)) << length;
            EXPECT_EQ(TheOneInTheTrash(), file);
            Restore();
        }

        EXPECT_EQ(Files(), before) << length;
    }
    EXPECT_EQ(TrashList(), "");
}

TEST_F(MoveToTrashTest, LeavesAFileWhoseNoteIsLost)
{
    ExpectRefused(Write("work/file"), {loseNote});
    EXPECT_EQ(TrashList(), "");
}

TEST_F(MoveToTrashTest, LeavesWhatItCouldNotBeRestoredFromAFullDisk)
{
    Write("work/folder/file");
    MakeFolder("work/empty");

    for (const std::string& entry :
         {Write("work/file"), Path("work/folder"), Path("work/empty"), Link("file", "work/link"),
          Link("missing", "work/dangling"), Write("work/latin \xFC")}) {
        ExpectRefused(entry, {unableToWrite});
        EXPECT_TRUE(IsThere(entry)) << entry;
    }
    EXPECT_EQ(TrashList(), "");
}

TEST_F(MoveToTrashTest, LeavesAFileOnAFullDiskBesideOthersInTheTrash)
{
    const std::string first = Write("work/one/same", "first");
    const std::string second = Write("work/two/same", "second");
    EXPECT_TRUE(Trash(first));

    ExpectRefused(second, {unableToWrite});

    EXPECT_EQ(TheOneInTheTrash(), first);
}

TEST_F(MoveToTrashTest, MindsNoStrangersFileThatCannotBeRestored)
{
    const std::string orphan = Write("home/data/Trash/files/orphan", "orphan");
    MakeFolder("home/data/Trash/info");
    const std::string file = Write("work/file");

    EXPECT_TRUE(Trash(file));
    EXPECT_FALSE(IsThere(file));
    EXPECT_TRUE(IsThere(orphan));

    Restore();
    ExpectRefused(file, {unableToWrite});
}

TEST_F(MoveToTrashTest, LeavesAHardLinkOnAFullDiskWhoseTwinIsInTheTrash)
{
    const std::string twin = Write("work/twin");
    const std::string file = Path("work/file");
    std::filesystem::create_hard_link(twin, file);
    EXPECT_TRUE(Trash(twin));

    ExpectRefused(file, {unableToWrite});

    EXPECT_EQ(TheOneInTheTrash(), twin);
}

TEST_F(MoveToTrashTest, LeavesAHardLinkOnAFullDiskWhoseTwinOfTheSameNameIsInTheTrash)
{
    const std::string twin = Write("work/one/same");
    const std::string file = Path("work/same");
    std::filesystem::create_hard_link(twin, file);
    EXPECT_TRUE(Trash(twin));

    ExpectRefused(file, {unableToWrite});

    EXPECT_EQ(TheOneInTheTrash(), twin);
}

TEST_F(MoveToTrashTest, LeavesAHardLinkOnAFullDiskWhoseTwinOfTheSameNameHasALaterNameInTheTrash)
{
    EXPECT_TRUE(Trash(Write("work/one/same")));
    const std::string twin = Write("work/two/same");
    const std::string file = Path("work/same");
    std::filesystem::create_hard_link(twin, file);
    EXPECT_TRUE(Trash(twin));
    ASSERT_TRUE(IsThere(Path("home/data/Trash/files/same.2")));
    std::filesystem::remove(Path("home/data/Trash/files/same"));
    std::filesystem::remove(Path("home/data/Trash/info/same.trashinfo"));

    ExpectRefused(file, {unableToWrite});

    EXPECT_EQ(TheOneInTheTrash(), twin);
}

TEST_F(MoveToTrashTest, LeavesAFileWhoseNoteIsLostAndThatTheTrashKeepsUnderAnotherName)
{
    const std::string file = Write("work/file");

    ExpectRefused(file, {loseNote, renamedInTrash});
}

// Hard links to one file, one of them in the trash without an info, from a move that went wrong

TEST_F(MoveToTrashTest, TrashesAHardLinkWhoseTwinCannotBeRestored)
{
    const std::string file = Write("work/file");
    const std::string twin = HardLinkIntoTrash(file, "twin");

    ExpectTrashedAndRestored(file);

    EXPECT_TRUE(IsThere(twin));
}

TEST_F(MoveToTrashTest, TrashesAHardLinkWhoseTwinCannotBeRestoredUnderANameThatIsTaken)
{
    EXPECT_TRUE(Trash(Write("work/one/file.tar.gz")));
    const std::string file = Write("work/file.tar.gz");
    const std::string twin = HardLinkIntoTrash(file, "a twin");

    EXPECT_TRUE(Trash(file));

    EXPECT_FALSE(IsThere(file));
    EXPECT_TRUE(IsThere(twin));
    EXPECT_TRUE(IsThere(Path("home/data/Trash/files/file.2.tar.gz")));
    EXPECT_THAT(TrashList(), HasSubstr(" " + file + "\n"));
}

TEST_F(MoveToTrashTest, TrashesAHardLinkWhoseTwinOfTheSameNameHasAnEmptyInfo)
{
    const std::string file = Write("work/file");
    const std::string twin = HardLinkIntoTrash(file, "file");
    Write("home/data/Trash/info/file.trashinfo", "");

    EXPECT_TRUE(Trash(file));

    EXPECT_FALSE(IsThere(file));
    EXPECT_TRUE(IsThere(twin));
    EXPECT_TRUE(IsThere(Path("home/data/Trash/files/file.2")));
}

TEST_F(MoveToTrashTest, TrashesAHardLinkWhoseTwinCannotBeRestoredUnderAnotherName)
{
    const std::string file = Write("work/file");
    const std::string twin = HardLinkIntoTrash(file, "twin");

    EXPECT_TRUE(Trash(file, {renamedInTrash}));

    EXPECT_FALSE(IsThere(file));
    EXPECT_TRUE(IsThere(twin));
    EXPECT_EQ(TheOneInTheTrash(), file);
}

// For the system the two are one already, and GIO takes that for a move.
TEST_F(MoveToTrashTest, LeavesAHardLinkWhoseTwinOfTheSameNameCannotBeRestored)
{
    const std::string file = Write("work/file");
    HardLinkIntoTrash(file, "file");

    ExpectRefused(file);

    EXPECT_TRUE(IsThere(file));
    EXPECT_FALSE(IsThere(Path("home/data/Trash/info/file.trashinfo")));
}

// A trash with very much in it

TEST_F(MoveToTrashTest, ListsNoTrashForAFileThatIsThereUnderItsName)
{
    FillTrash(3);

    ExpectRefused(Write("work/file"), {unableToWrite, noListing});
    EXPECT_TRUE(Trash(Path("work/file"), {noListing}));
}

TEST_F(MoveToTrashTest, ListsNoTrashForFilesOfOneName)
{
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(Trash(Write("work/take.1.mp4"), {noListing}));
    ExpectRefused(Write("work/take.1.mp4"), {unableToWrite, noListing});

    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(Trash(Write("work/no_suffix"), {noListing}));
    ExpectRefused(Write("work/no_suffix"), {unableToWrite, noListing});
}

TEST_F(MoveToTrashTest, LooksNoFurtherThanTheFirstFileThatIsFound)
{
    TakeNamesInTrashAfter("file");
    TakeNamesInTrashAfter("folder");

    EXPECT_TRUE(Trash(Write("work/file"), {fewLooks}));
    EXPECT_TRUE(Trash(MakeFolder("work/folder"), {fewLooks}));
}

TEST_F(MoveToTrashTest, LooksAtNoOtherFileWhenItHasToListTheTrash)
{
    FillTrash(300);

    ExpectRefused(Write("work/file"), {loseNote, renamedInTrash, fewLooks});
}

TEST_F(MoveToTrashTest, KeepsBothWhenAnotherFileCameWhereOneCannotBeRestoredTo)
{
    const std::string file = Write("work/file", "the first");

    EXPECT_FALSE(Trash(file, {loseNote, replaceAtOnce}));

    const auto files = Files();
    EXPECT_EQ(files.at(file), "");
    EXPECT_EQ(files.at(Path("home/data/Trash/files/file")), "the first");
    EXPECT_EQ(files.count(Path("home/data/Trash/info/file.trashinfo")), 1U);
}

// Another disk

class MoveToTrashOnOtherDiskTest : public MoveToTrashTest
{
protected:
    void SetUp() override
    {
        MoveToTrashTest::SetUp();
        if (!IsSkipped())
            Mount("disk");
    }

    void TearDown() override
    {
        for (const std::string& path : mounted)
            EXPECT_EQ(::umount(path.c_str()), 0);
    }

    /// In a namespace of this process, so that nobody else ever sees the disk.
    void Mount(const std::string& name)
    {
        if (::geteuid() != 0)
            GTEST_SKIP() << "only root may mount a disk";
        const QString mkfs = FindProgram("mkfs.ext4");
        if (mkfs.isEmpty())
            GTEST_SKIP() << "mkfs.ext4 is not installed";
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            GTEST_SKIP() << "no mount namespace: " << std::strerror(errno);

        const QString disk = QString::fromStdString(MakeFolder(name));
        const QString image = QString::fromStdString(Write(name + ".image", ""));
        std::filesystem::resize_file(image.toStdString(), 2 << 20);
        const Outcome formatted =
            Run(mkfs, {QStringLiteral("-q"), QStringLiteral("-m0"), QStringLiteral("-O^has_journal"), image});
        ASSERT_EQ(formatted.exitCode, 0) << formatted.errors;
        const Outcome outcome = Run(FindProgram("mount"), {QStringLiteral("-oloop"), image, disk});
        if (outcome.exitCode != 0)
            GTEST_SKIP() << "no disk to mount: " << outcome.errors;
        mounted.push_back(Path(name));
        std::filesystem::remove(image.toStdString());
    }

    std::vector<std::string> mounted;
};

TEST_F(MoveToTrashOnOtherDiskTest, TrashesOntoTheSameDisk)
{
    ExpectTrashedAndRestored(Write("disk/file"));
    ExpectTrashedAndRestored(Write("disk/one/two/line\nbreak %41 #\xC3\xBC"));
    ExpectTrashedAndRestored(Path("disk/one"));
    ExpectTrashedAndRestored(Link("missing", "disk/dangling"));
    EXPECT_FALSE(IsThere(Path("home/data")));
}

TEST_F(MoveToTrashOnOtherDiskTest, TrashesALinkToAnotherDiskWhereTheLinkIs)
{
    Write("disk/file");
    Write("work/file");

    ExpectTrashedAndRestored(Link(Path("disk/file"), "work/link"));
    EXPECT_TRUE(IsThere(Path("home/data/Trash")));
    ExpectTrashedAndRestored(Link(Path("work/file"), "disk/link"));
}

TEST_F(MoveToTrashOnOtherDiskTest, TrashesIntoTheDisksCommonTrash)
{
    MakeFolder("disk/.Trash", 01777);

    ExpectTrashedAndRestored(Write("disk/one/file"));

    EXPECT_TRUE(IsThere(Path("disk/.Trash/" + std::to_string(::getuid()))));
}

TEST_F(MoveToTrashOnOtherDiskTest, LeavesAFileWhereTheUserCanGetNoTrash)
{
    MakeFolder("disk/open", 0777);

    ExpectRefused(Write("disk/open/file"), {asStranger});

    EXPECT_FALSE(IsThere(Path("home/data/Trash/files/file")));
}

TEST_F(MoveToTrashOnOtherDiskTest, LeavesTheDiskItself)
{
    Write("disk/file");

    ExpectRefused(Path("disk"));
}

TEST_F(MoveToTrashOnOtherDiskTest, LeavesWhatCouldNotBeRestored)
{
    ExpectRefused(Write("disk/file"), {unableToWrite});
    ExpectRefused(Write("disk/one/two/file"), {unableToWrite});
    ExpectRefused(Path("disk/one"), {unableToWrite});
    EXPECT_TRUE(IsThere(Path("disk/.Trash-" + std::to_string(::getuid()))));

    MakeFolder("disk/.Trash", 01777);
    ExpectRefused(Path("disk/one/two/file"), {unableToWrite});
    EXPECT_TRUE(IsThere(Path("disk/.Trash/" + std::to_string(::getuid()))));
}

TEST_F(MoveToTrashOnOtherDiskTest, ListsNoTrashForAFileThatIsThereUnderItsName)
{
    FillTrash(3);

    ExpectRefused(Write("disk/file"), {unableToWrite, noListing});
}

TEST_F(MoveToTrashOnOtherDiskTest, DoesNotLookIntoATrashOnAnotherDisk)
{
    FillTrash(1);
    Write("home/data/Trash/info/file.trashinfo", "");
    TakeNamesInTrashAfter("file");

    EXPECT_TRUE(Trash(Write("disk/file"), {fewLooks}));
}

// Two disks number their files alike, and the trash of the one is looked at for a file of the other.
TEST_F(MoveToTrashOnOtherDiskTest, TakesAFileOfAnotherDiskForNoneOfItsOwn)
{
    Mount("disk2");
    if (IsSkipped())
        return;
    dataHome = QString::fromStdString(Path("disk2/data"));
    Write("disk2/data/Trash/info/orphan.trashinfo", "");
    const std::string orphan = Write("disk2/data/Trash/files/orphan", "orphan");
    const std::string file = Write("disk/file");
    for (int i = 0; NumberOf(file) != NumberOf(orphan); ++i) {
        ASSERT_LT(i, 100);
        const std::string& lower = NumberOf(file) < NumberOf(orphan) ? file : orphan;
        std::filesystem::rename(lower, lower + std::to_string(i));
        std::ofstream(lower) << "content";
    }

    EXPECT_TRUE(Trash(file));

    EXPECT_FALSE(IsThere(file));
    EXPECT_TRUE(IsThere(orphan));
}

TEST_F(MoveToTrashOnOtherDiskTest, LeavesAFileOnADiskThatIsFull)
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
