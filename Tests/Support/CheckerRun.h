#pragma once

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/FolderModel.h"
#include "Tests/Support/FolderOperations.h"
#include "Tests/Support/Playground.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Zendra::LW {
class DirectoryChecker;
}

namespace Tests {

/// Plays with files and with a DirectoryChecker that watches them, and compares it with the model after every
/// step.
///
/// The process's current folder is the playground meanwhile.
class CheckerRun
{
public:
    CheckerRun();
    ~CheckerRun();

    /// Goes on until so many file operations are done, the choices are used up, or something is wrong.
    ///
    /// @return what is wrong and what led to it; empty when all is well
    std::string Play(Choices& choices, int operationCount);

    int OperationCount() const { return operationsDone; }
    int PassCount() const { return passesDone; }
    int SignalCount() const { return signalsSeen; }

private:
    std::string TakeStep(Choices& choices);
    std::string Start(Choices& choices);
    FolderModel::Settings ChooseSettings(Choices& choices);
    void ChoosePredicate(Choices& choices);
    void Begin(const std::string& step);
    FolderModel::Observation Observed() const;
    void Renew();

    const Playground playground;
    const CurrentFolder current;
    FolderOperations operations;
    FolderModel model;
    std::unique_ptr<Zendra::LW::DirectoryChecker> checker;
    /// Whether a name is accepted may depend on the step.
    unsigned int generation = 0;
    bool addsToFilesOfBefore = false; ///< after a start with an empty path
    unsigned int predicateKind = 0;

    std::vector<std::string> trace;
    std::vector<std::string> history;
    int operationsDone = 0;
    int passesDone = 0;
    int signalsSeen = 0;
};

} // namespace Tests
