#include "Benchmarks/Support/RatioTable.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <utility>

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

bool Contains(const std::vector<std::string>& texts, const std::string& text)
{
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// The usual contenders first, then the others in their order.
std::vector<std::string> InColumnOrder(const std::vector<std::string>& contenders)
{
    std::vector<std::string> columns;
    for (const std::string& usual : {Contender::library, Contender::laterPass, Contender::raw,
                                     Contender::polling, Contender::transcription, Contender::bare}) {
        if (Contains(contenders, usual))
            columns.push_back(usual);
    }
    for (const std::string& contender : contenders) {
        if (!Contains(columns, contender))
            columns.push_back(contender);
    }
    return columns;
}

void PrintHeader(std::ostream& out, const std::vector<std::string>& columns)
{
    std::string line = "|";
    for (const std::string& column : columns) {
        out << "| " << column << ' ';
        line += "---|";
    }
    out << "|\n" << line << '\n';
}

std::string Joined(const std::vector<std::string>& texts)
{
    std::string joined;
    for (const std::string& text : texts)
        joined += (joined.empty() ? "" : "<br>") + text;
    return joined.empty() ? "-" : joined;
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
        rows.push_back({work, {}, {}, {}, {}});
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
        if (run.run_type != Run::RT_Iteration)
            continue;
        const std::string name = run.run_name.function_name;
        const std::size_t slash = name.rfind('/');
        Row* const row = FindRow(name.substr(0, slash));
        const std::string contender = name.substr(slash + 1);
        if (run.error_occurred) {
            row->failure = run.error_message;
            std::cerr << name << ": " << run.error_message << std::endl;
            continue;
        }
        if (!Contains(row->contenders, contender))
            row->contenders.push_back(contender);
        const double milliseconds = run.GetAdjustedCPUTime();
        row->milliseconds[contender].push_back(milliseconds);
        for (const auto& [counter, value] : run.counters)
            row->counters[contender][counter] = value;
        std::cerr << name << ": " << Time(milliseconds) << std::endl;
    }
}

bool RatioTable::IsMeasured(const Row& row)
{
    return row.failure.empty() && row.milliseconds.count(Contender::library) == 1;
}

std::vector<RatioTable::Outcome> RatioTable::Outcomes(const Row& row)
{
    return row.work.memory ? MemoryOutcomes(row) : TimeOutcomes(row);
}

std::vector<RatioTable::Outcome> RatioTable::TimeOutcomes(const Row& row)
{
    std::vector<Goal> goals = row.work.moreGoals;
    if (row.work.maxRatio > 0)
        goals.insert(goals.begin(), {row.work.against, row.work.maxRatio});

    std::vector<Outcome> outcomes;
    const double own = Median(row.milliseconds.at(Contender::library));
    for (const Goal& goal : goals) {
        const auto other = row.milliseconds.find(goal.against);
        if (other == row.milliseconds.end())
            continue; // excluded by --benchmark_filter
        const double ratio = own / Median(other->second);
        const bool isMissed = ratio > goal.maxRatio;
        std::string text = Format("at most %.2g x ", goal.maxRatio) + goal.against;
        if (goal.kind == Goal::Kind::Stretch)
            outcomes.push_back({"stretch: " + text + (isMissed ? ": not reached" : ": reached"), false});
        else
            outcomes.push_back(
                {text + (isMissed ? Format(": **missed** (%.3f)", ratio) : ": met"), isMissed});
    }
    return outcomes;
}

std::vector<RatioTable::Outcome> RatioTable::MemoryOutcomes(const Row& row)
{
    std::vector<Outcome> outcomes;
    const MemoryGoal& goal = *row.work.memory;
    const std::map<std::string, double>& bytes = row.counters.at(Contender::library);
    const auto growth = [&](const char* before, const char* after) {
        return bytes.at(after) / bytes.at(before);
    };
    const auto add = [&](const std::string& text, double value, double limit) {
        const bool isMissed = value > limit;
        outcomes.push_back({text + (isMissed ? Format(": **missed** (%.4g)", value) : ": met"), isMissed});
    };
    add(Format("at most %.0f bytes in use after the start", goal.maxBytes), bytes.at("inUseAfterStart"),
        goal.maxBytes);
    add(Format("in use after the passes: at most %.3g x", goal.maxGrowth),
        growth("inUseAfterStart", "inUseAfterPasses"), goal.maxGrowth);
    add(Format("from the system after the passes: at most %.3g x", goal.maxGrowth),
        growth("fromSystemAfterStart", "fromSystemAfterPasses"), goal.maxGrowth);
    return outcomes;
}

void RatioTable::PrintTimes(std::ostream& out, const char* heading, IsWanted isWanted) const
{
    std::vector<const Row*> wanted;
    std::vector<std::string> contenders;
    for (const Row& row : rows) {
        if (row.work.memory || !IsMeasured(row) || !isWanted(row))
            continue;
        wanted.push_back(&row);
        contenders.insert(contenders.end(), row.contenders.begin(), row.contenders.end());
    }
    if (wanted.empty())
        return;

    const std::vector<std::string> columns = InColumnOrder(contenders);
    std::vector<std::string> header = {"work"};
    header.insert(header.end(), columns.begin(), columns.end());
    header.emplace_back("goals");
    out << "### " << heading << "\n\n";
    PrintHeader(out, header);
    for (const Row* row : wanted) {
        const double own = Median(row->milliseconds.at(Contender::library));
        out << "| " << row->work.title << " |";
        for (const std::string& contender : columns) {
            const auto values = row->milliseconds.find(contender);
            if (values == row->milliseconds.end()) {
                out << " |";
                continue;
            }
            const double time = Median(values->second);
            out << ' ' << Time(time)
                << (contender == Contender::library ? "" : Format(" (%.2f x)", own / time)) << " |";
        }
        std::vector<std::string> goals;
        for (const Outcome& outcome : Outcomes(*row))
            goals.push_back(outcome.text);
        out << ' ' << Joined(goals) << " |\n";
    }
    out << '\n';
}

void RatioTable::PrintMemory(std::ostream& out) const
{
    bool isFirst = true;
    for (const Row& row : rows) {
        if (!row.work.memory || !IsMeasured(row))
            continue;
        if (std::exchange(isFirst, false)) {
            out << "### Memory\n\nBytes per file: in use, and obtained from the system by the heap.\n\n";
            PrintHeader(out, {"work", "contender", "in use after the start", "after ten passes",
                              "from the system after the start", "after ten passes", "goals"});
        }
        for (const std::string& contender : InColumnOrder(row.contenders)) {
            out << "| " << row.work.title << " | " << contender;
            for (const char* counter :
                 {"inUseAfterStart", "inUseAfterPasses", "fromSystemAfterStart", "fromSystemAfterPasses"})
                out << " | " << Format("%.0f", row.counters.at(contender).at(counter));
            std::vector<std::string> goals;
            if (contender == Contender::library) {
                for (const Outcome& outcome : Outcomes(row))
                    goals.push_back(outcome.text);
            }
            out << " | " << Joined(goals) << " |\n";
        }
    }
    if (!isFirst)
        out << '\n';
}

void RatioTable::PrintMissedGoals(std::ostream& out) const
{
    int goals = 0;
    int missed = 0;
    std::string explanations;
    for (const Row& row : rows) {
        if (!row.failure.empty())
            explanations += "- Not measured: " + row.work.title + ": " + row.failure + ".\n";
        if (!IsMeasured(row))
            continue;
        bool missesAny = false;
        for (const Outcome& outcome : Outcomes(row)) {
            ++goals;
            missed += outcome.isMissed ? 1 : 0;
            missesAny = missesAny || outcome.isMissed;
        }
        if (missesAny)
            explanations += "- " + row.work.title + ": "
                            + (row.work.whyMissed.empty() ? "not explained yet." : row.work.whyMissed) + '\n';
    }
    out << "### Missed goals\n\n"
        << missed << " of " << goals << " goals were missed" << (explanations.empty() ? "." : ":") << '\n'
        << (explanations.empty() ? "" : "\n") << explanations;
}

void RatioTable::Print(std::ostream& out) const
{
    PrintTimes(out, "The watchers", [](const Row& row) {
        return row.milliseconds.count(Contender::raw) + row.milliseconds.count(Contender::polling) > 0;
    });
    PrintTimes(out, "Other calls", [](const Row& row) {
        return row.milliseconds.count(Contender::raw) + row.milliseconds.count(Contender::polling) == 0;
    });
    PrintMemory(out);
    PrintMissedGoals(out);
}

} // namespace Benchmarks
