#include "Benchmarks/Support/RatioTable.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace Benchmarks {
namespace {

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::string Format(const char* format, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string Time(double milliseconds)
{
    return Format(milliseconds < 10 ? "%.3f ms" : "%.0f ms", milliseconds);
}

} // namespace

RatioTable& RatioTable::Instance()
{
    static RatioTable table;
    return table;
}

void RatioTable::AddWork(const Work& work)
{
    if (!FindRow(work.title))
        rows.push_back({work, {}, {}});
}

RatioTable::Row* RatioTable::FindRow(const std::string& title)
{
    const auto row =
        std::find_if(rows.begin(), rows.end(), [&](const Row& each) { return each.work.title == title; });
    return row == rows.end() ? nullptr : &*row;
}

bool RatioTable::ReportContext(const Context& /*context*/)
{
    return true;
}

void RatioTable::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Iteration || run.error_occurred)
            continue;
        const std::string name = run.run_name.function_name;
        const std::size_t slash = name.rfind('/');
        Row* const row = FindRow(name.substr(0, slash));
        const std::string doer = name.substr(slash + 1);
        const double milliseconds = run.GetAdjustedCPUTime();
        row->milliseconds[doer].push_back(milliseconds);
        const auto memory = run.counters.find("bytesPerFile");
        if (memory != run.counters.end())
            row->bytesPerFile[doer] = memory->second;
        std::cerr << name << ": " << Time(milliseconds) << std::endl;
    }
}

void RatioTable::Print(std::ostream& out) const
{
    out << "| work | " << Doer::library << " | baselines | ratio | goal |\n|---|---|---|---|---|\n";
    for (const Row& row : rows) {
        const auto library = row.milliseconds.find(Doer::library);
        if (library == row.milliseconds.end())
            continue;
        const double own = Median(library->second);
        std::string baselines;
        std::string ratios;
        for (const auto& [doer, values] : row.milliseconds) {
            if (doer == Doer::library)
                continue;
            const double other = Median(values);
            const std::string separator = baselines.empty() ? "" : ", ";
            baselines += separator + doer + ' ' + Time(other);
            ratios += separator + Format("%.2f x ", own / other) + doer;
        }
        for (const auto& [doer, bytes] : row.bytesPerFile)
            ratios += ", memory a file " + doer + ' ' + Format("%.0f bytes", bytes);
        const std::string goal =
            row.work.mostRatio > 0 ? Format("at most %.2g x ", row.work.mostRatio) + row.work.against : "-";
        out << "| " << row.work.title << " | " << Time(own) << " | " << baselines << " | " << ratios << " | "
            << goal << " |\n";
    }
}

} // namespace Benchmarks
