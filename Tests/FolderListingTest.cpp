#include "Lib/Util/FS/FolderListing.h"

#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/FileTexts.h"
#include "Tests/Support/FolderFixture.h"
#include "Tests/Support/MakeKnownPaths.h"
#include "Tests/Support/NextFunction.h"
#include "Tests/Support/RandomFolder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <gmock/gmock.h>

#include <cerrno>
#include <ostream>
#include <tuple>

#ifdef __linux__
#    include <dirent.h>
#endif

namespace {

/// What the replacement of readdir() does.
struct ReaddirBehaviour
{
    /// Reports every type as unknown, as some file systems do.
    bool hidesTypes = false;
    /// Fails with EIO after so many entries; -1 for never.
    int failsAfter = -1;
};

ReaddirBehaviour& Readdir()
{
    static ReaddirBehaviour behaviour;
    return behaviour;
}

} // namespace

#ifdef __linux__
// Replaces the system's function for the library. Qt's listings call readdir64() and are not affected.
extern "C" dirent* readdir(DIR* folder)
{
    static const auto original = Tests::NextFunction<dirent*(DIR*)>("readdir");
    if (Readdir().failsAfter == 0) {
        errno = EIO;
        return nullptr;
    }
    if (Readdir().failsAfter > 0)
        --Readdir().failsAfter;
    dirent* const entry = original(folder);
    if (entry && Readdir().hidesTypes)
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
using Tests::NameFilters;
using Tests::RandomFolder;
using Tests::Texts;
using Tests::ToTexts;
using Zendra::LW::KnownPathFinder;
using Zendra::LW::KnownPaths;
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

ListingOptions OptionsFor(const NameFilters& nameFilters, ListedFolders folders)
{
    ListingOptions options;
    options.nameFilters = nameFilters;
    options.subfolders = folders == ListedFolders::All;
    return options;
}

FolderListing ListFolder(const QString& path, const NameFilters& nameFilters, ListedFolders folders)
{
    FolderListing listing;
    listing.subfolders = Zendra::LW::ListFolder(path, OptionsFor(nameFilters, folders), listing);
    return listing;
}

FolderListing ListFolderWithQt(const QString& path, const NameFilters& nameFilters, ListedFolders folders)
{
    FolderListing listing;
    listing.subfolders = Zendra::LW::ListFolderWithQt(path, OptionsFor(nameFilters, folders), listing);
    return listing;
}

Texts FilesOf(const ListedFiles& listed)
{
    Texts paths;
    for (const ListedFile& file : listed.files)
        paths.push_back(file.info.filePath().toStdString());
    return paths;
}

/// Compares the listing with one by Qt.
void ExpectTheListingOfQt(const QString& path)
{
    for (const NameFilters& filters : {NameFilters{}, NameFilters{"*[aeiou]*"}, NameFilters{"*.txt", "?"}}) {
        for (const ListedFolders folders : {ListedFolders::None, ListedFolders::All}) {
            const FolderListing expected = ListFolderWithQt(path, filters, folders);

            const FolderListing listing = ListFolder(path, filters, folders);

            EXPECT_EQ(FilesOf(listing), FilesOf(expected));
            EXPECT_EQ(ToTexts(listing.subfolders), ToTexts(expected.subfolders));
            EXPECT_EQ(listing.hasLinks, expected.hasLinks);
        }
    }
}

class FolderListingTest : public Tests::FolderFixture
{
protected:
    ~FolderListingTest() override { Readdir() = {}; }
};

/// Whether the file system reports the type of an entry with its name.
enum class Types
{
    Reported,
    Unknown
};

std::ostream& operator<<(std::ostream& stream, Types types)
{
    return stream << (types == Types::Reported ? "TypesReported" : "TypesUnknown");
}

class RandomListingTest : public FolderListingTest,
                          public testing::WithParamInterface<std::tuple<unsigned int, Types>>
{
protected:
    RandomListingTest() { Readdir().hidesTypes = std::get<Types>(GetParam()) == Types::Unknown; }
};

TEST_P(RandomListingTest, EqualsThatOfQt)
{
    const RandomFolder randomFolder(std::get<unsigned int>(GetParam()), true);

    ExpectTheListingOfQt(randomFolder.Path());
    for (const QString& subfolder : ListFolderWithQt(randomFolder.Path(), {}, ListedFolders::All).subfolders)
        ExpectTheListingOfQt(subfolder);
}

TEST_P(RandomListingTest, WithNonUtf8NamesEqualsThatOfQt)
{
    const ByteFolder byteFolder;
    for (const char* name : {"a", "\xc3\xa4", "\xff\xfe.txt", "\xc3", "\xed\xa0\x80", "sub\xff/b", "sub/c"})
        byteFolder.Write(name);
    byteFolder.Link("a", "link\xff");

    ExpectTheListingOfQt(QFile::decodeName(byteFolder.Path().c_str()));
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomListingTest,
                         testing::Combine(testing::Range(1U, 9U),
                                          testing::Values(Types::Reported, Types::Unknown)));

TEST_F(FolderListingTest, OfAMissingFolderIsEmpty)
{
    Write("file");

    for (const QString& path : {Path("missing"), Path("file")})
        EXPECT_THAT(ListFolder(path, {}, ListedFolders::All).files, IsEmpty());
}

// The system would open the folder that the text before the zero names.
TEST_F(FolderListingTest, OfAPathWithAZeroCharacterEqualsThatOfQt)
{
    Write({"a", "sub/b"});
    const QString path = folder.Path() + QLatin1Char('/') + QChar(QChar::Null);

    ExpectTheListingOfQt(path);
    EXPECT_THAT(ListFolder(path, {}, ListedFolders::All).files, IsEmpty());
}

TEST_F(FolderListingTest, HasFoldersOnlyIfAsked)
{
    Write("sub/a");
    folder.Link("sub", "link");

    const FolderListing without = ListFolder(folder.Path(), {}, ListedFolders::None);
    const FolderListing with = ListFolder(folder.Path(), {}, ListedFolders::All);

    EXPECT_THAT(without.subfolders, IsEmpty());
    EXPECT_THAT(with.subfolders, SizeIs(2));
}

TEST_F(FolderListingTest, AppliesTheNameFiltersToTheFilesOnly)
{
    Write({"a.txt", "b.mp4", "sub/c"});

    const FolderListing listing = ListFolder(folder.Path(), {"*.txt"}, ListedFolders::All);

    EXPECT_THAT(FilesOf(listing), ElementsAre(Path("a.txt").toStdString()));
    EXPECT_THAT(ToTexts(listing.subfolders), ElementsAre(Path("sub").toStdString()));
}

TEST_F(FolderListingTest, TreatsAnEmptyPathAsTheCurrentFolder)
{
    Write("a");
    const CurrentFolder here(folder.Path());

    EXPECT_THAT(FilesOf(ListFolder(QString(), {}, ListedFolders::None)), ElementsAre("./a"));
}

TEST_F(FolderListingTest, AppendsToTheGivenList)
{
    Write({"1/a", "2/b"});
    ListedFiles listed;

    Zendra::LW::ListFolder(Path("1"), {}, listed);
    Zendra::LW::ListFolder(Path("2"), {}, listed);

    EXPECT_THAT(listed.files, SizeIs(2));
}

/// How the library lists a folder: by itself, or with Qt when a name filter is unusual.
enum class Method
{
    Library,
    Qt
};

std::ostream& operator<<(std::ostream& stream, Method method)
{
    return stream << (method == Method::Library ? "Library" : "Qt");
}

class ListingMethodTest : public FolderListingTest, public testing::WithParamInterface<Method>
{
protected:
    static NameFilters Filters() { return GetParam() == Method::Qt ? NameFilters{"[a-z]*"} : NameFilters{}; }

    ListedFiles List(ListingOptions options) const
    {
        options.nameFilters = Filters();
        options.subfolders = true;
        ListedFiles listed;
        Zendra::LW::ListFolder(folder.Path(), options, listed);
        return listed;
    }

    const QDateTime earlier = QDateTime::fromMSecsSinceEpoch(1500000000123);
    const QDateTime later = QDateTime::fromMSecsSinceEpoch(1600000000456);
};

INSTANTIATE_TEST_SUITE_P(Methods, ListingMethodTest, testing::Values(Method::Library, Method::Qt));

TEST_P(ListingMethodTest, LeavesOutKnownFilesAndLinks)
{
    Write({"a", "b", "c"});
    folder.Link("a", "link");
    folder.Link("a", "link2");
    const KnownPaths known = Tests::MakeKnownPaths({Path("a"), Path("c"), Path("link")});
    KnownPathFinder finder(known);
    ListingOptions options;
    options.knownPaths = &finder;

    EXPECT_THAT(FilesOf(List(options)),
                testing::UnorderedElementsAre(Path("b").toStdString(), Path("link2").toStdString()));
}

TEST_P(ListingMethodTest, ListsAFolderInThePlaceOfAKnownFile)
{
    Write("a/b");
    const KnownPaths known = Tests::MakeKnownPaths({Path("a")});
    KnownPathFinder finder(known);
    ListingOptions options;
    options.nameFilters = Filters();
    options.subfolders = true;
    options.knownPaths = &finder;
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

// Such a path may lead to another file than QFileInfo::absoluteFilePath() says.
TEST_P(ListingMethodTest, ReadsNoTimesForARelativeOrUncleanPath)
{
    Write("sub/a");
    const CurrentFolder here(folder.Path());
    ListingOptions options;
    options.nameFilters = Filters();
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
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    const uint before = descriptors.count();

    ListFolder(folder.Path(), {}, ListedFolders::All);

    EXPECT_EQ(QDir(descriptors.path()).count(), before);
}

TEST_F(FolderListingTest, EndsAtAReadError)
{
    for (int file = 0; file < 5; ++file)
        folder.Write(QString::number(file));
    Readdir().failsAfter = 4; // including "." and ".."

    EXPECT_THAT(ListFolder(folder.Path(), {}, ListedFolders::All).files, testing::Not(IsEmpty()));
    EXPECT_THAT(ListFolder(folder.Path(), {}, ListedFolders::All).files, IsEmpty());
}

#endif

} // namespace
