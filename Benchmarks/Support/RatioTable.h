#pragma once

#include "Benchmarks/Support/Work.h"

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace Benchmarks {

/// Collects what the benchmarks measured and sets it down as a table in Markdown.
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
        std::map<std::string, std::vector<double>> milliseconds; ///< by doer, one a repetition
        std::map<std::string, double> bytesPerFile;
    };

    Row* FindRow(const std::string& title);

    std::vector<Row> rows;
};

} // namespace Benchmarks
