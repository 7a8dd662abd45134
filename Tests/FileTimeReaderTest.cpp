#include "Lib/Util/FS/FileTimeReader.h"

#include "Lib/Util/FS/FileTime.h"
#include "Tests/Support/FolderFixture.h"
#include "Tests/Support/Unprivileged.h"

#include <QDateTime>
#include <QDir>

#include <gtest/gtest.h>

#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Zendra::LW {
namespace {

class FileTimeReaderTest : public Tests::FolderFixture
{
protected:
    QString FileOfTime(const Tests::PathText& path, qint64 time) const
    {
        Write(path);
        SetTime(path, QDateTime::fromMSecsSinceEpoch(time));
        return Path(path);
    }

    FileTimeReader reader;
};

TEST_F(FileTimeReaderTest, ReadsTheTimesOfFilesInAnyOrderOfFolders)
{
    const std::vector<QString> paths{
        FileOfTime("a", 1500000000001),      FileOfTime("b", 1500000000002),
        FileOfTime("\u00e4", 1500000000003), FileOfTime("sub/a", 1500000000004),
        FileOfTime("sub/b", 1500000000005),  FileOfTime("sub/2/a", 1500000000006),
        FileOfTime("sub2/a", 1500000000007)};
    for (const int file : {0, 1, 2, 3, 4, 3, 5, 5, 0, 6, 3, 4, 1, 1, 1})
        EXPECT_EQ(reader.Read(paths[static_cast<std::size_t>(file)]), 1500000000001 + file);
}

TEST_F(FileTimeReaderTest, ReadsTheCurrentTimes)
{
    const QString path = FileOfTime("a", 1500000000001);
    for (const qint64 time : {1500000000001, 1500000000002, 1500000000003}) {
        FileOfTime("a", time);
        EXPECT_EQ(reader.Read(path), time);
    }
    Remove("a");
    EXPECT_EQ(reader.Read(path), unreadableTime);
}

TEST_F(FileTimeReaderTest, ReportsAMissingFileAsUnreadable)
{
    for (int time = 0; time < 3; ++time)
        EXPECT_EQ(reader.Read(Path("missing")), unreadableTime);
    for (int time = 0; time < 3; ++time)
        EXPECT_EQ(reader.Read(Path("missing/a")), unreadableTime);
}

TEST_F(FileTimeReaderTest, OpensTheFolderByNameAgainAfterClosingIt)
{
    const QString path = FileOfTime("sub/a", 1500000000001);
    FileOfTime("other/a", 1500000000002);
    ASSERT_EQ(reader.Read(path), 1500000000001);
    ASSERT_EQ(reader.Read(path), 1500000000001);
    folder.Rename("sub", "gone");
    folder.Rename("other", "sub");

    reader.CloseFolder();

    EXPECT_EQ(reader.Read(path), 1500000000002);
    EXPECT_EQ(reader.Read(path), 1500000000002);
}

// A closed descriptor must not be used again: its number may belong to another folder.
TEST_F(FileTimeReaderTest, MayCloseTheFolderAtAnyTime)
{
    const QString path = FileOfTime("a", 1500000000001);
    reader.CloseFolder();
    for (int time = 0; time < 3; ++time) {
        EXPECT_EQ(reader.Read(path), 1500000000001);
        EXPECT_EQ(reader.Read(path), 1500000000001);
        reader.CloseFolder();
        reader.CloseFolder();
    }
}

TEST_F(FileTimeReaderTest, ReadsByPathWhenNoFolderCanBeOpened)
{
    const QString path = FileOfTime("a", 1500000000001);
    rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);

    std::vector<qint64> times;
    for (int time = 0; time < 3; ++time)
        times.push_back(reader.Read(path));
    ::setrlimit(RLIMIT_NOFILE, &before);

    EXPECT_EQ(times, std::vector<qint64>(3, 1500000000001));
}

TEST_F(FileTimeReaderTest, ReadsInAFolderWithoutReadPermission)
{
    const QString path = FileOfTime("closed/a", 1500000000001);
    folder.SetPermissions("closed", 0111);
    folder.SetPermissions(".", 0755);

    const Tests::Unprivileged otherUser;

    for (int time = 0; time < 3; ++time)
        EXPECT_EQ(reader.Read(path), 1500000000001);
}

#ifdef __linux__

int CountOpenFiles()
{
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd")).count());
}

TEST_F(FileTimeReaderTest, HasAtMostOneFolderOpen)
{
    const int before = CountOpenFiles();
    {
        FileTimeReader other;
        for (const char* path : {"1/a", "2/a", "3/a"}) {
            const QString file = FileOfTime(path, 1500000000001);
            other.Read(file);
            EXPECT_EQ(CountOpenFiles(), before);
            other.Read(file);
            EXPECT_EQ(CountOpenFiles(), before + 1);
        }
        other.CloseFolder();
        EXPECT_EQ(CountOpenFiles(), before);
        other.Read(Path("1/a"));
        other.Read(Path("1/a"));
    }
    EXPECT_EQ(CountOpenFiles(), before);
}

#endif

} // namespace
} // namespace Zendra::LW
