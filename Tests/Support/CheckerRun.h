#pragma once

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/FolderModel.h"
#include "Tests/Support/RandomRun.h"

#include <memory>
#include <string>
#include <vector>

namespace Zendra::LW {
class DirectoryChecker;
}

namespace Tests {

/// Calls a DirectoryChecker after each turn of file operations and compares what it does with the model.
///
/// During the run the process's current folder is the playground.
class CheckerRun final : public RandomRun
{
public:
    CheckerRun();
    ~CheckerRun();

    int PassCount() const { return passesDone; }
    int SignalCount() const { return signalsSeen; }

private:
    void TakeTurn(Choices& choices) override;
    std::string TakeStep(Choices& choices);
    std::string Start(Choices& choices);
    FolderModel::Settings ChooseSettings(Choices& choices);
    void ChoosePredicate(Choices& choices);
    void BeginStep(const std::string& step);
    FolderModel::Observation Observe() const;
    void CreateChecker();

    const CurrentFolder current;
    FolderModel model;
    std::unique_ptr<Zendra::LW::DirectoryChecker> checker;
    unsigned int generation = 0;   ///< one of the predicates depends on it
    bool nextStartAppends = false; ///< the checker was started with an empty path and still counts as idle
    unsigned int predicateKind = 0;

    std::vector<std::string> trace;
    int passesDone = 0;
    int signalsSeen = 0;
};

} // namespace Tests
