#include "Lib/Util/FS/DirectorySnapshot.h"

#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/Unprivileged.h"
#include "Tests/Support/WildFolder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;
using Tests::ByteFolder;
using Tests::CurrentFolder;
using Tests::TempFolder;
using Tests::Unprivileged;
using Tests::WildFolder;
using Zendra::LW::DirectorySnapshot;
using Zendra::LW::WatchTicketIssuer;

using Texts = std::vector<std::string>;

constexpr unsigned int everyLevel = std::numeric_limits<unsigned int>::max();

Texts PathsOf(const QList<QFileInfo>& files, const QString& below = QString())
{
    Texts paths;
    for (const QFileInfo& info : files) {
        const QString path = info.filePath();
        const bool isBelow = !below.isEmpty() && path.startsWith(below + QLatin1Char('/'));
        paths.push_back((isBelow ? path.mid(below.size() + 1) : path).toStdString());
    }
    return paths;
}

Texts NamesOf(const QList<QFileInfo>& files)
{
    Texts names;
    for (const QFileInfo& info : files)
        names.push_back(info.fileName().toStdString());
    return names;
}

std::string Native(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

void Require(bool done, const std::string& step)
{
    if (!done)
        throw std::runtime_error(step);
}

/// The scan in its plainest words, one listing for the files and one for the folders: what ours is held to.
///
/// Unsorted, and not NoSort, which QDir takes for its default: by name.
QList<QFileInfo> PlainScan(const QString& dirPath, const QStringList& nameFilters, unsigned int depth)
{
    const QDir dir(dirPath);
    QList<QFileInfo> files = dir.entryInfoList(nameFilters, QDir::Files, QDir::Unsorted);
    if (depth == 0)
        return files;
    const QList<QFileInfo> subfolders = dir.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted);
    for (const QFileInfo& subfolder : subfolders)
        files.append(PlainScan(subfolder.absoluteFilePath(), nameFilters, depth - 1));
    return files;
}

class DirectoryScanTest : public testing::Test
{
protected:
    Texts Scan(unsigned int depth, const QStringList& nameFilters = {}) const
    {
        return PathsOf(DirectorySnapshot::GetFilesInDirRecursively(folder.Path(), nameFilters, depth),
                       folder.Path());
    }

    TempFolder folder;
};

TEST_F(DirectoryScanTest, FindsTheFilesOfTheFolderAloneAtDepthZero)
{
    folder.Write(QStringLiteral("b.txt"));
    folder.Write(QStringLiteral("A.txt"));
    folder.Write(QStringLiteral("sub/a.txt"));

    EXPECT_THAT(Scan(0), UnorderedElementsAre("b.txt", "A.txt"));
}

TEST_F(DirectoryScanTest, GoesDownAsManyLevelsAsItIsTold)
{
    folder.Write(QStringLiteral("0.txt"));
    folder.Write(QStringLiteral("1/1.txt"));
    folder.Write(QStringLiteral("1/2/2.txt"));
    folder.Write(QStringLiteral("1/2/3/3.txt"));

    EXPECT_THAT(Scan(1), ElementsAre("0.txt", "1/1.txt"));
    EXPECT_THAT(Scan(2), ElementsAre("0.txt", "1/1.txt", "1/2/2.txt"));
    EXPECT_THAT(Scan(3), ElementsAre("0.txt", "1/1.txt", "1/2/2.txt", "1/2/3/3.txt"));
}

TEST_F(DirectoryScanTest, HasNoBottomAtTheLargestDepth)
{
    QString path;
    for (int level = 0; level < 40; ++level)
        path += QStringLiteral("d/");
    folder.Write(path + QStringLiteral("a.txt"));

    EXPECT_THAT(Scan(everyLevel), SizeIs(1));
    EXPECT_THAT(Scan(40), SizeIs(1));
    EXPECT_THAT(Scan(39), IsEmpty());
}

TEST_F(DirectoryScanTest, HasTheFilesOfAFolderBeforeThoseOfItsSubfolders)
{
    folder.Write(QStringLiteral("a/b/1.txt"));
    folder.Write(QStringLiteral("a/z.txt"));
    folder.Write(QStringLiteral("a/y.txt"));
    folder.Write(QStringLiteral("z.txt"));

    const Texts found = Scan(2);

    ASSERT_THAT(found, SizeIs(4));
    EXPECT_EQ(found[0], "z.txt");
    EXPECT_THAT((Texts{found[1], found[2]}), UnorderedElementsAre("a/z.txt", "a/y.txt"));
    EXPECT_EQ(found[3], "a/b/1.txt");
}

TEST_F(DirectoryScanTest, NeverListsAFolder)
{
    folder.MakeFolder(QStringLiteral("a.txt"));
    folder.MakeFolder(QStringLiteral("sub/b.txt"));

    EXPECT_THAT(Scan(0), IsEmpty());
    EXPECT_THAT(Scan(5), IsEmpty());
    EXPECT_THAT(Scan(5, {QStringLiteral("*.txt")}), IsEmpty());
}

TEST_F(DirectoryScanTest, SkipsHiddenFilesAndHiddenFolders)
{
    folder.Write(QStringLiteral(".hidden.txt"));
    folder.Write(QStringLiteral(".hidden/a.txt"));
    folder.Write(QStringLiteral("sub/.hidden.txt"));
    folder.Write(QStringLiteral("sub/.hidden/b.txt"));
    folder.Write(QStringLiteral("sub/c.txt"));

    EXPECT_THAT(Scan(everyLevel), ElementsAre("sub/c.txt"));
    EXPECT_THAT(Scan(everyLevel, {QStringLiteral(".*")}), IsEmpty());
}

TEST_F(DirectoryScanTest, ListsALinkToAFileUnderItsOwnName)
{
    folder.Write(QStringLiteral("out/of/reach.txt"));
    folder.Link(QStringLiteral("out/of/reach.txt"), QStringLiteral("link.txt"));

    EXPECT_THAT(Scan(0), ElementsAre("link.txt"));
}

TEST_F(DirectoryScanTest, EntersALinkToAFolder)
{
    const TempFolder elsewhere;
    elsewhere.Write(QStringLiteral("a.txt"));
    folder.Link(elsewhere.Path(), QStringLiteral("link"));

    EXPECT_THAT(Scan(0), IsEmpty());
    EXPECT_THAT(Scan(1), ElementsAre("link/a.txt"));
}

TEST_F(DirectoryScanTest, LeavesACycleOfLinksAtTheDepth)
{
    folder.Write(QStringLiteral("a.txt"));
    folder.Link(folder.Path(), QStringLiteral("loop"));

    EXPECT_THAT(Scan(3), ElementsAre("a.txt", "loop/a.txt", "loop/loop/a.txt", "loop/loop/loop/a.txt"));
}

TEST_F(DirectoryScanTest, LeavesACycleOfLinksAtTheLargestDepthToo)
{
    folder.Write(QStringLiteral("a.txt"));
    folder.Link(folder.Path(), QStringLiteral("loop"));

    // The system follows only so many links in one path.
    EXPECT_THAT(Scan(everyLevel),
                ElementsAreArray(PathsOf(PlainScan(folder.Path(), {}, everyLevel), folder.Path())));
}

TEST_F(DirectoryScanTest, SkipsLinksThatLeadNowhere)
{
    folder.Link(QStringLiteral("missing.txt"), QStringLiteral("dangling.txt"));
    folder.Link(QStringLiteral("self.txt"), QStringLiteral("self.txt"));
    folder.Link(QStringLiteral("there.txt"), QStringLiteral("back.txt"));
    folder.Link(QStringLiteral("back.txt"), QStringLiteral("there.txt"));

    EXPECT_THAT(Scan(2), IsEmpty());
}

TEST_F(DirectoryScanTest, SkipsWhatIsNeitherFileNorFolder)
{
    Require(::mkfifo(Native(folder.Path(QStringLiteral("fifo"))).c_str(), 0600) == 0, "make a fifo");
    Require(::mknod(Native(folder.Path(QStringLiteral("socket"))).c_str(), S_IFSOCK | 0600, 0) == 0,
            "make a socket");

    EXPECT_THAT(Scan(2), IsEmpty());
}

TEST_F(DirectoryScanTest, ListsALinkToWhatIsNeitherFileNorFolder)
{
    folder.Link(QStringLiteral("/dev/null"), QStringLiteral("null.txt"));

    EXPECT_THAT(Scan(0), ElementsAre("null.txt"));
}

TEST_F(DirectoryScanTest, FindsNothingInAnEmptyFolder)
{
    EXPECT_THAT(Scan(0), IsEmpty());
    EXPECT_THAT(Scan(3), IsEmpty());
}

TEST_F(DirectoryScanTest, FindsNothingInAFolderThatIsMissing)
{
    const QString missing = folder.Path(QStringLiteral("missing"));

    EXPECT_THAT(DirectorySnapshot::GetFilesInDirRecursively(missing, {}, 3), IsEmpty());
    EXPECT_THAT(DirectorySnapshot::GetSortedFilesInDirRecursively(missing, {}, 3), IsEmpty());
}

TEST_F(DirectoryScanTest, FindsNothingBelowAFile)
{
    const QString file = folder.Write(QStringLiteral("a.txt"));

    EXPECT_THAT(DirectorySnapshot::GetFilesInDirRecursively(file, {}, 3), IsEmpty());
}

TEST_F(DirectoryScanTest, FindsNothingInAFolderThatItMayNotRead)
{
    folder.Write(QStringLiteral("a.txt"));
    folder.SetPermissions(QStringLiteral("."), 0111);

    const Unprivileged nobody;

    EXPECT_THAT(Scan(3), IsEmpty());
}

TEST_F(DirectoryScanTest, SkipsASubfolderThatItMayNotRead)
{
    folder.Write(QStringLiteral("closed/a.txt"));
    folder.Write(QStringLiteral("open/b.txt"));
    folder.SetPermissions(QStringLiteral("closed"), 0);
    folder.SetPermissions(QStringLiteral("."), 0755);

    const Unprivileged nobody;

    EXPECT_THAT(Scan(3), ElementsAre("open/b.txt"));
}

TEST_F(DirectoryScanTest, ListsAFileThatItMayNotOpen)
{
    folder.Write(QStringLiteral("a.txt"));
    folder.SetPermissions(QStringLiteral("a.txt"), 0);
    folder.SetPermissions(QStringLiteral("."), 0755);

    const Unprivileged nobody;

    EXPECT_THAT(Scan(0), ElementsAre("a.txt"));
}

TEST_F(DirectoryScanTest, TakesAnEmptyPathForTheCurrentFolder)
{
    folder.Write(QStringLiteral("a.txt"));
    folder.Write(QStringLiteral("sub/b.txt"));
    const CurrentFolder here(folder.Path());

    const Texts found = PathsOf(DirectorySnapshot::GetFilesInDirRecursively(QString(), {}, 1));

    EXPECT_THAT(found, ElementsAreArray(PathsOf(PlainScan(QString(), {}, 1))));
    EXPECT_THAT(found, SizeIs(2));
}

TEST_F(DirectoryScanTest, KeepsARelativeRootInThePathsOfItsOwnFilesOnly)
{
    folder.Write(QStringLiteral("root/a.txt"));
    folder.Write(QStringLiteral("root/sub/b.txt"));
    const CurrentFolder here(folder.Path());

    const Texts found = PathsOf(DirectorySnapshot::GetFilesInDirRecursively(QStringLiteral("root"), {}, 1));

    EXPECT_THAT(found,
                ElementsAre("root/a.txt", folder.Path(QStringLiteral("root/sub/b.txt")).toStdString()));
}

class DirectoryScanRootTest : public DirectoryScanTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(DirectoryScanRootTest, MayBeWrittenInManyWays)
{
    folder.Write(QStringLiteral("root/a.txt"));
    folder.Write(QStringLiteral("root/sub/b.txt"));
    folder.Link(QStringLiteral("root"), QStringLiteral("link"));
    const CurrentFolder here(folder.Path(QStringLiteral("root")));
    const QString root = QString::fromUtf8(GetParam());

    const Texts found = PathsOf(DirectorySnapshot::GetFilesInDirRecursively(root, {}, 1));

    EXPECT_THAT(found, ElementsAreArray(PathsOf(PlainScan(root, {}, 1))));
    EXPECT_THAT(found, SizeIs(2));
}

INSTANTIATE_TEST_SUITE_P(Relative, DirectoryScanRootTest,
                         testing::Values("", ".", "./", "../root", "..//root/", "../link", "sub/..",
                                         "../link/../root/."));

class AbsoluteRootTest : public DirectoryScanRootTest
{
};

TEST_P(AbsoluteRootTest, MayBeWrittenInManyWays)
{
    folder.Write(QStringLiteral("root/a.txt"));
    folder.Write(QStringLiteral("root/sub/b.txt"));
    folder.Link(QStringLiteral("root"), QStringLiteral("link"));
    const QString root = folder.Path() + QString::fromUtf8(GetParam());

    const Texts found = PathsOf(DirectorySnapshot::GetFilesInDirRecursively(root, {}, 1));

    EXPECT_THAT(found, ElementsAreArray(PathsOf(PlainScan(root, {}, 1))));
    EXPECT_THAT(found, SizeIs(2));
}

INSTANTIATE_TEST_SUITE_P(Absolute, AbsoluteRootTest,
                         testing::Values("/root", "/root/", "//root///", "/./root/.", "/root/../root",
                                         "/link", "/link/"));

TEST_F(DirectoryScanTest, MayBeginAtTheTopOfAll)
{
    const Texts found = PathsOf(DirectorySnapshot::GetFilesInDirRecursively(QStringLiteral("/"), {}, 0));

    EXPECT_THAT(found, ElementsAreArray(PathsOf(PlainScan(QStringLiteral("/"), {}, 0))));
}

TEST_F(DirectoryScanTest, ListsWhatItCanOfAFolderThatItMayNotEnter)
{
    folder.Write(QStringLiteral("listed/a.txt"));
    folder.Write(QStringLiteral("listed/sub/b.txt"));
    folder.Link(QStringLiteral("a.txt"), QStringLiteral("listed/link.txt"));
    folder.SetPermissions(QStringLiteral("listed"), 0444);
    folder.SetPermissions(QStringLiteral("."), 0755);

    const Unprivileged nobody;

    EXPECT_THAT(Scan(3), ElementsAreArray(PathsOf(PlainScan(folder.Path(), {}, 3), folder.Path())));
}

struct FilterRow
{
    const char* name;
    QStringList nameFilters;
    Texts expected;
};

std::ostream& operator<<(std::ostream& stream, const FilterRow& row)
{
    return stream << row.nameFilters.join(QLatin1Char(' ')).toStdString();
}

class NameFilterTest : public DirectoryScanTest, public testing::WithParamInterface<FilterRow>
{
};

TEST_P(NameFilterTest, KeepsTheFilesThatMatch)
{
    for (const char* name :
         {"a.mp4", "B.MP4", "c.mov", "mp4", "a[1].txt", "clips.old/d.mp4", "clips.old/e.mov"})
        folder.Write(QString::fromLatin1(name));

    EXPECT_THAT(Scan(1, GetParam().nameFilters), UnorderedElementsAreArray(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, NameFilterTest,
    testing::Values(
        FilterRow{
            "None", {}, {"a.mp4", "B.MP4", "c.mov", "mp4", "a[1].txt", "clips.old/d.mp4", "clips.old/e.mov"}},
        FilterRow{"Star",
                  {QStringLiteral("*")},
                  {"a.mp4", "B.MP4", "c.mov", "mp4", "a[1].txt", "clips.old/d.mp4", "clips.old/e.mov"}},
        FilterRow{"CaseDoesNotMatter", {QStringLiteral("*.mp4")}, {"a.mp4", "B.MP4", "clips.old/d.mp4"}},
        FilterRow{"UpperCaseFilter", {QStringLiteral("*.MP4")}, {"a.mp4", "B.MP4", "clips.old/d.mp4"}},
        FilterRow{"Several",
                  {QStringLiteral("c*"), QStringLiteral("?.mp4")},
                  {"a.mp4", "B.MP4", "c.mov", "clips.old/d.mp4"}},
        FilterRow{"WholeName", {QStringLiteral("mp4")}, {"mp4"}},
        FilterRow{"Set", {QStringLiteral("[ad].mp4")}, {"a.mp4", "clips.old/d.mp4"}},
        FilterRow{"AFoldersName", {QStringLiteral("clips*")}, {}},
        FilterRow{"APath", {QStringLiteral("clips.old/*.mp4")}, {}},
        FilterRow{"NoneMatches", {QStringLiteral("*.avi")}, {}}),
    [](const auto& testInfo) { return testInfo.param.name; });

class OddNameTest : public DirectoryScanTest,
                    public testing::WithParamInterface<std::pair<const char*, QString>>
{
};

TEST_P(OddNameTest, IsFoundAsAFileAndAsAFolder)
{
    const QString name = GetParam().second;
    if (name.contains(QChar(0x308))) {
        if (const std::string why = Tests::WhySpellingIsLost(); !why.empty())
            GTEST_SKIP() << why;
    }
    folder.Write(name);
    folder.Write(QStringLiteral("sub/") + name + QLatin1Char('/') + name);

    EXPECT_THAT(Scan(2),
                ElementsAre(name.toStdString(),
                            (QStringLiteral("sub/") + name + QLatin1Char('/') + name).toStdString()));
}

INSTANTIATE_TEST_SUITE_P(
    Names, OddNameTest,
    testing::Values(
        std::pair("Spaces", QStringLiteral(" two  words ")),
        std::pair("LineBreak", QStringLiteral("one\ntwo")), std::pair("Tab", QStringLiteral("\t")),
        std::pair("Wildcards", QStringLiteral("*?[a]")), std::pair("Backslash", QStringLiteral("a\\b")),
        std::pair("Quotes", QStringLiteral("'\"`")), std::pair("Markup", QStringLiteral("<b>&amp;")),
        std::pair("Umlaut", QStringLiteral("\u00c4.txt")),
        std::pair("DecomposedUmlaut", QStringLiteral("A\u0308.txt")),
        std::pair("Donkey", QStringLiteral("\U0001FACF")), std::pair("Percent", QStringLiteral("%1%n")),
        std::pair("Colon", QStringLiteral("a:b")), std::pair("Tilde", QStringLiteral("~")),
        std::pair("TwoHundredFiftyFiveBytes", QString(255, QLatin1Char('x'))),
        std::pair("TwoHundredFiftyFiveBytesOfUmlauts", QString(127, QChar(0xfc)) + QLatin1Char('x'))),
    [](const auto& testInfo) { return testInfo.param.first; });

TEST(ByteNameTest, OfAFileOrAFolderThatIsNotTextDoesNoHarm)
{
    if (const std::string why = Tests::WhyBytesAreRefused(); !why.empty())
        GTEST_SKIP() << why;
    const ByteFolder folder;
    folder.Write("a.txt");
    for (const char* name : {"\xff\xfe.txt", "\xc3", "\xed\xa0\x80", "sub\xff/b.txt", "\xff/\xfe/c.txt"})
        folder.Write(name);
    const QString root = QFile::decodeName(folder.Path().c_str());

    const Texts found = PathsOf(DirectorySnapshot::GetFilesInDirRecursively(root, {}, 3));

    EXPECT_THAT(found, ElementsAreArray(PathsOf(PlainScan(root, {}, 3))));
    EXPECT_THAT(found, testing::Contains(folder.Path("a.txt")));
}

/// A chain of folders in which one file's path is as long as the system allows, and others are longer.
///
/// Made and removed step by step, since no call takes the longer paths.
class DeepFolder
{
public:
    DeepFolder()
    {
        const std::string link(200, 'd');
        std::string path = Native(folder.Path());
        const auto room = [&] { return PATH_MAX - 1 - path.size() - 1; };
        Enter(path);
        while (room() > 255) {
            Enter(link);
            path += '/' + link;
        }
        longestPath = path + '/' + std::string(room(), 'f');
        MakeFile(std::string(room(), 'f'));
        for (int level = 0; level < 3; ++level) {
            Enter(link);
            MakeFile("beyond");
        }
    }

    ~DeepFolder()
    {
        while (!levels.empty()) {
            const Level last = levels.back();
            levels.pop_back();
            ::unlinkat(last.descriptor, last.file.c_str(), 0);
            ::close(last.descriptor);
            if (!levels.empty())
                ::unlinkat(levels.back().descriptor, last.name.c_str(), AT_REMOVEDIR);
        }
    }

    DeepFolder(const DeepFolder&) = delete;
    DeepFolder& operator=(const DeepFolder&) = delete;

    QString Path() const { return folder.Path(); }
    const std::string& LongestPath() const { return longestPath; }

private:
    struct Level
    {
        std::string name;
        int descriptor;
        std::string file; ///< the one file in it
    };

    int Current() const { return levels.empty() ? AT_FDCWD : levels.back().descriptor; }

    void Enter(const std::string& name)
    {
        ::mkdirat(Current(), name.c_str(), 0700);
        const int descriptor = ::openat(Current(), name.c_str(), O_DIRECTORY | O_RDONLY | O_CLOEXEC);
        Require(descriptor >= 0, "enter " + name);
        levels.push_back({name, descriptor, {}});
    }

    void MakeFile(const std::string& name)
    {
        const int file = ::openat(Current(), name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        Require(file >= 0, "make " + name);
        ::close(file);
        levels.back().file = name;
    }

    TempFolder folder;
    std::vector<Level> levels;
    std::string longestPath;
};

TEST(DeepFolderTest, IsFoundAsFarAsPathsReach)
{
    const DeepFolder deep;
    ASSERT_EQ(deep.LongestPath().size(), PATH_MAX - 1);

    const Texts found = PathsOf(DirectorySnapshot::GetFilesInDirRecursively(deep.Path(), {}, everyLevel));

    EXPECT_THAT(found, testing::Contains(deep.LongestPath()));
    EXPECT_THAT(found, ElementsAreArray(PathsOf(PlainScan(deep.Path(), {}, everyLevel))));
}

class WildFolderTest : public testing::TestWithParam<unsigned int>
{
protected:
    static const QList<QStringList>& NameFilters()
    {
        static const QList<QStringList> nameFilters{{},
                                                    {QStringLiteral("*.mp4")},
                                                    {QStringLiteral("A*"), QStringLiteral("?.txt")},
                                                    {QStringLiteral("[0-9]*")},
                                                    {QStringLiteral(".*")},
                                                    {QString()},
                                                    {QStringLiteral("*\u00c4*")}};
        return nameFilters;
    }

    static void ExpectThePlainScan(const QString& path, const QStringList& nameFilters, unsigned int depth)
    {
        SCOPED_TRACE("filters '" + nameFilters.join(QLatin1Char(' ')).toStdString() + "', depth "
                     + std::to_string(depth));
        const QList<QFileInfo> expected = PlainScan(path, nameFilters, depth);

        const QList<QFileInfo> scanned =
            DirectorySnapshot::GetFilesInDirRecursively(path, nameFilters, depth);
        const QList<QFileInfo> sorted =
            DirectorySnapshot::GetSortedFilesInDirRecursively(path, nameFilters, depth);

        EXPECT_THAT(PathsOf(scanned), ElementsAreArray(PathsOf(expected)));
        EXPECT_THAT(PathsOf(sorted), UnorderedElementsAreArray(PathsOf(expected)));
        EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end(), [](const QFileInfo& a, const QFileInfo& b) {
            return a.fileName() < b.fileName();
        }));
    }
};

TEST_P(WildFolderTest, IsScannedAsByOneListingForFilesAndOneForFolders)
{
    const WildFolder wild(GetParam(), true);

    for (const QStringList& nameFilters : NameFilters()) {
        for (const unsigned int depth : {0U, 1U, 3U})
            ExpectThePlainScan(wild.Path(), nameFilters, depth);
    }
}

TEST_P(WildFolderTest, IsScannedToItsBottom)
{
    const WildFolder wild(GetParam(), false);

    for (const QStringList& nameFilters : NameFilters())
        ExpectThePlainScan(wild.Path(), nameFilters, everyLevel);
}

INSTANTIATE_TEST_SUITE_P(Seeds, WildFolderTest, testing::Range(1U, 13U));

class SortedScanTest : public DirectoryScanTest
{
protected:
    Texts SortedScan(unsigned int depth) const
    {
        return PathsOf(DirectorySnapshot::GetSortedFilesInDirRecursively(folder.Path(), {}, depth),
                       folder.Path());
    }
};

TEST_F(SortedScanTest, ComparesNamesByTheirCodeUnits)
{
    if (const std::string why = Tests::WhySpellingIsLost(); !why.empty())
        GTEST_SKIP() << why;
    if (const std::string why = Tests::WhyCaseIsLost(); !why.empty())
        GTEST_SKIP() << why;
    // In this order: digits, upper case, lower case, umlauts; and an emoji, whose code units are surrogates,
    // before a character that has a smaller number than it.
    const QStringList inOrder{
        QStringLiteral(" a"),         QStringLiteral("10"),     QStringLiteral("9"),
        QStringLiteral("A"),          QStringLiteral("A1"),     QStringLiteral("A\u0308"),
        QStringLiteral("B.mov"),      QStringLiteral("Z"),      QStringLiteral("a"),
        QStringLiteral("a.mov"),      QStringLiteral("aB"),     QStringLiteral("ab"),
        QStringLiteral("z"),          QStringLiteral("\u00c4"), QStringLiteral("\u00e4"),
        QStringLiteral("\U0001F600"), QStringLiteral("\uff5e")};
    Texts expected;
    for (const QString& name : inOrder) {
        folder.Write(name);
        expected.push_back(name.toStdString());
    }

    EXPECT_THAT(SortedScan(0), ElementsAreArray(expected));
}

TEST_F(SortedScanTest, ComparesNothingButTheNames)
{
    folder.Write(QStringLiteral("a/c.txt"));
    folder.Write(QStringLiteral("b/b.txt"));
    folder.Write(QStringLiteral("c/a.txt"));
    folder.Write(QStringLiteral("A.txt"));
    folder.Write(QStringLiteral("d.txt"));

    EXPECT_THAT(SortedScan(0), ElementsAre("A.txt", "d.txt"));
    EXPECT_THAT(SortedScan(1), ElementsAre("A.txt", "c/a.txt", "b/b.txt", "a/c.txt", "d.txt"));
}

class SortOrderTest : public SortedScanTest,
                      public testing::WithParamInterface<std::pair<const char*, QStringList>>
{
};

TEST_P(SortOrderTest, IsThatOfTheirNamesAsTexts)
{
    QStringList names = GetParam().second;
    for (const QString& name : qAsConst(names))
        folder.Write(name);
    std::sort(names.begin(), names.end());

    Texts expected;
    for (const QString& name : qAsConst(names))
        expected.push_back(name.toStdString());
    EXPECT_THAT(SortedScan(0), ElementsAreArray(expected));
}

QStringList Numbered(const QString& pattern, int count)
{
    QStringList names;
    for (int number = 0; number < count; ++number)
        names.append(pattern.arg(number * 7919 % 100003));
    return names;
}

QStringList Prefixes(const QString& text)
{
    QStringList names;
    for (int length = 1; length <= text.size(); ++length)
        names.append(text.left(length));
    return names;
}

INSTANTIATE_TEST_SUITE_P(
    Names, SortOrderTest,
    testing::Values(
        std::pair("ThatBeginAlike", Numbered(QStringLiteral("Recording %1.mp4"), 300)),
        std::pair("ThatEndAlike", Numbered(QStringLiteral("%1 - a recording.mp4"), 300)),
        std::pair("ThatAreTheBeginningOfOneAnother", Prefixes(QStringLiteral("abcdefghijklmnop"))),
        std::pair("ThatDifferLate", QStringList{QStringLiteral("abcdefgh"), QStringLiteral("abcdefgH"),
                                                QStringLiteral("abcdefg"), QStringLiteral("b")}),
        std::pair("ThatDifferInTheLastOfFourCharacters",
                  QStringList{QStringLiteral("x123"), QStringLiteral("y124"), QStringLiteral("x124"),
                              QStringLiteral("x12"), QStringLiteral("x1230")}),
        std::pair("BeyondTheFirstByte",
                  QStringList{QStringLiteral("\u0100a"), QStringLiteral("\u00ffb"), QStringLiteral("a\uff5e"),
                              QStringLiteral("a\U0001F600"), QStringLiteral("ab")}),
        std::pair("WithAllBitsOfACharacter",
                  QStringList{QStringLiteral("\u4e00"), QStringLiteral("\u3042"), QStringLiteral("\uac00"),
                              QStringLiteral("b\uff5e"), QStringLiteral("ca"), QStringLiteral("bb\uff5e"),
                              QStringLiteral("bca"), QStringLiteral("bbb\uff5e"), QStringLiteral("bbca")}),
        std::pair("OfWhichThereIsOne", QStringList{QStringLiteral("a")})),
    [](const auto& testInfo) { return testInfo.param.first; });

TEST_F(SortedScanTest, KeepsFilesOfOneNameTogether)
{
    for (const char* path : {"1/b.txt", "2/b.txt", "3/b.txt", "1/a.txt", "2/c.txt", "b.txt"})
        folder.Write(QString::fromLatin1(path));

    const QList<QFileInfo> sorted = DirectorySnapshot::GetSortedFilesInDirRecursively(folder.Path(), {}, 1);

    EXPECT_THAT(NamesOf(sorted), ElementsAre("a.txt", "b.txt", "b.txt", "b.txt", "b.txt", "c.txt"));
    EXPECT_THAT(PathsOf(sorted, folder.Path()),
                UnorderedElementsAre("1/a.txt", "1/b.txt", "2/b.txt", "3/b.txt", "b.txt", "2/c.txt"));
}

TEST_F(SortedScanTest, TakesTheNameFilters)
{
    folder.Write(QStringLiteral("b.mp4"));
    folder.Write(QStringLiteral("a.mov"));
    folder.Write(QStringLiteral("sub/a.mp4"));

    const QList<QFileInfo> sorted =
        DirectorySnapshot::GetSortedFilesInDirRecursively(folder.Path(), {QStringLiteral("*.mp4")}, 1);

    EXPECT_THAT(NamesOf(sorted), ElementsAre("a.mp4", "b.mp4"));
}

class AcceptedFilesTest : public DirectoryScanTest
{
protected:
    AcceptedFilesTest()
    {
        for (const char* path : {"c.txt", "a.txt", "b.mov", "sub/b.txt"})
            folder.Write(QString::fromLatin1(path));
    }

    Texts Accepted(const DirectorySnapshot::Predicate& filter, const QStringList& nameFilters = {}) const
    {
        return PathsOf(GetAccepted(DirectorySnapshot::Metadata::ReadOnEntering, filter, nameFilters),
                       folder.Path());
    }

    QList<QFileInfo> GetAccepted(DirectorySnapshot::Metadata metadata,
                                 const DirectorySnapshot::Predicate& filter = {},
                                 const QStringList& nameFilters = {}) const
    {
        return DirectorySnapshot::GetAcceptedFiles(folder.Path(), nameFilters, filter, 1, metadata,
                                                   issuer.Issue());
    }

    WatchTicketIssuer issuer;
};

TEST_F(AcceptedFilesTest, AreAllFilesInOrderWithoutAPredicate)
{
    EXPECT_THAT(Accepted({}), ElementsAre("a.txt", "b.mov", "sub/b.txt", "c.txt"));
    EXPECT_THAT(Accepted({}, {QStringLiteral("*.txt")}), ElementsAre("a.txt", "sub/b.txt", "c.txt"));
}

TEST_F(AcceptedFilesTest, AreThoseThatThePredicateKeeps)
{
    const auto isMovie = [](const QFileInfo& info) { return info.suffix() == QStringLiteral("mov"); };

    EXPECT_THAT(Accepted(isMovie), ElementsAre("b.mov"));
    EXPECT_THAT(Accepted(std::not_fn(isMovie)), ElementsAre("a.txt", "sub/b.txt", "c.txt"));
}

TEST_F(AcceptedFilesTest, AreAskedForOnceEachInOrder)
{
    QList<QFileInfo> asked;

    Accepted([&](const QFileInfo& info) {
        asked.append(info);
        return false;
    });

    EXPECT_THAT(PathsOf(asked, folder.Path()), ElementsAre("a.txt", "b.mov", "sub/b.txt", "c.txt"));
}

TEST_F(AcceptedFilesTest, AreAskedForNoLongerOnceTheWatchIsOver)
{
    Texts asked;

    Accepted([&](const QFileInfo& info) {
        asked.push_back(info.fileName().toStdString());
        if (asked.size() == 2)
            issuer.Renew();
        return asked.size() == 1;
    });

    EXPECT_THAT(asked, ElementsAre("a.txt", "b.mov"));
}

TEST_F(AcceptedFilesTest, HaveTheTimesOfTheScanOnlyWhereThatIsWanted)
{
    const QDateTime earlier = QDateTime::fromMSecsSinceEpoch(1500000000123);
    const QDateTime later = QDateTime::fromMSecsSinceEpoch(1600000000456);
    folder.SetModificationTime(QStringLiteral("a.txt"), earlier);

    const QList<QFileInfo> read = GetAccepted(DirectorySnapshot::Metadata::ReadWithTheScan);
    const QList<QFileInfo> unread = GetAccepted(DirectorySnapshot::Metadata::ReadOnEntering);
    folder.SetModificationTime(QStringLiteral("a.txt"), later);

    EXPECT_EQ(read.constFirst().lastModified(), earlier);
    EXPECT_EQ(unread.constFirst().lastModified(), later);
    EXPECT_EQ(PathsOf(read), PathsOf(unread));
}

/// A snapshot of real files, which are equal to one another only if they are the same file.
class DirectorySnapshotTest : public testing::Test
{
protected:
    QFileInfo File(const char* path) const { return QFileInfo(folder.Path(QString::fromUtf8(path))); }
    QFileInfo NewFile(const char* path) const { return QFileInfo(folder.Write(QString::fromUtf8(path))); }

    void Have(std::initializer_list<const char*> paths)
    {
        for (const char* path : paths)
            snapshot.Append(NewFile(path));
    }

    Texts Paths() const { return PathsOf(snapshot.fileInfos, folder.Path()); }

    TempFolder folder;
    DirectorySnapshot snapshot;
};

TEST_F(DirectorySnapshotTest, IsEmptyAtFirst)
{
    EXPECT_THAT(snapshot.fileInfos, IsEmpty());
    EXPECT_TRUE(snapshot.nameFilters.isEmpty());
    EXPECT_FALSE(snapshot.filter);
    EXPECT_TRUE(snapshot.dirPath.isEmpty());
    EXPECT_EQ(snapshot.depth, 0U);
}

TEST_F(DirectorySnapshotTest, HasNoPlaceForAFileWhileItIsEmpty)
{
    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("a.txt")), -1);
}

TEST_F(DirectorySnapshotTest, HasNoPlaceForANameAfterAllOthers)
{
    Have({"a.txt", "b.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("c.txt")), -1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("missing.txt")), -1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("b.txt2")), -1);
}

TEST_F(DirectorySnapshotTest, GivesANewNameThePlaceOfTheNextOne)
{
    if (const std::string why = Tests::WhyCaseIsLost(); !why.empty())
        GTEST_SKIP() << why;
    Have({"B.txt", "b.txt", "d.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("A.txt")), 0);
    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("a.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("c.txt")), 2);
    EXPECT_EQ(snapshot.GetInfoIndex(File("missing/c.txt")), 2);
}

TEST_F(DirectorySnapshotTest, FindsEachFile)
{
    Have({"a.txt", "b.txt", "c.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(File("a.txt")), 0);
    EXPECT_EQ(snapshot.GetInfoIndex(File("b.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("c.txt")), 2);
}

TEST_F(DirectorySnapshotTest, FindsTheOneOfSeveralFilesOfOneName)
{
    Have({"0.txt", "a.txt", "sub/a.txt", "sub/2/a.txt", "b.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(File("a.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("sub/a.txt")), 2);
    EXPECT_EQ(snapshot.GetInfoIndex(File("sub/2/a.txt")), 3);
}

TEST_F(DirectorySnapshotTest, FindsTheLastFileAmongThoseOfOneName)
{
    Have({"a.txt", "sub/a.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(File("sub/a.txt")), 1);
}

TEST_F(DirectorySnapshotTest, GivesAnUnknownFileOfAKnownNameTheFirstOfThatName)
{
    Have({"0.txt", "a.txt", "sub/a.txt", "b.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("other/a.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("missing/a.txt")), 1);
}

TEST_F(DirectorySnapshotTest, GivesAnUnknownFileOfTheLastNameTheFirstOfThatName)
{
    Have({"a.txt", "b.txt", "sub/b.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(NewFile("other/b.txt")), 1);
}

TEST_F(DirectorySnapshotTest, TellsNamesApartByCase)
{
    if (const std::string why = Tests::WhyCaseIsLost(); !why.empty())
        GTEST_SKIP() << why;
    Have({"A.txt", "a.txt"});

    EXPECT_EQ(snapshot.GetInfoIndex(File("A.txt")), 0);
    EXPECT_EQ(snapshot.GetInfoIndex(File("a.txt")), 1);
}

TEST_F(DirectorySnapshotTest, TakesALinkOfTheSameNameForTheFileItself)
{
    Have({"a.txt", "z.txt"});
    folder.MakeFolder(QStringLiteral("sub"));
    folder.Link(QStringLiteral("../a.txt"), QStringLiteral("sub/a.txt"));
    folder.Link(QStringLiteral("a.txt"), QStringLiteral("b.txt"));
    snapshot.Insert(1, File("sub/a.txt"));

    EXPECT_EQ(snapshot.GetInfoIndex(File("sub/a.txt")), 0);
    EXPECT_EQ(snapshot.GetInfoIndex(File("b.txt")), 2);
}

// Where their links lead is remembered from the first look on, and no longer so for the one that is gone.
TEST_F(DirectorySnapshotTest, FindsAFileThatIsGoneAmongThoseOfItsName)
{
    Have({"1/a.txt", "2/a.txt", "3/a.txt"});
    ASSERT_EQ(snapshot.GetInfoIndex(NewFile("4/a.txt")), 0);
    folder.Remove(QStringLiteral("2/a.txt"));

    EXPECT_EQ(snapshot.GetInfoIndex(File("2/a.txt")), 1);
}

TEST_F(DirectorySnapshotTest, FindsWhatALookThroughAllOfItFinds)
{
    std::mt19937 random(7);
    QStringList paths;
    for (int file = 0; file < 300; ++file) {
        paths.append(folder.Write(QStringLiteral("%1/%2").arg(random() % 5).arg(random() % 90)));
    }
    for (const QFileInfo& info : DirectorySnapshot::GetSortedFilesInDirRecursively(folder.Path(), {}, 1)) {
        if (random() % 3 != 0)
            snapshot.Append(info);
    }
    const QList<QFileInfo>& known = snapshot.fileInfos;

    for (const QString& path : qAsConst(paths)) {
        const QFileInfo info(path);
        const auto isEqual = [&](const QFileInfo& entry) { return entry.filePath() == path; };
        const auto isNotLess = [&](const QFileInfo& entry) { return !(entry.fileName() < info.fileName()); };
        auto expected = std::find_if(known.begin(), known.end(), isEqual);
        if (expected == known.end())
            expected = std::find_if(known.begin(), known.end(), isNotLess);

        EXPECT_EQ(snapshot.GetInfoIndex(info),
                  expected == known.end() ? -1 : static_cast<int>(expected - known.begin()))
            << path.toStdString();
    }
}

TEST_F(DirectorySnapshotTest, KnowsItsPlaces)
{
    EXPECT_FALSE(snapshot.Contains(0));
    Have({"a.txt", "b.txt"});

    EXPECT_FALSE(snapshot.Contains(-1));
    EXPECT_TRUE(snapshot.Contains(0));
    EXPECT_TRUE(snapshot.Contains(1));
    EXPECT_FALSE(snapshot.Contains(2));
}

TEST_F(DirectorySnapshotTest, TakesFilesInAtThePlaceThatIsGiven)
{
    Have({"c.txt"});

    snapshot.Insert(0, NewFile("a.txt"));
    snapshot.Insert(1, NewFile("b.txt"));
    snapshot.Insert(-1, NewFile("d.txt"));
    snapshot.Append(NewFile("e.txt"));

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt", "d.txt", "e.txt"));
    EXPECT_EQ(snapshot.GetInfoIndex(File("b.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("e.txt")), 4);
}

TEST_F(DirectorySnapshotTest, LetsFilesGo)
{
    Have({"a.txt", "b.txt", "c.txt"});

    snapshot.RemoveAt(1);

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "c.txt"));
    EXPECT_EQ(snapshot.GetInfoIndex(File("b.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("c.txt")), 1);
}

TEST_F(DirectorySnapshotTest, ReplacesAFileByAnother)
{
    Have({"a.txt", "b.txt", "c.txt"});

    snapshot.Replace(1, NewFile("sub/bb.txt"));

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "sub/bb.txt", "c.txt"));
    EXPECT_EQ(snapshot.GetInfoIndex(File("sub/bb.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("b.txt")), 1);
    EXPECT_EQ(snapshot.GetInfoIndex(File("bbb.txt")), 2);
}

TEST_F(DirectorySnapshotTest, ForgetsAllButTheFoldersPath)
{
    Have({"a.txt"});
    const auto kept = std::make_shared<int>(0);
    snapshot.nameFilters = QStringList{QStringLiteral("*.txt")};
    snapshot.filter = [kept](const QFileInfo&) { return true; };
    snapshot.dirPath = folder.Path();
    snapshot.depth = 7;

    snapshot.Clear();

    EXPECT_THAT(snapshot.fileInfos, IsEmpty());
    EXPECT_EQ(snapshot.GetInfoIndex(File("a.txt")), -1);
    EXPECT_TRUE(snapshot.nameFilters.isEmpty());
    EXPECT_FALSE(snapshot.filter);
    EXPECT_EQ(kept.use_count(), 1);
    EXPECT_EQ(snapshot.depth, 0U);
    EXPECT_EQ(snapshot.dirPath, folder.Path());
}

/// Whether a file is as it was, by a look at its time only.
class UnchangedFileTest : public DirectorySnapshotTest
{
protected:
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(1500000000123);

    void HaveWithTime(std::initializer_list<const char*> paths)
    {
        for (const char* path : paths) {
            folder.Write(QString::fromUtf8(path));
            SetTime(path, time);
            snapshot.Append(File(path));
        }
        MakePass();
    }
    /// A pass that has nothing to take in: only what was there when it was made can be told to be unchanged.
    void MakePass()
    {
        const WatchTicketIssuer watch;
        snapshot.TakeNewFiles(folder.Path(), watch.Issue(),
                              [](int, const QFileInfo&, bool) { ADD_FAILURE(); });
    }
    void SetTime(const char* path, const QDateTime& newTime) const
    {
        folder.SetModificationTime(QString::fromUtf8(path), newTime);
    }
};

TEST_F(UnchangedFileTest, HasTheTimeThatIsKnown)
{
    HaveWithTime({"a.txt", "b.txt"});

    EXPECT_TRUE(snapshot.IsUnchanged(File("a.txt")));
    EXPECT_TRUE(snapshot.IsUnchanged(File("b.txt")));
}

TEST_F(UnchangedFileTest, IsNoneOfAnotherTime)
{
    HaveWithTime({"a.txt", "b.txt", "c.txt"});
    ASSERT_TRUE(snapshot.IsUnchanged(File("a.txt")));
    SetTime("a.txt", time.addMSecs(1));
    SetTime("b.txt", time.addMSecs(-1));
    SetTime("c.txt", time.addYears(1));

    EXPECT_FALSE(snapshot.IsUnchanged(File("a.txt")));
    EXPECT_FALSE(snapshot.IsUnchanged(File("b.txt")));
    EXPECT_FALSE(snapshot.IsUnchanged(File("c.txt")));
}

TEST_F(UnchangedFileTest, IsNoneThatIsGoneOrUnknown)
{
    HaveWithTime({"a.txt"});
    NewFile("b.txt");
    folder.Remove(QStringLiteral("a.txt"));

    EXPECT_FALSE(snapshot.IsUnchanged(File("a.txt")));
    EXPECT_FALSE(snapshot.IsUnchanged(File("b.txt")));
}

TEST_F(UnchangedFileTest, IsHeldAgainstTheEntryThatReplacedAnother)
{
    HaveWithTime({"a.txt"});
    ASSERT_TRUE(snapshot.IsUnchanged(File("a.txt")));
    SetTime("a.txt", time.addSecs(5));
    snapshot.Replace(0, File("a.txt"));

    EXPECT_TRUE(snapshot.IsUnchanged(File("a.txt")));
    SetTime("a.txt", time);
    EXPECT_FALSE(snapshot.IsUnchanged(File("a.txt")));
}

TEST_F(UnchangedFileTest, IsNoneThatAnotherHasReplaced)
{
    HaveWithTime({"b.txt", "c.txt"});
    ASSERT_TRUE(snapshot.IsUnchanged(File("b.txt")));
    snapshot.Replace(0, NewFile("a.txt"));

    EXPECT_FALSE(snapshot.IsUnchanged(File("b.txt")));
    EXPECT_TRUE(snapshot.IsUnchanged(File("a.txt")));
    EXPECT_TRUE(snapshot.IsUnchanged(File("c.txt")));
}

TEST_F(UnchangedFileTest, IsNoneThatHasLeft)
{
    HaveWithTime({"a.txt", "b.txt"});
    ASSERT_TRUE(snapshot.IsUnchanged(File("a.txt")));
    snapshot.RemoveAt(0);

    EXPECT_FALSE(snapshot.IsUnchanged(File("a.txt")));
    EXPECT_TRUE(snapshot.IsUnchanged(File("b.txt")));
    snapshot.Clear();
    EXPECT_FALSE(snapshot.IsUnchanged(File("b.txt")));
}

TEST_F(UnchangedFileTest, IsNotHeldAgainstTheTimeOfBeforeAClear)
{
    HaveWithTime({"a.txt"});
    ASSERT_TRUE(snapshot.IsUnchanged(File("a.txt")));
    snapshot.Clear();
    SetTime("a.txt", time.addSecs(5));
    snapshot.Append(File("a.txt"));
    MakePass();
    SetTime("a.txt", time);

    EXPECT_FALSE(snapshot.IsUnchanged(File("a.txt")));
}

TEST_F(UnchangedFileTest, IsNoneOfWhichThereAreTwoEntries)
{
    HaveWithTime({"a.txt"});
    snapshot.Append(File("a.txt"));
    MakePass();

    EXPECT_FALSE(snapshot.IsUnchanged(File("a.txt")));
}

TEST_F(UnchangedFileTest, IsALinkWhoseTargetIs)
{
    HaveWithTime({"a.txt"});
    folder.Link(QStringLiteral("a.txt"), QStringLiteral("link.txt"));
    snapshot.Append(File("link.txt"));
    MakePass();

    EXPECT_TRUE(snapshot.IsUnchanged(File("link.txt")));
    SetTime("a.txt", time.addSecs(5));
    EXPECT_FALSE(snapshot.IsUnchanged(File("link.txt")));
}

/// The size and the time that a file had when it entered: those of later do not show.
class SnapshotMetadataTest : public DirectorySnapshotTest
{
protected:
    void Change(const char* path) const
    {
        folder.Write(QString::fromLatin1(path), "much longer than before");
        folder.SetModificationTime(QString::fromLatin1(path), later);
    }

    QFileInfo ListedFile() const
    {
        folder.Write(QStringLiteral("a.txt"), "short");
        folder.SetModificationTime(QStringLiteral("a.txt"), earlier);
        return DirectorySnapshot::GetSortedFilesInDirRecursively(folder.Path(), {}, 0).constFirst();
    }

    void ExpectTheEarlier(const QFileInfo& entry) const
    {
        EXPECT_EQ(entry.lastModified(), earlier);
        EXPECT_EQ(entry.size(), 5);
    }

    const QDateTime earlier = QDateTime::fromMSecsSinceEpoch(1500000000123);
    const QDateTime later = QDateTime::fromMSecsSinceEpoch(1600000000456);
};

TEST_F(SnapshotMetadataTest, IsReadWhenAFileIsAppended)
{
    snapshot.Append(ListedFile());
    Change("a.txt");

    ExpectTheEarlier(snapshot.fileInfos.at(0));
}

TEST_F(SnapshotMetadataTest, IsReadWhenAFileIsInserted)
{
    Have({"b.txt"});
    snapshot.Insert(0, ListedFile());
    Change("a.txt");

    ExpectTheEarlier(snapshot.fileInfos.at(0));
}

TEST_F(SnapshotMetadataTest, IsReadWhenAFileIsReplaced)
{
    Have({"b.txt"});
    snapshot.Replace(0, ListedFile());
    Change("a.txt");

    ExpectTheEarlier(snapshot.fileInfos.at(0));
}

TEST_F(SnapshotMetadataTest, IsReadWhenAFileEntersAndNotWhenItIsListed)
{
    const QFileInfo listed = ListedFile();
    Change("a.txt");
    snapshot.Append(listed);

    EXPECT_EQ(snapshot.fileInfos.at(0).lastModified(), later);
}

TEST_F(SnapshotMetadataTest, StaysThatOfAFileThatVanishes)
{
    snapshot.Append(ListedFile());
    folder.Remove(QStringLiteral("a.txt"));

    ExpectTheEarlier(snapshot.fileInfos.at(0));
}

TEST_F(SnapshotMetadataTest, IsNoneForAFileThatVanishedBetweenListingAndEntry)
{
    const QFileInfo listed = ListedFile();
    folder.Remove(QStringLiteral("a.txt"));
    snapshot.Append(listed);

    EXPECT_FALSE(snapshot.fileInfos.at(0).lastModified().isValid());
    EXPECT_EQ(snapshot.fileInfos.at(0).size(), 0);
}

/// A pass over a scan, with the files put into the snapshot as they are handed out.
class TakeNewFilesTest : public DirectorySnapshotTest
{
protected:
    TakeNewFilesTest() { snapshot.depth = 2; }

    struct Taken
    {
        int place;
        std::string path;
        bool snapshotWasEmpty;
    };
    friend bool operator==(const Taken& a, const Taken& b)
    {
        return a.place == b.place && a.path == b.path && a.snapshotWasEmpty == b.snapshotWasEmpty;
    }
    friend std::ostream& operator<<(std::ostream& stream, const Taken& file)
    {
        return stream << file.path << " before " << file.place
                      << (file.snapshotWasEmpty ? ", was empty" : ", was not empty");
    }

    void Write(std::initializer_list<const char*> paths) const
    {
        for (const char* path : paths)
            folder.Write(QString::fromUtf8(path));
    }

    void Pass()
    {
        snapshot.TakeNewFiles(
            folder.Path(), issuer.Issue(), [this](int place, const QFileInfo& info, bool snapshotWasEmpty) {
                taken.push_back({place, PathsOf({info}, folder.Path()).front(), snapshotWasEmpty});
                snapshot.Insert(place, info);
                if (afterEach)
                    afterEach(info.fileName());
            });
    }

    void SetPredicate(std::function<bool(const QString&)> predicate)
    {
        snapshot.filter = [this, predicate = std::move(predicate)](const QFileInfo& info) {
            asked.push_back(PathsOf({info}, folder.Path()).front());
            return predicate(info.fileName());
        };
    }

    WatchTicketIssuer issuer;
    std::vector<Taken> taken;
    Texts asked;
    std::function<void(const QString&)> afterEach;
};

TEST_F(TakeNewFilesTest, FillsAnEmptySnapshotInOrder)
{
    Write({"b.txt", "a.txt", "c.txt"});

    Pass();

    EXPECT_THAT(taken,
                ElementsAre(Taken{-1, "a.txt", true}, Taken{-1, "b.txt", true}, Taken{-1, "c.txt", true}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(TakeNewFilesTest, PutsEachNewFileAtItsPlace)
{
    Have({"b.txt", "d.txt"});
    Write({"a.txt", "c.txt", "e.txt", "f.txt"});

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{0, "a.txt", false}, Taken{2, "c.txt", false},
                                   Taken{-1, "e.txt", false}, Taken{-1, "f.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt", "d.txt", "e.txt", "f.txt"));
}

TEST_F(TakeNewFilesTest, TakesNothingTwice)
{
    Write({"a.txt", "b.txt"});
    Pass();
    taken.clear();

    Pass();

    EXPECT_THAT(taken, IsEmpty());
}

TEST_F(TakeNewFilesTest, LeavesMissingFilesAlone)
{
    Have({"a.txt", "b.txt"});
    folder.Remove(QStringLiteral("a.txt"));

    Pass();

    EXPECT_THAT(taken, IsEmpty());
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt"));
}

TEST_F(TakeNewFilesTest, TakesAFileOfAKnownNameInBeforeTheOthersOfThatName)
{
    Have({"a.txt", "b.txt", "c.txt"});
    Write({"sub/b.txt"});

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{1, "sub/b.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "sub/b.txt", "b.txt", "c.txt"));
}

TEST_F(TakeNewFilesTest, TakesALinkOfTheSameNameForTheFileThatIsThere)
{
    Have({"a.txt"});
    folder.MakeFolder(QStringLiteral("sub"));
    folder.Link(QStringLiteral("../a.txt"), QStringLiteral("sub/a.txt"));

    Pass();

    EXPECT_THAT(taken, IsEmpty());
}

TEST_F(TakeNewFilesTest, GoesOnWithTheNextFileAfterSuchALink)
{
    Have({"b.txt"});
    folder.MakeFolder(QStringLiteral("sub"));
    folder.Link(QStringLiteral("../b.txt"), QStringLiteral("sub/b.txt"));
    Write({"a.txt", "c.txt"});
    SetPredicate([](const QString&) { return true; });

    Pass();

    EXPECT_THAT(asked, ElementsAre("a.txt", "c.txt"));
    EXPECT_THAT(taken, ElementsAre(Taken{0, "a.txt", false}, Taken{-1, "c.txt", false}));
}

TEST_F(TakeNewFilesTest, TakesEveryFileIntoAnEmptySnapshotAlsoOneThatIsALinkToAnother)
{
    Write({"a.txt"});
    folder.MakeFolder(QStringLiteral("sub"));
    folder.Link(QStringLiteral("../a.txt"), QStringLiteral("sub/a.txt"));

    Pass();

    EXPECT_THAT(Paths(), UnorderedElementsAre("a.txt", "sub/a.txt"));
    EXPECT_THAT(taken, SizeIs(2));
}

TEST_F(TakeNewFilesTest, TakesAFileInAgainThatHasLeft)
{
    Write({"a.txt", "b.txt"});
    Pass();
    taken.clear();
    snapshot.RemoveAt(0);

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{0, "a.txt", false}));
}

TEST_F(TakeNewFilesTest, TakesAFileInThatAnotherHadReplaced)
{
    Write({"b.txt", "c.txt"});
    Pass();
    taken.clear();
    snapshot.Replace(0, NewFile("a.txt"));

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{1, "b.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(TakeNewFilesTest, TakesAllFilesInAgainAfterAClear)
{
    Write({"a.txt", "b.txt"});
    Pass();
    taken.clear();
    snapshot.Clear();

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{-1, "a.txt", true}, Taken{-1, "b.txt", true}));
}

TEST_F(TakeNewFilesTest, KnowsNoFileOfBeforeAClear)
{
    Have({"a.txt"});
    Pass();
    snapshot.Clear();
    snapshot.Append(NewFile("b.txt"));

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{0, "a.txt", false}));
}

TEST_F(TakeNewFilesTest, KnowsAFileOfWhichOneOfTwoEntriesHasLeft)
{
    Have({"a.txt", "b.txt"});
    snapshot.Insert(0, File("a.txt"));
    Pass();
    snapshot.RemoveAt(0);

    Pass();

    EXPECT_THAT(taken, IsEmpty());
}

TEST_F(TakeNewFilesTest, TakesNoFileInTwiceThatItIsGivenByAnotherSpellingOfTheFolder)
{
    Write({"a.txt", "b.txt"});
    Pass();
    taken.clear();
    const CurrentFolder here(folder.Path());

    snapshot.TakeNewFiles(QString(), issuer.Issue(), [this](int, const QFileInfo& info, bool) {
        taken.push_back({0, info.filePath().toStdString(), false});
    });

    EXPECT_THAT(taken, IsEmpty());
}

/// Files whose paths begin at the current folder.
class TakeNewRelativeFilesTest : public TakeNewFilesTest
{
protected:
    TakeNewRelativeFilesTest()
    {
        Write({"a.txt", "b.txt"});
        snapshot.Append(QFileInfo(QStringLiteral("./a.txt")));
        snapshot.Append(QFileInfo(QStringLiteral("./b.txt")));
        PassHere();
    }

    void PassHere()
    {
        snapshot.TakeNewFiles(QString(), issuer.Issue(), [this](int place, const QFileInfo& info, bool) {
            taken.push_back({place, info.filePath().toStdString(), false});
        });
    }

    const CurrentFolder here{folder.Path()};
};

TEST_F(TakeNewRelativeFilesTest, AreKnown)
{
    EXPECT_THAT(taken, IsEmpty());
}

TEST_F(TakeNewRelativeFilesTest, AreUnknownAgainWhenTheyHaveLeft)
{
    snapshot.RemoveAt(0);
    snapshot.Append(NewFile("c.txt"));

    PassHere();

    EXPECT_THAT(taken, ElementsAre(Taken{0, "./a.txt", false}));
}

TEST_F(TakeNewRelativeFilesTest, AreUnknownAgainWhenOthersHaveReplacedThem)
{
    snapshot.Replace(0, NewFile("0.txt"));
    snapshot.Append(NewFile("c.txt"));

    PassHere();

    EXPECT_THAT(taken, ElementsAre(Taken{1, "./a.txt", false}));
}

TEST_F(TakeNewFilesTest, AsksThePredicateAboutUnknownFilesOnly)
{
    Have({"a.txt", "c.txt"});
    Write({"b.txt", "d.txt"});
    SetPredicate([](const QString& name) { return name == QStringLiteral("d.txt"); });

    Pass();

    EXPECT_THAT(asked, ElementsAre("b.txt", "d.txt"));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "c.txt", "d.txt"));
}

TEST_F(TakeNewFilesTest, AsksThePredicateAboutEveryFileForAnEmptySnapshot)
{
    Write({"a.txt", "b.txt", "c.txt"});
    SetPredicate([](const QString& name) { return name != QStringLiteral("b.txt"); });

    Pass();

    EXPECT_THAT(asked, ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(taken, ElementsAre(Taken{-1, "a.txt", true}, Taken{-1, "c.txt", true}));
}

TEST_F(TakeNewFilesTest, AsksAgainAboutAFileThatWasTurnedAway)
{
    Have({"a.txt"});
    Write({"b.txt"});
    bool answer = false;
    SetPredicate([&](const QString&) { return answer; });
    Pass();
    ASSERT_THAT(taken, IsEmpty());

    answer = true;
    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{-1, "b.txt", false}));
}

TEST_F(TakeNewFilesTest, TakesNoMoreOnceTheWatchIsOver)
{
    Have({"a.txt"});
    Write({"b.txt", "c.txt"});
    SetPredicate([](const QString&) { return true; });
    afterEach = [this](const QString&) { issuer.Renew(); };

    Pass();

    EXPECT_THAT(taken, SizeIs(1));
    EXPECT_THAT(asked, SizeIs(1));
}

TEST_F(TakeNewFilesTest, TakesNoMoreOnceThePredicateHasEndedTheWatch)
{
    Write({"a.txt", "b.txt"});
    SetPredicate([this](const QString&) {
        issuer.Renew();
        return true;
    });

    Pass();

    EXPECT_THAT(taken, IsEmpty());
    EXPECT_THAT(asked, SizeIs(1));
}

TEST_F(TakeNewFilesTest, OutlivesThePredicateThatItAsks)
{
    Write({"a.txt", "b.txt"});
    const auto text = std::make_shared<std::string>("still here");
    std::string seen;
    snapshot.filter = [this, text, &seen](const QFileInfo&) {
        snapshot.Clear();
        seen = *text;
        return true;
    };

    Pass();

    EXPECT_EQ(seen, "still here");
}

TEST_F(TakeNewFilesTest, TakesNothingTwiceThatAPassInsideItHasTaken)
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

TEST_F(TakeNewFilesTest, TakesNothingTwiceThatAPassInsideThePredicateHasTaken)
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

TEST_F(TakeNewFilesTest, GoesOnAfterAFileThatAPassInsideThePredicateHasTaken)
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

TEST_F(TakeNewFilesTest, TakesNothingTwiceThatAPassInsideThePredicateHasPutIntoTheEmptySnapshot)
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

TEST_F(TakeNewFilesTest, FindsTheNewPlaceWhenThePredicateHasChangedTheSnapshot)
{
    Have({"b.txt", "d.txt"});
    Write({"c.txt"});
    SetPredicate([this](const QString&) {
        snapshot.RemoveAt(0);
        return true;
    });

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{0, "c.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("c.txt", "d.txt"));
}

TEST_F(TakeNewFilesTest, FindsTheNewPlaceWhenThePredicateHasReplacedAFile)
{
    Have({"a.txt", "z.txt"});
    Write({"m.txt"});
    SetPredicate([this](const QString&) {
        snapshot.Replace(1, NewFile("b.txt"));
        return true;
    });

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{-1, "m.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("a.txt", "b.txt", "m.txt"));
}

TEST_F(TakeNewFilesTest, FindsTheNewPlaceWhenThePredicateHasForgottenAllFiles)
{
    Have({"a.txt", "z.txt"});
    Write({"m.txt"});
    SetPredicate([this](const QString&) {
        snapshot.Clear();
        return true;
    });

    Pass();

    EXPECT_THAT(taken, ElementsAre(Taken{-1, "m.txt", false}));
    EXPECT_THAT(Paths(), ElementsAre("m.txt"));
}

TEST_F(TakeNewFilesTest, KeepsTheOrderWhenASlotHasRemovedAFile)
{
    Have({"b.txt", "d.txt"});
    Write({"a.txt", "c.txt", "e.txt"});
    afterEach = [this](const QString& name) {
        if (name == QStringLiteral("c.txt"))
            snapshot.RemoveAt(snapshot.GetInfoIndex(File("b.txt")));
    };

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("a.txt", "c.txt", "d.txt", "e.txt"));
}

TEST_F(TakeNewFilesTest, KeepsTheOrderWhenASlotHasAppendedAFile)
{
    const TempFolder other;
    const QFileInfo appended(other.Write(QStringLiteral("m.txt")));
    Write({"a.txt", "b.txt", "z.txt"});
    afterEach = [&](const QString& name) {
        if (name == QStringLiteral("a.txt"))
            snapshot.Append(appended);
    };

    Pass();

    EXPECT_THAT(NamesOf(snapshot.fileInfos), ElementsAre("a.txt", "b.txt", "m.txt", "z.txt"));
    EXPECT_THAT(taken,
                ElementsAre(Taken{-1, "a.txt", true}, Taken{1, "b.txt", true}, Taken{-1, "z.txt", true}));
}

TEST_F(TakeNewFilesTest, TakesWhatIsLeftWhenASlotHasForgottenTheFilesOfAnEmptySnapshot)
{
    Write({"a.txt", "b.txt", "c.txt"});
    afterEach = [this](const QString& name) {
        if (name == QStringLiteral("a.txt"))
            snapshot.RemoveAt(0);
    };

    Pass();

    EXPECT_THAT(Paths(), ElementsAre("b.txt", "c.txt"));
}

} // namespace
