#include "Lib/Util/FS/FolderScan.h"

#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/DeepFolder.h"
#include "Tests/Support/FileTexts.h"
#include "Tests/Support/FolderFixture.h"
#include "Tests/Support/MakeKnownPaths.h"
#include "Tests/Support/RandomFolder.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/Unprivileged.h"

#include <QDir>
#include <QFile>

#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace Zendra::LW {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;
using Tests::AreSortedByName;
using Tests::ByteFolder;
using Tests::CurrentFolder;
using Tests::DeepFolder;
using Tests::NameFilters;
using Tests::NamesOf;
using Tests::PathsOf;
using Tests::RandomFolder;
using Tests::TempFolder;
using Tests::Texts;
using Tests::ToQStringList;
using Tests::ToTexts;
using Tests::Unprivileged;

constexpr unsigned int everyLevel = std::numeric_limits<unsigned int>::max();

std::string Native(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

ListingOptions MatchingNames(const NameFilters& nameFilters)
{
    ListingOptions options;
    options.nameFilters = nameFilters;
    return options;
}

QList<QFileInfo> ScanFiles(const QString& dirPath, const NameFilters& nameFilters, unsigned int depth)
{
    QList<QFileInfo> infos;
    for (const ListedFile& file : GetFilesInDirRecursively(dirPath, depth, MatchingNames(nameFilters)).files)
        infos.append(file.info);
    return infos;
}

QList<QFileInfo> ScanSortedFiles(const QString& dirPath, const NameFilters& nameFilters, unsigned int depth)
{
    QList<QFileInfo> infos;
    const SortedFiles files = GetSortedFilesInDirRecursively(dirPath, depth, MatchingNames(nameFilters));
    for (int i = 0; i < files.size(); ++i)
        infos.append(files.at(i).info);
    return infos;
}

/// The simplest scan, with one listing for the files and one for the folders. The library's scan is compared
/// with it.
///
/// Unsorted and not NoSort: QDir replaces NoSort by its default, which sorts by name.
QList<QFileInfo> PlainScan(const QString& dirPath, const NameFilters& nameFilters, unsigned int depth)
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

class DirectoryScanTest : public Tests::FolderFixture
{
protected:
    Texts Scan(unsigned int depth, const NameFilters& nameFilters = {}) const
    {
        return PathsOf(ScanFiles(folder.Path(), nameFilters, depth), folder.Path());
    }
};

TEST_F(DirectoryScanTest, FindsOnlyTheFoldersOwnFilesAtDepthZero)
{
    Write({"b.txt", "A.txt", "sub/a.txt"});

    EXPECT_THAT(Scan(0), UnorderedElementsAre("b.txt", "A.txt"));
}

TEST_F(DirectoryScanTest, DescendsToTheGivenDepth)
{
    Write({"0.txt", "1/1.txt", "1/2/2.txt", "1/2/3/3.txt"});

    EXPECT_THAT(Scan(1), ElementsAre("0.txt", "1/1.txt"));
    EXPECT_THAT(Scan(2), ElementsAre("0.txt", "1/1.txt", "1/2/2.txt"));
    EXPECT_THAT(Scan(3), ElementsAre("0.txt", "1/1.txt", "1/2/2.txt", "1/2/3/3.txt"));
}

TEST_F(DirectoryScanTest, FindsFilesAtEveryLevelWithTheLargestDepth)
{
    std::string path;
    for (int level = 0; level < 40; ++level)
        path += "d/";
    Write(path + "a.txt");

    EXPECT_THAT(Scan(everyLevel), SizeIs(1));
    EXPECT_THAT(Scan(40), SizeIs(1));
    EXPECT_THAT(Scan(39), IsEmpty());
}

TEST_F(DirectoryScanTest, ListsTheFilesOfAFolderBeforeThoseOfItsSubfolders)
{
    Write({"a/b/1.txt", "a/z.txt", "a/y.txt", "z.txt"});

    const Texts found = Scan(2);

    ASSERT_THAT(found, SizeIs(4));
    EXPECT_EQ(found[0], "z.txt");
    EXPECT_THAT((Texts{found[1], found[2]}), UnorderedElementsAre("a/z.txt", "a/y.txt"));
    EXPECT_EQ(found[3], "a/b/1.txt");
}

TEST_F(DirectoryScanTest, NeverListsAFolder)
{
    folder.MakeFolder("a.txt");
    folder.MakeFolder("sub/b.txt");

    EXPECT_THAT(Scan(0), IsEmpty());
    EXPECT_THAT(Scan(5), IsEmpty());
    EXPECT_THAT(Scan(5, {"*.txt"}), IsEmpty());
}

TEST_F(DirectoryScanTest, SkipsHiddenFilesAndHiddenFolders)
{
    Write({".hidden.txt", ".hidden/a.txt", "sub/.hidden.txt", "sub/.hidden/b.txt", "sub/c.txt"});

    EXPECT_THAT(Scan(everyLevel), ElementsAre("sub/c.txt"));
    EXPECT_THAT(Scan(everyLevel, {".*"}), IsEmpty());
}

TEST_F(DirectoryScanTest, ListsALinkToAFileUnderItsOwnName)
{
    Write("out/of/reach.txt");
    folder.Link("out/of/reach.txt", "link.txt");

    EXPECT_THAT(Scan(0), ElementsAre("link.txt"));
}

TEST_F(DirectoryScanTest, EntersALinkToAFolder)
{
    const TempFolder elsewhere;
    elsewhere.Write("a.txt");
    folder.Link(elsewhere.Path(), "link");

    EXPECT_THAT(Scan(0), IsEmpty());
    EXPECT_THAT(Scan(1), ElementsAre("link/a.txt"));
}

TEST_F(DirectoryScanTest, EndsACycleOfLinksAtTheDepth)
{
    Write("a.txt");
    folder.Link(folder.Path(), "loop");

    EXPECT_THAT(Scan(3), ElementsAre("a.txt", "loop/a.txt", "loop/loop/a.txt", "loop/loop/loop/a.txt"));
}

TEST_F(DirectoryScanTest, EndsACycleOfLinksAtTheLargestDepth)
{
    Write("a.txt");
    folder.Link(folder.Path(), "loop");

    // The system follows only so many links in one path.
    EXPECT_THAT(Scan(everyLevel),
                ElementsAreArray(PathsOf(PlainScan(folder.Path(), {}, everyLevel), folder.Path())));
}

TEST_F(DirectoryScanTest, SkipsDanglingAndLoopingLinks)
{
    folder.Link("missing.txt", "dangling.txt");
    folder.Link("self.txt", "self.txt");
    folder.Link("there.txt", "back.txt");
    folder.Link("back.txt", "there.txt");

    EXPECT_THAT(Scan(2), IsEmpty());
}

TEST_F(DirectoryScanTest, SkipsWhatIsNeitherFileNorFolder)
{
    ASSERT_EQ(::mkfifo(Native(Path("fifo")).c_str(), 0600), 0);
    ASSERT_EQ(::mknod(Native(Path("socket")).c_str(), S_IFSOCK | 0600, 0), 0);

    EXPECT_THAT(Scan(2), IsEmpty());
}

TEST_F(DirectoryScanTest, ListsALinkToWhatIsNeitherFileNorFolder)
{
    folder.Link("/dev/null", "null.txt");

    EXPECT_THAT(Scan(0), ElementsAre("null.txt"));
}

TEST_F(DirectoryScanTest, FindsNothingInAnEmptyFolder)
{
    EXPECT_THAT(Scan(0), IsEmpty());
    EXPECT_THAT(Scan(3), IsEmpty());
}

TEST_F(DirectoryScanTest, FindsNothingInAMissingFolder)
{
    const QString missing = Path("missing");

    EXPECT_THAT(ScanFiles(missing, {}, 3), IsEmpty());
    EXPECT_THAT(ScanSortedFiles(missing, {}, 3), IsEmpty());
}

TEST_F(DirectoryScanTest, FindsNothingBelowAFile)
{
    const QString file = folder.Write("a.txt");

    EXPECT_THAT(ScanFiles(file, {}, 3), IsEmpty());
}

TEST_F(DirectoryScanTest, FindsNothingInAFolderThatItMayNotRead)
{
    Write("a.txt");
    folder.SetPermissions(".", 0111);

    const Unprivileged otherUser;

    EXPECT_THAT(Scan(3), IsEmpty());
}

TEST_F(DirectoryScanTest, SkipsASubfolderThatItMayNotRead)
{
    Write({"closed/a.txt", "open/b.txt"});
    folder.SetPermissions("closed", 0);
    folder.SetPermissions(".", 0755);

    const Unprivileged otherUser;

    EXPECT_THAT(Scan(3), ElementsAre("open/b.txt"));
}

TEST_F(DirectoryScanTest, ListsAFileThatItMayNotOpen)
{
    Write("a.txt");
    folder.SetPermissions("a.txt", 0);
    folder.SetPermissions(".", 0755);

    const Unprivileged otherUser;

    EXPECT_THAT(Scan(0), ElementsAre("a.txt"));
}

TEST_F(DirectoryScanTest, TreatsAnEmptyPathAsTheCurrentFolder)
{
    Write({"a.txt", "sub/b.txt"});
    const CurrentFolder here(folder.Path());

    const Texts found = PathsOf(ScanFiles(QString(), {}, 1));

    EXPECT_THAT(found, ElementsAreArray(PathsOf(PlainScan(QString(), {}, 1))));
    EXPECT_THAT(found, SizeIs(2));
}

TEST_F(DirectoryScanTest, KeepsARelativeRootInThePathsOfItsOwnFilesOnly)
{
    Write({"root/a.txt", "root/sub/b.txt"});
    const CurrentFolder here(folder.Path());

    const Texts found = PathsOf(ScanFiles(QStringLiteral("root"), {}, 1));

    EXPECT_THAT(found, ElementsAre("root/a.txt", Path("root/sub/b.txt").toStdString()));
}

class RootSpellingTest : public DirectoryScanTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(RootSpellingTest, GivesTheFilesOfAPlainScan)
{
    Write({"root/a.txt", "root/sub/b.txt"});
    folder.Link("root", "link");
    const CurrentFolder here(Path("root"));
    const QString spelling = QString::fromUtf8(GetParam());
    const QString root = spelling.startsWith(QLatin1Char('/')) ? folder.Path() + spelling : spelling;

    const Texts found = PathsOf(ScanFiles(root, {}, 1));

    EXPECT_THAT(found, ElementsAreArray(PathsOf(PlainScan(root, {}, 1))));
    EXPECT_THAT(found, SizeIs(2));
}

INSTANTIATE_TEST_SUITE_P(Relative, RootSpellingTest,
                         testing::Values("", ".", "./", "../root", "..//root/", "../link", "sub/..",
                                         "../link/../root/."));
INSTANTIATE_TEST_SUITE_P(Absolute, RootSpellingTest,
                         testing::Values("/root", "/root/", "//root///", "/./root/.", "/root/../root",
                                         "/link", "/link/"));

TEST_F(DirectoryScanTest, ScansTheRootOfTheFileSystem)
{
    const Texts found = PathsOf(ScanFiles(QStringLiteral("/"), {}, 0));

    EXPECT_THAT(found, ElementsAreArray(PathsOf(PlainScan(QStringLiteral("/"), {}, 0))));
}

TEST_F(DirectoryScanTest, ListsAFolderThatItMayNotEnterAsQtDoes)
{
    Write({"listed/a.txt", "listed/sub/b.txt"});
    folder.Link("a.txt", "listed/link.txt");
    folder.SetPermissions("listed", 0444);
    folder.SetPermissions(".", 0755);

    const Unprivileged otherUser;

    EXPECT_THAT(Scan(3), ElementsAreArray(PathsOf(PlainScan(folder.Path(), {}, 3), folder.Path())));
}

struct FilterRow
{
    const char* name;
    NameFilters nameFilters;
    Texts expected;
};

std::ostream& operator<<(std::ostream& stream, const FilterRow& row)
{
    return stream << row.name;
}

class NameFilterTest : public DirectoryScanTest, public testing::WithParamInterface<FilterRow>
{
};

TEST_P(NameFilterTest, KeepsTheFilesThatMatch)
{
    for (const char* name :
         {"a.mp4", "B.MP4", "c.mov", "mp4", "a[1].txt", "clips.old/d.mp4", "clips.old/e.mov"})
        folder.Write(name);

    EXPECT_THAT(Scan(1, GetParam().nameFilters), UnorderedElementsAreArray(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, NameFilterTest,
    testing::Values(
        FilterRow{
            "None", {}, {"a.mp4", "B.MP4", "c.mov", "mp4", "a[1].txt", "clips.old/d.mp4", "clips.old/e.mov"}},
        FilterRow{"Star",
                  {"*"},
                  {"a.mp4", "B.MP4", "c.mov", "mp4", "a[1].txt", "clips.old/d.mp4", "clips.old/e.mov"}},
        FilterRow{"CaseDoesNotMatter", {"*.mp4"}, {"a.mp4", "B.MP4", "clips.old/d.mp4"}},
        FilterRow{"UpperCaseFilter", {"*.MP4"}, {"a.mp4", "B.MP4", "clips.old/d.mp4"}},
        FilterRow{"Several", {"c*", "?.mp4"}, {"a.mp4", "B.MP4", "c.mov", "clips.old/d.mp4"}},
        FilterRow{"WholeName", {"mp4"}, {"mp4"}},
        FilterRow{"Set", {"[ad].mp4"}, {"a.mp4", "clips.old/d.mp4"}},
        FilterRow{"Range", {"[a-c].mp4"}, {"a.mp4", "B.MP4"}},
        FilterRow{"UsualAndUnusual", {"*.txt", "[^b].mp4"}, {"a.mp4", "a[1].txt", "clips.old/d.mp4"}},
        FilterRow{"AFoldersName", {"clips*"}, {}}, FilterRow{"APath", {"clips.old/*.mp4"}, {}},
        FilterRow{"NoneMatches", {"*.avi"}, {}}),
    [](const auto& testInfo) { return testInfo.param.name; });

struct OddName
{
    const char* description;
    std::string name;
};

std::ostream& operator<<(std::ostream& stream, const OddName& row)
{
    return stream << row.description;
}

class OddNameTest : public DirectoryScanTest, public testing::WithParamInterface<OddName>
{
};

TEST_P(OddNameTest, IsFoundAsAFileAndAsAFolder)
{
    const std::string& name = GetParam().name;
    const std::string below = "sub/" + name + '/' + name;
    Write(name);
    Write(below);

    EXPECT_THAT(Scan(2), ElementsAre(name, below));
}

INSTANTIATE_TEST_SUITE_P(Names, OddNameTest,
                         testing::Values(OddName{"Spaces", " two  words "}, OddName{"LineBreak", "one\ntwo"},
                                         OddName{"Tab", "\t"}, OddName{"Wildcards", "*?[a]"},
                                         OddName{"Backslash", "a\\b"}, OddName{"Quotes", "'\"`"},
                                         OddName{"Markup", "<b>&amp;"}, OddName{"Umlaut", "\u00c4.txt"},
                                         OddName{"DecomposedUmlaut", "A\u0308.txt"},
                                         OddName{"Emoji", "\U0001FACF"}, OddName{"Percent", "%1%n"},
                                         OddName{"Colon", "a:b"}, OddName{"Tilde", "~"},
                                         OddName{"TwoHundredFiftyFiveBytes", std::string(255, 'x')},
                                         OddName{"TwoHundredFiftyFiveBytesOfUmlauts",
                                                 QString(127, QChar(0xfc)).toStdString() + 'x'}),
                         [](const auto& testInfo) { return testInfo.param.description; });

TEST(NonUtf8NameTest, IsListedAsQtListsIt)
{
    const ByteFolder folder;
    for (const char* name :
         {"a.txt", "\xff\xfe.txt", "\xc3", "\xed\xa0\x80", "sub\xff/b.txt", "\xff/\xfe/c.txt"})
        folder.Write(name);
    const QString root = QFile::decodeName(folder.Path().c_str());

    const Texts found = PathsOf(ScanFiles(root, {}, 3));

    EXPECT_THAT(found, ElementsAreArray(PathsOf(PlainScan(root, {}, 3))));
    EXPECT_THAT(found, testing::Contains(folder.Path("a.txt")));
}

TEST(DeepFolderTest, IsScannedUpToTheLongestPath)
{
    const DeepFolder deep;
    ASSERT_EQ(deep.LongestPath().size(), PATH_MAX - 1);

    const Texts found = PathsOf(ScanFiles(deep.Path(), {}, everyLevel));

    EXPECT_THAT(found, testing::Contains(deep.LongestPath()));
    EXPECT_THAT(found, ElementsAreArray(PathsOf(PlainScan(deep.Path(), {}, everyLevel))));
}

class RandomFolderTest : public testing::TestWithParam<unsigned int>
{
protected:
    static const std::vector<NameFilters>& Filters()
    {
        static const std::vector<NameFilters> filters{
            {}, {"*.mp4"}, {"A*", "?.txt"}, {"[0-9]*"}, {".*"}, {QStringList{QString()}}, {"*\u00c4*"}};
        return filters;
    }

    static void ExpectThePlainScan(const QString& path, const QStringList& nameFilters, unsigned int depth)
    {
        SCOPED_TRACE("filters '" + nameFilters.join(QLatin1Char(' ')).toStdString() + "', depth "
                     + std::to_string(depth));
        const QList<QFileInfo> expected = PlainScan(path, nameFilters, depth);

        const QList<QFileInfo> scanned = ScanFiles(path, nameFilters, depth);
        const QList<QFileInfo> sorted = ScanSortedFiles(path, nameFilters, depth);

        EXPECT_THAT(PathsOf(scanned), ElementsAreArray(PathsOf(expected)));
        EXPECT_THAT(PathsOf(sorted), UnorderedElementsAreArray(PathsOf(expected)));
        EXPECT_TRUE(AreSortedByName(sorted));
    }
};

TEST_P(RandomFolderTest, HasTheSameFilesAsInAPlainScan)
{
    const RandomFolder folder(GetParam(), true);

    for (const NameFilters& nameFilters : Filters()) {
        for (const unsigned int depth : {0U, 1U, 3U})
            ExpectThePlainScan(folder.Path(), nameFilters, depth);
    }
}

TEST_P(RandomFolderTest, HasTheSameFilesAsInAPlainScanOfEveryLevel)
{
    const RandomFolder folder(GetParam(), false);

    for (const NameFilters& nameFilters : Filters())
        ExpectThePlainScan(folder.Path(), nameFilters, everyLevel);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomFolderTest, testing::Range(1U, 13U));

class SortedScanTest : public DirectoryScanTest
{
protected:
    Texts SortedScan(unsigned int depth) const
    {
        return PathsOf(ScanSortedFiles(folder.Path(), {}, depth), folder.Path());
    }
};

TEST_F(SortedScanTest, ComparesNamesByTheirCodeUnits)
{
    // In this order: digits, upper case, lower case, umlauts; and an emoji, whose code units are surrogates,
    // before a character with a smaller code point.
    const Texts inOrder{" a",    "10", "9",  "A", "A1",     "A\u0308", "B.mov",      "Z",     "a",
                        "a.mov", "aB", "ab", "z", "\u00c4", "\u00e4",  "\U0001F600", "\uff5e"};
    for (const std::string& name : inOrder)
        Write(name);

    EXPECT_THAT(SortedScan(0), ElementsAreArray(inOrder));
}

TEST_F(SortedScanTest, ComparesOnlyNames)
{
    Write({"a/c.txt", "b/b.txt", "c/a.txt", "A.txt", "d.txt"});

    EXPECT_THAT(SortedScan(0), ElementsAre("A.txt", "d.txt"));
    EXPECT_THAT(SortedScan(1), ElementsAre("A.txt", "c/a.txt", "b/b.txt", "a/c.txt", "d.txt"));
}

struct NameList
{
    const char* description;
    Texts names;
};

std::ostream& operator<<(std::ostream& stream, const NameList& row)
{
    return stream << row.description;
}

class SortOrderTest : public SortedScanTest, public testing::WithParamInterface<NameList>
{
};

TEST_P(SortOrderTest, EqualsThatOfQStrings)
{
    for (const std::string& name : GetParam().names)
        Write(name);
    QStringList names = ToQStringList(GetParam().names);
    std::sort(names.begin(), names.end());

    EXPECT_THAT(SortedScan(0), ElementsAreArray(ToTexts(names)));
}

Texts Numbered(const std::string& before, const std::string& after)
{
    Texts names;
    for (int number = 0; number < 300; ++number)
        names.push_back(before + std::to_string(number * 7919 % 100003) + after);
    return names;
}

Texts Prefixes(const std::string& text)
{
    Texts names;
    for (std::size_t length = 1; length <= text.size(); ++length)
        names.push_back(text.substr(0, length));
    return names;
}

INSTANTIATE_TEST_SUITE_P(
    Names, SortOrderTest,
    testing::Values(
        NameList{"WithACommonPrefix", Numbered("Recording ", ".mp4")},
        NameList{"WithACommonSuffix", Numbered("", " - a recording.mp4")},
        NameList{"ThatArePrefixesOfEachOther", Prefixes("abcdefghijklmnop")},
        NameList{"ThatDifferLate", Texts{"abcdefgh", "abcdefgH", "abcdefg", "b"}},
        NameList{"ThatDifferInTheLastOfFourCharacters", Texts{"x123", "y124", "x124", "x12", "x1230"}},
        NameList{"BeyondTheFirstByte", Texts{"\u0100a", "\u00ffb", "a\uff5e", "a\U0001F600", "ab"}},
        NameList{"WithAllBitsOfACharacter", Texts{"\u4e00", "\u3042", "\uac00", "b\uff5e", "ca", "bb\uff5e",
                                                  "bca", "bbb\uff5e", "bbca"}},
        NameList{"OnlyOne", Texts{"a"}}),
    [](const auto& testInfo) { return testInfo.param.description; });

TEST_F(SortedScanTest, KeepsFilesOfOneNameTogether)
{
    Write({"1/b.txt", "2/b.txt", "3/b.txt", "1/a.txt", "2/c.txt", "b.txt"});

    const QList<QFileInfo> sorted = ScanSortedFiles(folder.Path(), {}, 1);

    EXPECT_THAT(NamesOf(sorted), ElementsAre("a.txt", "b.txt", "b.txt", "b.txt", "b.txt", "c.txt"));
    EXPECT_THAT(PathsOf(sorted, folder.Path()),
                UnorderedElementsAre("1/a.txt", "1/b.txt", "2/b.txt", "3/b.txt", "b.txt", "2/c.txt"));
}

TEST_F(SortedScanTest, AppliesTheNameFilters)
{
    Write({"b.mp4", "a.mov", "sub/a.mp4"});

    const QList<QFileInfo> sorted = ScanSortedFiles(folder.Path(), {"*.mp4"}, 1);

    EXPECT_THAT(NamesOf(sorted), ElementsAre("a.mp4", "b.mp4"));
}

TEST_F(DirectoryScanTest, LeavesOutKnownFilesInEveryFolder)
{
    Write({"a.txt", "b.txt", "sub/a.txt", "sub/b.txt"});
    const KnownPaths known = Tests::MakeKnownPaths({Path("b.txt"), Path("sub/a.txt")});
    KnownPathFinder finder(known);
    ListingOptions options;
    options.knownPaths = &finder;

    const SortedFiles files = GetSortedFilesInDirRecursively(folder.Path(), 1, options);

    ASSERT_EQ(files.size(), 2);
    EXPECT_EQ(files.at(0).info.filePath(), Path("a.txt"));
    EXPECT_EQ(files.at(1).info.filePath(), Path("sub/b.txt"));
}

TEST_F(DirectoryScanTest, TellsWhetherThereIsALinkAtAnyLevel)
{
    Write("1/2/a.txt");
    EXPECT_FALSE(GetFilesInDirRecursively(folder.Path(), 3, {}).hasLinks);

    folder.Link("a.txt", "1/2/b.txt");

    EXPECT_FALSE(GetFilesInDirRecursively(folder.Path(), 1, {}).hasLinks);
    EXPECT_TRUE(GetFilesInDirRecursively(folder.Path(), 3, {}).hasLinks);
    EXPECT_TRUE(GetSortedFilesInDirRecursively(folder.Path(), 3, {}).HasLinks());
}

} // namespace
} // namespace Zendra::LW
