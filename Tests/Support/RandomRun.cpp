#include "Tests/Support/RandomRun.h"

#include "Tests/Support/IndentedLines.h"

#include <algorithm>

namespace Tests {
namespace {

constexpr std::size_t reportedSteps = 60;

} // namespace

RandomRun::RandomRun(const FolderOperations::Kinds& kinds)
    : operations(playground.Path().toStdString(), kinds)
{
}

std::string RandomRun::Play(Choices& choices, int operationCount)
{
    while (!HasFailed() && operationsDone < operationCount && !choices.AreUsedUp())
        TakeTurn(choices);
    return HasFailed() ? Report() : std::string();
}

std::string RandomRun::PerformOperation(Choices& choices)
{
    steps.push_back(operations.Perform(choices));
    ++operationsDone;
    return steps.back();
}

void RandomRun::PerformOperations(Choices& choices)
{
    for (unsigned int left = 1 + choices.Below(4); left > 0; --left)
        PerformOperation(choices);
}

void RandomRun::Fail(const std::string& text)
{
    if (!HasFailed())
        failure = text;
}

std::string RandomRun::Report() const
{
    const auto first = steps.end() - static_cast<std::ptrdiff_t>(std::min(steps.size(), reportedSteps));
    std::string text = "after these steps:" + IndentedLines({first, steps.end()}, "    ") + "\n  " + failure;
    const std::string prefix = playground.Path().toStdString() + '/';
    for (auto at = text.find(prefix); at != std::string::npos; at = text.find(prefix, at))
        text.erase(at, prefix.size());
    return text;
}

} // namespace Tests
