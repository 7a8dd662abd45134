// Whether a file counts as changed when its time goes from one to another: as QDateTime compares what
// QFileInfo says of both, in every zone. Around the start of 1970 that is not what the numbers say.

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

/// In milliseconds since 1970: there, around there, midnight there in several zones, and far from it.
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

/// What QFileInfo says of a file, as it is now.
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
        QString path;
        long long first;
        long long second;
    };

    /// A file for each time and each that it then gets.
    FileTimeComparisonTest()
    {
        for (const long long first : times) {
            for (const long long second : times) {
                const QString name =
                    QString::number(first) + QStringLiteral(" to ") + QString::number(second);
                files.push_back({folder.Write(name), first, second});
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

    /// The entries of those whose time is another one than before.
    std::vector<std::string> Changed(const QList<QFileInfo>& before) const
    {
        std::vector<std::string> entries;
        for (const QFileInfo& info : before) {
            if (!(TimeOf(info.filePath()) == info.lastModified()))
                entries.push_back("FileChanged " + info.fileName().toStdString());
        }
        return entries;
    }

    /// What only one of both has: "missed: FileChanged 0 to 1".
    static std::vector<std::string> Differences(const std::vector<std::string>& reported,
                                                const std::vector<std::string>& byQDateTime)
    {
        std::vector<std::string> differences;
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

    /// Entries of their own, with the times as they are now.
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

TEST_P(FileTimeComparisonTest, FindsNoChangeWhereThereIsNone)
{
    Start();

    EXPECT_THAT(Check(), IsEmpty());
    GiveFirstTimes();
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_P(FileTimeComparisonTest, FindsWhatQDateTimeFindsInAPassAndInTheOneBack)
{
    Start();
    checker.CheckFolder();
    const QList<QFileInfo> before = Entries();
    GiveSecondTimes();
    EXPECT_THAT(Differences(Check(), Changed(before)), IsEmpty());

    // What was not found has kept its time of before.
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

TEST_P(FileTimeComparisonTest, FindsTheSameInTheFirstPassAfterAStart)
{
    Start();
    const QList<QFileInfo> before = Entries();

    GiveSecondTimes();

    EXPECT_THAT(Differences(Check(), Changed(before)), IsEmpty());
}

TEST_P(FileTimeComparisonTest, FindsTheSameByFileNotices)
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

// The file of 1970-01-01 00:00 UTC, which QFileInfo gives no time

using FileOfTheEpochTest = FileTimeComparisonTest;

TEST_P(FileOfTheEpochTest, IsSeenToGoThereAndToComeBack)
{
    const QString path = folder.Path(Text("0 to 0"));
    Start();
    checker.CheckFolder();

    for (const long long time : {1'500'000'000'000LL, 0LL, 1000LL, 0LL, day, 0LL, -day, 0LL}) {
        SetTime(path, std::chrono::milliseconds(time));
        EXPECT_THAT(Check(), ElementsAre("FileChanged 0 to 0")) << time;
        EXPECT_THAT(Check(), IsEmpty()) << time;
    }
}

TEST_P(FileOfTheEpochTest, IsStillSeenToVanish)
{
    Start();
    checker.CheckFolder();

    folder.Remove(Text("0 to 0"));

    EXPECT_THAT(Check(), ElementsAre("FileRemoved 0 to 0"));
}

INSTANTIATE_TEST_SUITE_P(Zones, FileOfTheEpochTest,
                         testing::Values(Zone{"Utc", "UTC0"}, Zone{"OneEast", "CET-1"},
                                         Zone{"FiveWest", "EST5"},
                                         Zone{"FiveAndThreeQuartersEast", "NPT-5:45"}),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace Tests
