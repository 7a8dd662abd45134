#pragma once

#include "Lib/Util/FS/DirectoryChecker.h"
#include "Tests/Support/SignalLog.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/WatcherFixture.h"

#include <QFileInfo>
#include <QString>
#include <QStringList>

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

    /// Starts both in a folder below the test's own, which the test may then delete or rename.
    void StartBoth(unsigned int depth = 0, const QStringList& nameFilters = {}, const Predicate& filter = {})
    {
        ASSERT_TRUE(watcher->StartWatching(Path("root"), nameFilters, filter, depth));
        ASSERT_TRUE(checker.StartWatching(Path("root"), nameFilters, filter, depth));
        Clear();
    }

    void Clear()
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

    Texts CheckerFiles() const
    {
        Texts files;
        for (const QFileInfo& info : checker.GetFileInfoList())
            files.push_back(info.filePath().mid(folder.Path().size() + 1).toStdString());
        return files;
    }

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
