#include "Lib/Util/FS/FolderListing.h"

#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/RandomFolder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSet>

#include <gmock/gmock.h>

#include <cerrno>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#ifdef __linux__
#    include <dirent.h>
#    include <dlfcn.h>
#endif

namespace {

/// What a test does to the folders that the library reads itself.
struct ReadFolders
{
    /// As some file systems do.
    bool hidesTypes = false;
    /// Fails with EIO after so many entries; -1 for never.
    int failsAfter = -1;
};

ReadFolders& Folders()
{
    static ReadFolders folders;
    return folders;
}

} // namespace

#ifdef __linux__
// In the place of the system's. Qt's own listings go by another name and are not touched.
extern "C" dirent* readdir(DIR* folder)
{
    static const auto systems = reinterpret_cast<dirent* (*)(DIR*)>(::dlsym(RTLD_NEXT, "readdir"));
    if (Folders().failsAfter == 0) {
        errno = EIO;
        return nullptr;
    }
    if (Folders().failsAfter > 0)
        --Folders().failsAfter;
    dirent* const entry = systems(folder);
    if (entry && Folders().hidesTypes)
        entry->d_type = DT_UNKNOWN;
    return entry;
}
#endif

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Tests::ByteFolder;
using Tests::CurrentFolder;
using Tests::TempFolder;
using Tests::RandomFolder;
using Zendra::LW::ListedFile;
using Zendra::LW::ListedFiles;
using Zendra::LW::ListingOptions;
using Zendra::LW::unreadableTime;
using Times = ListingOptions::Times;

enum class ListedFolders
{
    None,
    All
};

struct FolderListing : ListedFiles
{
    QStringList subfolders;
};

ListingOptions OptionsFor(const QStringList& nameFilters, ListedFolders folders)
{
    ListingOptions options;
    options.nameFilters = nameFilters;
    options.subfolders = folders == ListedFolders::All;
    return options;
}

FolderListing ListFolder(const QString& path, const QStringList& nameFilters, ListedFolders folders)
{
    FolderListing listing;
    listing.subfolders = Zendra::LW::ListFolder(path, OptionsFor(nameFilters, folders), listing);
    return listing;
}

FolderListing ListFolderWithQt(const QString& path, const QStringList& nameFilters, ListedFolders folders)
{
    FolderListing listing;
    listing.subfolders = Zendra::LW::ListFolderWithQt(path, OptionsFor(nameFilters, folders), listing);
    return listing;
}

std::vector<std::string> Texts(const QStringList& paths)
{
    std::vector<std::string> texts;
    for (const QString& path : paths)
        texts.push_back(path.toStdString());
    return texts;
}

std::vector<std::string> FilesOf(const FolderListing& listing)
{
    QStringList paths;
    for (const ListedFile& file : listing.files)
        paths.append(file.info.filePath());
    return Texts(paths);
}

/// A listing by Qt is the one to be held to.
void ExpectTheListingOfQt(const QString& path)
{
    for (const ListedFolders folders : {ListedFolders::None, ListedFolders::All}) {
        const FolderListing expected = ListFolderWithQt(path, {}, folders);

        const FolderListing listing = ListFolder(path, {}, folders);

        EXPECT_EQ(FilesOf(listing), FilesOf(expected));
        EXPECT_EQ(Texts(listing.subfolders), Texts(expected.subfolders));
        EXPECT_EQ(listing.hasLinks, expected.hasLinks);
    }
}

class FolderListingTest : public testing::Test
{
protected:
    ~FolderListingTest() override { Folders() = {}; }
};

/// Whether the file system tells the type of an entry with its name.
enum class Types
{
    Told,
    NotTold
};

std::ostream& operator<<(std::ostream& stream, Types types)
{
    return stream << (types == Types::Told ? "TypesTold" : "TypesNotTold");
}

class RandomListingTest : public FolderListingTest,
                        public testing::WithParamInterface<std::tuple<unsigned int, Types>>
{
protected:
    RandomListingTest() { Folders().hidesTypes = std::get<Types>(GetParam()) == Types::NotTold; }
};

TEST_P(RandomListingTest, EqualsThatOfQt)
{
    const RandomFolder folder(std::get<unsigned int>(GetParam()), true);

    ExpectTheListingOfQt(folder.Path());
    for (const QString& subfolder : ListFolderWithQt(folder.Path(), {}, ListedFolders::All).subfolders)
        ExpectTheListingOfQt(subfolder);
}

TEST_P(RandomListingTest, WithNonUtf8NamesEqualsThatOfQt)
{
    const ByteFolder folder;
    Write({"a", "\xc3\xa4", "\xff\xfe.txt", "\xc3", "\xed\xa0\x80", "sub\xff/b", "sub/c"});
    folder.Link("a", "link\xff");

    ExpectTheListingOfQt(QFile::decodeName(folder.Path().c_str()));
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomListingTest,
                         testing::Combine(testing::Range(1U, 9U),
                                          testing::Values(Types::Told, Types::NotTold)));

TEST_F(FolderListingTest, OfAMissingFolderIsEmpty)
{
    const TempFolder folder;
    Write("file");

    for (const QString& path : {Path("missing"), Path("file")})
        EXPECT_THAT(ListFolder(path, {}, ListedFolders::All).files, IsEmpty());
}

// The system takes such a path for the folder that the text before the zero names.
TEST_F(FolderListingTest, OfAPathWithAZeroCharacterEqualsThatOfQt)
{
    const TempFolder folder;
    Write({"a", "sub/b"});
    const QString path = folder.Path() + QLatin1Char('/') + QChar(QChar::Null);

    ExpectTheListingOfQt(path);
    EXPECT_THAT(ListFolder(path, {}, ListedFolders::All).files, IsEmpty());
}

TEST_F(FolderListingTest, HasFoldersOnlyIfAsked)
{
    const TempFolder folder;
    Write("sub/a");
    folder.Link("sub", "link");

    const FolderListing without = ListFolder(folder.Path(), {}, ListedFolders::None);
    const FolderListing with = ListFolder(folder.Path(), {}, ListedFolders::All);

    EXPECT_THAT(without.subfolders, IsEmpty());
    EXPECT_THAT(with.subfolders, SizeIs(2));
}

TEST_F(FolderListingTest, AppliesTheNameFiltersToTheFilesOnly)
{
    const TempFolder folder;
    Write({"a.txt", "b.mp4", "sub/c"});

    const FolderListing listing = ListFolder(folder.Path(), {QStringLiteral("*.txt")}, ListedFolders::All);

    EXPECT_THAT(FilesOf(listing), ElementsAre(Path("a.txt").toStdString()));
    EXPECT_THAT(Texts(listing.subfolders), ElementsAre(Path("sub").toStdString()));
}

TEST_F(FolderListingTest, TreatsAnEmptyPathAsTheCurrentFolder)
{
    const TempFolder folder;
    Write("a");
    const CurrentFolder here(folder.Path());

    EXPECT_THAT(FilesOf(ListFolder(QString(), {}, ListedFolders::None)), ElementsAre("./a"));
}

TEST_F(FolderListingTest, AppendsToTheGivenList)
{
    const TempFolder folder;
    Write({"1/a", "2/b"});
    ListedFiles listed;

    Zendra::LW::ListFolder(Path("1"), {}, listed);
    Zendra::LW::ListFolder(Path("2"), {}, listed);

    EXPECT_THAT(listed.files, SizeIs(2));
}

/// The two ways to list a folder, by the name filters that lead to them.
class ListingMethodTest : public FolderListingTest, public testing::WithParamInterface<QStringList>
{
protected:
    ListedFiles List(ListingOptions options) const
    {
        options.nameFilters = GetParam();
        options.subfolders = true;
        ListedFiles listed;
        Zendra::LW::ListFolder(folder.Path(), options, listed);
        return listed;
    }

    const QDateTime earlier = QDateTime::fromMSecsSinceEpoch(1500000000123);
    const QDateTime later = QDateTime::fromMSecsSinceEpoch(1600000000456);
    const TempFolder folder;
};

INSTANTIATE_TEST_SUITE_P(Ways, ListingMethodTest,
                         testing::Values(QStringList(), QStringList{QStringLiteral("*")}));

TEST_P(ListingMethodTest, LeavesOutKnownFilesAndLinks)
{
    Write({"a", "b", "c"});
    folder.Link("a", "link");
    folder.Link("a", "link2");
    const QSet<QString> known{Path("a"), Path("c"),
                              Path("link")};
    ListingOptions options;
    options.known = &known;

    QStringList paths;
    for (const ListedFile& file : List(options).files)
        paths.append(file.info.filePath());

    EXPECT_THAT(Texts(paths),
                testing::UnorderedElementsAre(Path("b").toStdString(),
                                              Path("link2").toStdString()));
}

TEST_P(ListingMethodTest, ListsAFolderInThePlaceOfAKnownFile)
{
    Write("a/b");
    const QSet<QString> known{Path("a")};
    ListingOptions options;
    options.nameFilters = GetParam();
    options.subfolders = true;
    options.known = &known;
    ListedFiles listed;

    EXPECT_THAT(Zendra::LW::ListFolder(folder.Path(), options, listed), SizeIs(1));
    EXPECT_THAT(listed.files, IsEmpty());
}

TEST_P(ListingMethodTest, ReadsTimesOnlyIfAsked)
{
    Write("a");
    SetTime("a", earlier);
    ListingOptions whileListing;
    whileListing.times = Times::ReadWhileListing;

    const ListedFile read = List(whileListing).files.constFirst();
    const ListedFile unread = List({}).files.constFirst();
    SetTime("a", later);

    EXPECT_EQ(read.modificationTime, earlier.toMSecsSinceEpoch());
    EXPECT_EQ(read.info.lastModified(), earlier);
    EXPECT_EQ(unread.modificationTime, unreadableTime);
    EXPECT_EQ(unread.info.lastModified(), later);
}

TEST_P(ListingMethodTest, ReadsTheTimeOfALinksTarget)
{
    Write("sub/a");
    SetTime("sub/a", earlier);
    folder.Link("sub/a", "link");
    ListingOptions options;
    options.times = Times::ReadWhileListing;

    EXPECT_EQ(List(options).files.constFirst().modificationTime, earlier.toMSecsSinceEpoch());
}

// What such a path leads to need not be what QFileInfo::absoluteFilePath() says.
TEST_P(ListingMethodTest, ReadsNoTimesForARelativeOrUncleanPath)
{
    Write("sub/a");
    const CurrentFolder here(folder.Path());
    ListingOptions options;
    options.nameFilters = GetParam();
    options.times = Times::ReadWhileListing;
    for (const QString& path : {Path("sub/../sub"), QStringLiteral("sub")}) {
        ListedFiles listed;
        Zendra::LW::ListFolder(path, options, listed);

        ASSERT_THAT(listed.files, SizeIs(1));
        EXPECT_EQ(listed.files.constFirst().modificationTime, unreadableTime);
    }
}

TEST_P(ListingMethodTest, TellsWhetherThereAreLinks)
{
    Write("a");
    folder.MakeFolder("sub");
    EXPECT_FALSE(List({}).hasLinks);

    folder.Link("a", "link");
    EXPECT_TRUE(List({}).hasLinks);
    Remove("link");

    folder.Link("sub", "link");
    EXPECT_TRUE(List({}).hasLinks);
}

#ifdef __linux__

TEST_F(FolderListingTest, LeavesNoFolderOpen)
{
    const TempFolder folder;
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    const uint before = descriptors.count();

    ListFolder(folder.Path(), {}, ListedFolders::All);

    EXPECT_EQ(QDir(descriptors.path()).count(), before);
}

TEST_F(FolderListingTest, EndsAtAReadError)
{
    const TempFolder folder;
    for (int file = 0; file < 5; ++file)
        folder.Write(QString::number(file));
    Folders().failsAfter = 4; // the folder itself and the one above are among them

    EXPECT_THAT(ListFolder(folder.Path(), {}, ListedFolders::All).files, testing::Not(IsEmpty()));
    EXPECT_THAT(ListFolder(folder.Path(), {}, ListedFolders::All).files, IsEmpty());
}

#endif

} // namespace
