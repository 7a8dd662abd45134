#pragma once

#include "Lib/Util/FS/DirectoryChecker.h"
#include "Tests/Support/FolderFixture.h"
#include "Tests/Support/SignalLog.h"

namespace Tests {

/// A checker, a folder for it to check and the log of its signals.
class CheckerFixture : public FolderFixture
{
protected:
    /// Starts in the folder and clears the log.
    void Start(unsigned int depth = 0, const NameFilters& nameFilters = {}, const Predicate& filter = {})
    {
        ASSERT_TRUE(checker.StartWatching(folder.Path(), nameFilters, filter, depth));
        ClearLog();
    }

    /// The same, with these files in the folder, too.
    void StartWith(std::initializer_list<const char*> paths, unsigned int depth = 0,
                   const NameFilters& nameFilters = {}, const Predicate& filter = {})
    {
        Write(paths);
        Start(depth, nameFilters, filter);
    }

    /// What a further pass reports.
    const Texts& Check()
    {
        ClearLog();
        checker.CheckFolder();
        return signalLog.Entries();
    }

    /// The paths of the snapshot.
    Texts Files() const { return PathsOf(checker.GetFileInfoList(), folder.Path()); }
    /// The names alone.
    Texts FileNames() const { return NamesOf(checker.GetFileInfoList()); }
    QFileInfo Entry(int index) const { return checker.GetFileInfoList().at(index); }
    void ClearLog() { signalLog.Clear(); }

    Zendra::LW::DirectoryChecker checker;
    SignalLog signalLog{checker, folder.Path()};
};

} // namespace Tests
