#pragma once

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/FolderOperations.h"
#include "Tests/Support/Playground.h"
#include "Tests/Support/ReferenceWatchers.h"
#include "Tests/Support/TimeZone.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Tests {

/// Plays with files and with two watchers of them, the library's and one that follows the rules literally,
/// and compares what both do and hold after every step. Their handlers are called; no notice is waited for.
///
/// Two things are left open by the rules. Files of one name come in the order in which the library takes
/// them. When a path leads to another file than before, what a QFileInfo remembers of it counts or not: both
/// watchers start afresh then.
///
/// The process's current folder is the playground meanwhile, and its time zone is chosen.
class DifferentialRun
{
public:
    DifferentialRun(WatcherKind watcherKind, Choices& choices);
    ~DifferentialRun();

    /// Goes on until so many file operations are done, or there is a difference.
    ///
    /// @return the first difference and what led to it; empty when there is none
    std::string Play(Choices& choices, int operationCount);

    int OperationCount() const { return operationsDone; }
    int StepCount() const { return stepsDone; }
    int EntryCount() const { return entriesSeen; }

private:
    using Entries = std::vector<std::string>;

    void Renew();
    void TakeStep(Choices& choices);
    void Start(Choices& choices);
    void Stop();
    void NoticeEveryFile();
    ComparedWatcher::Predicate MakePredicate(unsigned int predicate, const ComparedWatcher& watcher,
                                             Entries& log) const;
    template <typename Act>
    void DoBoth(const std::string& step, Act act);
    void Compare();
    void Compare(const char* what, const Entries& library, const Entries& reference);
    void TakeOrderFromLibrary(QList<QFileInfo>& sorted) const;
    void NoteTargets();
    bool LeadsAnyPathElsewhere() const;

    const WatcherKind kind;
    const TimeZone zone;
    const Playground playground;
    const CurrentFolder current;
    FolderOperations operations;
    Entries libraryLog;
    Entries referenceLog;
    std::unique_ptr<ComparedWatcher> library;
    std::unique_ptr<ComparedWatcher> reference;
    bool isWatching = false;
    QList<QFileInfo>::size_type filesBeforeStep = 0;
    std::map<QString, QString> targets; ///< the paths without links, by path
    unsigned int generation = 0;        ///< what one of the predicates accepts depends on it

    Entries history;
    std::string difference;
    int operationsDone = 0;
    int stepsDone = 0;
    int entriesSeen = 0;
};

} // namespace Tests
