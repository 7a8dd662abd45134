#include "Lib/Util/FS/FileTime.h"

#include "Tests/Support/TempFolder.h"
#include "Tests/Support/TimeZone.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Zendra::LW {
namespace {

using Tests::TempFolder;
using Tests::TimeZone;

/// A rule as TZ takes it, since not every system has a list of zones.
struct ZoneRow
{
    const char* name;
    const char* rule;
};

class FileTimeZoneTest : public testing::TestWithParam<ZoneRow>
{
};

TEST_P(FileTimeZoneTest, EqualsThatOfQFileInfoToTheMillisecond)
{
    const TimeZone zone(GetParam().rule);
    const TempFolder folder;
    const QString path = folder.Write("a");
    const timespec times[] = {{0, 0},           {0, 1000000},      {1500000000, 123000000},
                              {-1, 999000000},  {-86401, 1000000}, {4102444800, 999999999},
                              {1500000000, 999}};
    for (const timespec& time : times) {
        const timespec both[] = {time, time};
        ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), both, 0), 0);
        const qint64 expected = qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000;

        EXPECT_EQ(ReadModificationTime(path), expected);
        // QFileInfo treats the first millisecond of 1970 as no time.
        if (expected != 0) {
            EXPECT_EQ(ReadModificationTime(path), QFileInfo(path).lastModified().toMSecsSinceEpoch());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Zones, FileTimeZoneTest,
    testing::Values(ZoneRow{"Greenwich", "UTC0"}, ZoneRow{"FarWest", "<-11>11"}, ZoneRow{"West", "<-03>3"},
                    ZoneRow{"HalfAnHourEast", "<+0530>-5:30"},
                    ZoneRow{"SummerTimeOfHalfAnHour", "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0"},
                    ZoneRow{"FarEast", "<+13>-13"}),
    [](const testing::TestParamInfo<ZoneRow>& row) { return std::string(row.param.name); });

TEST(FileTimeTest, IsThatOfALinksTarget)
{
    const TempFolder folder;
    folder.Write("a");
    folder.SetModificationTime("a", QDateTime::fromMSecsSinceEpoch(1500000000123));
    const QString link = folder.Link("a", "link");

    EXPECT_EQ(ReadModificationTime(link), 1500000000123);
}

TEST(FileTimeTest, IsUnreadableWithoutAFile)
{
    const TempFolder folder;

    EXPECT_EQ(ReadModificationTime(folder.Path("missing")), unreadableTime);
    EXPECT_EQ(ReadModificationTime(folder.Link("missing", "link")), unreadableTime);
    EXPECT_EQ(ReadModificationTime(QString()), unreadableTime);
}

TEST(FileTimeTest, CanBeReadThroughAnOpenFolder)
{
    const TempFolder folder;
    folder.Write("a");
    folder.SetModificationTime("a", QDateTime::fromMSecsSinceEpoch(1500000000123));
    folder.Link("a", "link");
    const int descriptor = ::open(QFile::encodeName(folder.Path()).constData(), O_RDONLY);

    const qint64 times[] = {ReadModificationTime(descriptor, "a"), ReadModificationTime(descriptor, "link"),
                            ReadModificationTime(descriptor, "missing")};
    ::close(descriptor);

    EXPECT_EQ(times[0], 1500000000123);
    EXPECT_EQ(times[1], 1500000000123);
    EXPECT_EQ(times[2], unreadableTime);
}

} // namespace
} // namespace Zendra::LW
