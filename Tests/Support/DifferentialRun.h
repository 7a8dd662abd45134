#pragma once

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/RandomRun.h"
#include "Tests/Support/ReferenceWatchers.h"
#include "Tests/Support/TimeZone.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Tests {

/// Calls two watchers after each turn of file operations, the library's and one that follows the rules
/// literally, and compares their signals, predicate calls and lists. It calls their handlers itself and does
/// not wait for notices.
///
/// The rules leave two things open. Files of one name come in the order in which the library lists them. When
/// a path leads to another file than before, a QFileInfo may or may not use what it remembers of the earlier
/// one: the run then creates new watchers.
///
/// During the run the process's current folder is the playground, and its time zone is one of several.
class DifferentialRun final : public RandomRun
{
public:
    DifferentialRun(WatcherKind watcherKind, Choices& choices);
    ~DifferentialRun();

    int StepCount() const { return stepsDone; }
    int EntryCount() const { return entriesSeen; }

private:
    using Entries = std::vector<std::string>;

    void TakeTurn(Choices& choices) override;
    void CreateWatchers();
    void TakeStep(Choices& choices);
    void Start(Choices& choices);
    void Stop();
    void NotifyOfEveryFile();
    ComparedWatcher::Predicate MakePredicate(unsigned int predicate, const ComparedWatcher& watcher,
                                             Entries& log) const;
    template <typename Act>
    void DoBoth(const std::string& step, Act act);
    void Compare();
    void Compare(const char* what, const Entries& library, const Entries& reference);
    void OrderAsLibrary(QList<QFileInfo>& sorted) const;
    void RecordTargets();
    bool HasAnyTargetChanged() const;

    const WatcherKind kind;
    const TimeZone zone;
    const CurrentFolder current;
    Entries libraryLog;
    Entries referenceLog;
    std::unique_ptr<ComparedWatcher> library;
    std::unique_ptr<ComparedWatcher> reference;
    bool isWatching = false;
    QList<QFileInfo>::size_type filesBeforeStep = 0;
    std::map<QString, QString> targets; ///< the canonical paths of the listed files, by path
    unsigned int generation = 0;        ///< one of the predicates depends on it
    int stepsDone = 0;
    int entriesSeen = 0;
};

} // namespace Tests
