#pragma once

#include "Tests/Support/FolderOperations.h"
#include "Tests/Support/Playground.h"

#include <string>
#include <vector>

namespace Tests {

/// A random run: performs file operations in a playground, checks after each turn what a watcher makes of
/// them, and remembers the steps for the report of a failure.
class RandomRun
{
public:
    RandomRun(const RandomRun&) = delete;
    RandomRun& operator=(const RandomRun&) = delete;

    /// Runs until this many file operations are done, the choices are used up, or something is wrong.
    ///
    /// @return what is wrong and the steps that led to it; empty when nothing is
    std::string Play(Choices& choices, int operationCount);

    int OperationCount() const { return operationsDone; }

protected:
    explicit RandomRun(const FolderOperations::Kinds& kinds);
    ~RandomRun() = default;

    virtual void TakeTurn(Choices& choices) = 0;

    /// Performs one operation. @return its description
    std::string PerformOperation(Choices& choices);
    /// Performs one to four operations.
    void PerformOperations(Choices& choices);

    void AddStep(const std::string& step) { steps.push_back(step); }
    /// Ends the run. Only the first failure counts; an empty text is none.
    void Fail(const std::string& text);
    bool HasFailed() const { return !failure.empty(); }

    const Playground playground;
    FolderOperations operations;

private:
    std::string Report() const;

    std::vector<std::string> steps;
    std::string failure;
    int operationsDone = 0;
};

} // namespace Tests
