// Whether a file counts as changed when its time changes: when QDateTime says that the two times of QFileInfo
// differ, in every zone. Around the start of 1970 that is not the same as comparing the numbers.

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/TimeZone.h"
#include "Tests/Support/WatcherFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace Tests {
namespace {

constexpr long long hour = 3600 * 1000LL;
constexpr long long day = 24 * hour;

/// Milliseconds since 1970: its start, times around it, its start in several zones, and one far from it.
constexpr std::array<long long, 15> times = {0,
                                             1,
                                             -1,
                                             1000,
                                             -1000,
                                             999,
                                             hour,
                                             -hour,
                                             5 * hour,
                                             -5 * hour,
                                             345 * 60'000,
                                             -345 * 60'000,
                                             day,
                                             -day,
                                             1'500'000'000'000};

/// The time of a file as QFileInfo reads it now.
QDateTime TimeOf(const QString& path)
{
    return QFileInfo(path).lastModified();
}

struct Zone
{
    const char* name;
    const char* text;
};

void PrintTo(const Zone& zone, std::ostream* out)
{
    *out << zone.name;
}

class FileTimeComparisonTest : public CheckerFixture, public testing::WithParamInterface<Zone>
{
protected:
    struct File
    {
        std::string path;
        long long first;
        long long second;
    };

    /// A file for each time before a change and each time after it.
    FileTimeComparisonTest()
    {
        for (const long long first : times) {
            for (const long long second : times) {
                const std::string name = std::to_string(first) + " to " + std::to_string(second);
                Write(name);
                files.push_back({name, first, second});
            }
        }
        GiveFirstTimes();
    }

    void GiveFirstTimes() const
    {
        for (const File& file : files)
            SetTime(file.path, std::chrono::milliseconds(file.first));
    }
    void GiveSecondTimes() const
    {
        for (const File& file : files)
            SetTime(file.path, std::chrono::milliseconds(file.second));
    }

    /// The log's entries for the files whose time differs from before.
    Texts Changed(const QList<QFileInfo>& before) const
    {
        Texts entries;
        for (const QFileInfo& info : before) {
            if (!(TimeOf(info.filePath()) == info.lastModified()))
                entries.push_back("FileChanged " + info.fileName().toStdString());
        }
        return entries;
    }

    /// The entries in only one of the lists: "missed: FileChanged 0 to 1".
    static Texts Differences(const Texts& reported, const Texts& byQDateTime)
    {
        Texts differences;
        for (const std::string& entry : reported) {
            if (std::find(byQDateTime.begin(), byQDateTime.end(), entry) == byQDateTime.end())
                differences.push_back("reported: " + entry);
        }
        for (const std::string& entry : byQDateTime) {
            if (std::find(reported.begin(), reported.end(), entry) == reported.end())
                differences.push_back("missed: " + entry);
        }
        return differences;
    }

    /// Copies of the snapshot's entries, with the times as they are now.
    QList<QFileInfo> Entries() const
    {
        QList<QFileInfo> entries;
        for (const QFileInfo& info : checker.GetFileInfoList()) {
            const QFileInfo own(info.filePath());
            own.lastModified();
            entries.append(own);
        }
        return entries;
    }

    const TimeZone zone{GetParam().text};
    std::vector<File> files;
};

TEST_P(FileTimeComparisonTest, ReportsNoChangeWhenTheTimesAreTheSame)
{
    Start();

    EXPECT_THAT(Check(), IsEmpty());
    GiveFirstTimes();
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_P(FileTimeComparisonTest, ReportsWhatQDateTimeFindsInAPassAndInOneThatRestoresTheTimes)
{
    Start();
    checker.CheckFolder();
    const QList<QFileInfo> before = Entries();
    GiveSecondTimes();
    EXPECT_THAT(Differences(Check(), Changed(before)), IsEmpty());

    // A file that was not reported has kept its stored time.
    QList<QFileInfo> stored = before;
    for (QFileInfo& info : stored) {
        if (!(TimeOf(info.filePath()) == info.lastModified())) {
            info = QFileInfo(info.filePath());
            info.lastModified();
        }
    }
    GiveFirstTimes();
    EXPECT_THAT(Differences(Check(), Changed(stored)), IsEmpty());
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_P(FileTimeComparisonTest, ReportsTheSameInTheFirstPassAfterAStart)
{
    Start();
    const QList<QFileInfo> before = Entries();

    GiveSecondTimes();

    EXPECT_THAT(Differences(Check(), Changed(before)), IsEmpty());
}

TEST_P(FileTimeComparisonTest, ReportsTheSameOnFileNotices)
{
    Zendra::LW::DirectoryWatcher watcher;
    ASSERT_TRUE(watcher.StartWatching(folder.Path(), {}, {}, 0));
    const SignalLog watcherLog(watcher, folder.Path());
    Start();
    const QList<QFileInfo> before = Entries();
    GiveSecondTimes();

    for (const QFileInfo& info : before)
        watcher.OnFileChanged(info.filePath());

    EXPECT_THAT(Differences(watcherLog.Entries(), Changed(before)), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Zones, FileTimeComparisonTest,
                         testing::Values(Zone{"Utc", "UTC0"}, Zone{"OneEast", "CET-1"},
                                         Zone{"FiveWest", "EST5"},
                                         Zone{"FiveAndThreeQuartersEast", "NPT-5:45"},
                                         Zone{"NineWestWithDaylightSaving", "AKST9AKDT,M3.2.0,M11.1.0"},
                                         Zone{"ThirteenEast", "TOT-13"}),
                         [](const auto& row) { return row.param.name; });

// A file of 1970-01-01 00:00 UTC, for which QFileInfo has no time

using FileOfTheEpochTest = FileTimeComparisonTest;

TEST_P(FileOfTheEpochTest, IsReportedWhenItGetsThatTimeAndWhenItLosesIt)
{
    const PathText path = "0 to 0";
    Start();
    checker.CheckFolder();

    for (const long long time : {1'500'000'000'000LL, 0LL, 1000LL, 0LL, day, 0LL, -day, 0LL}) {
        SetTime(path, std::chrono::milliseconds(time));
        EXPECT_THAT(Check(), ElementsAre("FileChanged 0 to 0")) << time;
        EXPECT_THAT(Check(), IsEmpty()) << time;
    }
}

TEST_P(FileOfTheEpochTest, IsReportedWhenItIsRemoved)
{
    Start();
    checker.CheckFolder();

    Remove("0 to 0");

    EXPECT_THAT(Check(), ElementsAre("FileRemoved 0 to 0"));
}

INSTANTIATE_TEST_SUITE_P(Zones, FileOfTheEpochTest,
                         testing::Values(Zone{"Utc", "UTC0"}, Zone{"OneEast", "CET-1"},
                                         Zone{"FiveWest", "EST5"},
                                         Zone{"FiveAndThreeQuartersEast", "NPT-5:45"}),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace Tests
