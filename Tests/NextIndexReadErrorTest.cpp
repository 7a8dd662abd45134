#include "Lib/Util/FS/DirectoryUtils.h"

#include "Tests/Support/NextFunction.h"
#include "Tests/Support/TempFolder.h"

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/exception.hpp>

#include <gmock/gmock.h>

#include <cerrno>
#include <limits>
#include <utility>

#include <dirent.h>

namespace {

/// How many more entries can be read before reading fails.
int readableEntries = std::numeric_limits<int>::max();

/// The number of reads.
int reads = 0;

} // namespace

/// Replaces the function of the system.
extern "C" dirent64* readdir64(DIR* folder)
{
    ++reads;
    if (readableEntries == 0) {
        errno = EIO;
        return nullptr;
    }
    --readableEntries;
    static const auto system = Tests::NextFunction<dirent64*(DIR*)>("readdir64");
    return system(folder);
}

namespace {

class NextIndexReadErrorTest : public testing::Test
{
protected:
    NextIndexReadErrorTest()
    {
        for (const char* name : {"a1", "a2", "a3"})
            folder.Write(name);
    }

    ~NextIndexReadErrorTest() override { readableEntries = std::numeric_limits<int>::max(); }

    std::string Next() const
    {
        return Zendra::LW::GetNextAvaliableIndex(folder.Path().toStdString(), std::regex(R"(a(\d+))"));
    }

    const Tests::TempFolder folder;
};

TEST_F(NextIndexReadErrorTest, ThrowsWhenReadingTheFolderFailsMidway)
{
    ASSERT_EQ(Next(), "4");

    // Three files, the folder itself and its parent: at least one file comes before the failure.
    readableEntries = 4;

    try {
        Next();
        FAIL() << "the failure was treated as the end of the folder";
    } catch (const boost::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.code().value(), EIO);
    }
}

TEST_F(NextIndexReadErrorTest, ReturnsTheNumberOnceTheFolderCanBeReadAgain)
{
    readableEntries = 4;
    ASSERT_THROW(Next(), boost::filesystem::filesystem_error);

    readableEntries = std::numeric_limits<int>::max();

    EXPECT_EQ(Next(), "4");
}

TEST_F(NextIndexReadErrorTest, ReadsTheFolderOnce)
{
    reads = 0;
    for (boost::filesystem::directory_iterator entry(folder.Path().toStdString()), end; entry != end;
         ++entry) {
    }
    const int readsOfAWalk = std::exchange(reads, 0);

    Next();

    EXPECT_GT(readsOfAWalk, 3);
    EXPECT_EQ(reads, readsOfAWalk);
}

} // namespace
