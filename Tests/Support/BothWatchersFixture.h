#pragma once

#include "Lib/Util/FS/DirectoryChecker.h"
#include "Tests/Support/SignalLog.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/WatcherFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace Tests {

/// Both watchers, side by side: what each of them sees of the same events.
class BothWatchersFixture : public WatcherFixture
{
protected:
    void SetUp() override
    {
        if (const std::string why = Tests::WhyNoticesAreLate(); !why.empty())
            GTEST_SKIP() << why;
    }

    /// Starts both in a folder below the test's own, which the test may then delete or rename, and clears
    /// both logs.
    void StartBoth(unsigned int depth = 0, const NameFilters& nameFilters = {}, const Predicate& filter = {})
    {
        ASSERT_TRUE(watcher->StartWatching(Path("root"), nameFilters, filter, depth));
        ASSERT_TRUE(checker.StartWatching(Path("root"), nameFilters, filter, depth));
        ClearLogs();
    }

    void ClearLogs()
    {
        signalLog.Clear();
        checkerLog.Clear();
    }

    /// Lets both see all that has happened, and both report it.
    void Settle()
    {
        HandleAllNotices();
        checker.CheckFolder();
    }

    // Notices of one batch come in no particular order.
    Texts WatcherSaw() const { return Sorted(signalLog.Entries()); }
    Texts CheckerSaw() const { return Sorted(checkerLog.Entries()); }

    Texts CheckerFiles() const { return PathsOf(checker.GetFileInfoList(), folder.Path()); }

    Zendra::LW::DirectoryChecker checker;
    SignalLog checkerLog{checker, folder.Path()};

private:
    static Texts Sorted(Texts entries)
    {
        std::sort(entries.begin(), entries.end());
        return entries;
    }
};

} // namespace Tests
