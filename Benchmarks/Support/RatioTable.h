#pragma once

#include "Benchmarks/Support/Work.h"

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Benchmarks {

/// Collects the results of the benchmarks and prints them as tables in Markdown, with a column for each
/// contender, and whether each goal was met.
class RatioTable : public benchmark::BenchmarkReporter
{
public:
    static RatioTable& Instance();

    void AddWork(const Work& work);

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    void Print(std::ostream& out) const;

private:
    struct Row
    {
        Work work;
        std::vector<std::string> contenders;                     ///< in the order of their first runs
        std::map<std::string, std::vector<double>> milliseconds; ///< by contender, one value per repetition
        std::map<std::string, std::map<std::string, double>> counters; ///< by contender and name
        std::string failure;                                           ///< why it was not measured
    };

    /// Whether a goal was met, and its text in the table.
    struct Outcome
    {
        std::string text;
        bool isMissed;
    };

    using IsWanted = bool (*)(const Row& row);

    Row* FindRow(const std::string& title);
    static bool IsMeasured(const Row& row);
    static std::vector<Outcome> Outcomes(const Row& row);
    static std::vector<Outcome> TimeOutcomes(const Row& row);
    static std::vector<Outcome> MemoryOutcomes(const Row& row);
    void PrintTimes(std::ostream& out, const char* heading, IsWanted isWanted) const;
    void PrintMemory(std::ostream& out) const;
    void PrintMissedGoals(std::ostream& out) const;

    std::vector<Row> rows;
};

} // namespace Benchmarks
