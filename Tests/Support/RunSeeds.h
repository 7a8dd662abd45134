#pragma once

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

/// The seeds of a test's random runs and the length of each run. The environment may ask for others:
/// <prefix>_SEED for this seed alone, <prefix>_SEEDS for this many seeds, <prefix>_OPERATIONS for this many
/// operations in each run.
class RunSeeds
{
public:
    RunSeeds(std::string variablePrefix, unsigned int defaultSeedCount, unsigned int defaultOperationCount)
        : prefix(std::move(variablePrefix)), seedCount(defaultSeedCount),
          operationCount(defaultOperationCount)
    {
    }

    std::vector<unsigned int> Seeds() const
    {
        if (std::getenv((prefix + "_SEED").c_str()))
            return {Number("_SEED", 0)};
        std::vector<unsigned int> seeds;
        for (unsigned int seed = 1; seed <= Number("_SEEDS", seedCount); ++seed)
            seeds.push_back(seed);
        return seeds;
    }

    int OperationsPerSeed() const { return static_cast<int>(Number("_OPERATIONS", operationCount)); }

    std::string ReplayHint(unsigned int seed) const
    {
        return "To replay it, set " + prefix + "_SEED=" + std::to_string(seed) + ' ' + prefix
               + "_OPERATIONS=" + std::to_string(OperationsPerSeed());
    }

private:
    unsigned int Number(const char* name, unsigned int defaultNumber) const
    {
        const char* const text = std::getenv((prefix + name).c_str());
        return text ? static_cast<unsigned int>(std::strtoul(text, nullptr, 10)) : defaultNumber;
    }

    std::string prefix;
    unsigned int seedCount;
    unsigned int operationCount;
};

} // namespace Tests
