#include "Lib/Util/FS/DirectoryUtils.h"

#include "Tests/Support/ByteFolder.h"

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/path.hpp>
#include <boost/multiprecision/cpp_int.hpp>

#include <gmock/gmock.h>

#include <regex>
#include <string>
#include <vector>

// Compares every grammar and flag of a pattern with a plain implementation of the rules.

using Zendra::ioPath;
using Zendra::LW::GetNextAvaliableIndex;

namespace {

/// The rules in terms of std::smatch and path::filename().
std::string ReferenceNextIndex(const ioPath& folder, const std::regex& pattern)
{
    boost::multiprecision::cpp_int maximum = 0;
    for (auto entry = folder.iterator(); entry != boost::filesystem::directory_iterator(); ++entry) {
        const std::string name = entry->path().filename().string();
        std::smatch match;
        if (!std::regex_match(name, match, pattern) || match.size() < 2 || match[1].length() == 0)
            continue;
        const boost::multiprecision::cpp_int number(match[1].str());
        if (number > maximum)
            maximum = number;
    }
    return boost::multiprecision::cpp_int(maximum + 1).str();
}

struct Row
{
    const char* name;
    std::vector<std::string> entries;
    const char* pattern;
    std::regex::flag_type flags;
    const char* next;
};

void PrintTo(const Row& row, std::ostream* stream)
{
    *stream << row.pattern;
}

class NextIndexGrammarTest : public testing::TestWithParam<Row>
{
};

TEST_P(NextIndexGrammarTest, CountsAsTheReferenceDoes)
{
    const Tests::ByteFolder folder;
    for (const std::string& entry : GetParam().entries)
        folder.Write(entry);
    const std::regex pattern(GetParam().pattern, GetParam().flags);

    const std::string next = GetNextAvaliableIndex(folder.Path(), pattern);

    EXPECT_EQ(next, ReferenceNextIndex(folder.Path(), pattern));
    EXPECT_EQ(next, GetParam().next);
}

const std::vector<std::string> takes = {"a1", "a22", "A333", "b4444", "a5\nb6", "a(7)", "a+8", "a", "9"};
const std::vector<std::string> repetitions = {"11", "12", "33", "2121", "4343", "a7-7", "a8-9"};

const std::vector<Row> grammars = {
    {"ECMAScript", takes, R"(a(\d+))", std::regex::ECMAScript, "23"},
    {"Basic", takes, R"(a\([0-9]*\))", std::regex::basic, "23"},
    {"BasicMatchesAPlusLiterally", takes, R"(a+\([0-9]*\))", std::regex::basic, "9"},
    {"Extended", takes, "[ab]([0-9]+)", std::regex::extended, "4445"},
    {"ExtendedAlternatives", takes, "(a|b)([0-9]+)|([0-9]+)", std::regex::extended | std::regex::nosubs, "1"},
    {"ExtendedInterval", takes, "[ab]([0-9]{2})", std::regex::extended, "23"},
    {"Awk", takes, "[ab]([0-9]+)", std::regex::awk, "4445"},
    {"AwkEscape", takes, R"(a\053([0-9]+))", std::regex::awk, "9"},
    {"Grep", takes, R"(a\([0-9]*\))", std::regex::grep, "23"},
    {"GrepAlternativeLines", takes, "x\\([0-9]\\)\nb[0-9]*\na\\([0-9]*\\)", std::regex::grep, "1"},
    {"Egrep", takes, "a([0-9]+)", std::regex::egrep, "23"},
    {"EgrepAlternativeLines", takes, "a([0-9]+)\nb([0-9]+)", std::regex::egrep, "23"},
};

const std::vector<Row> flags = {
    {"IgnoresCase", takes, R"(a(\d+))", std::regex::icase, "334"},
    {"NoGroups", takes, R"(a(\d+))", std::regex::nosubs, "1"},
    {"Optimized", takes, R"(a(\d+))", std::regex::optimize, "23"},
    {"Collating", takes, R"([a-b](\d+))", std::regex::collate, "4445"},
    {"CollatingIgnoresCase", takes, R"([a-b](\d+))", std::regex::collate | std::regex::icase, "4445"},
    {"MultilineAnchorsMatchInsideTheName", takes, R"(a(\d+)$\n^b\d)",
     std::regex::ECMAScript | std::regex::multiline, "6"},
    {"AnchorsDoNotMatchInsideTheName", takes, R"(a(\d+)$\n^b\d)", std::regex::ECMAScript, "1"},
};

const std::vector<Row> groups = {
    {"BackReference", repetitions, R"((\d)\1)", std::regex::ECMAScript, "4"},
    {"BackReferenceInBasic", repetitions, R"(\([0-9]\)\1)", std::regex::basic, "4"},
    {"BackReferenceInGrep", repetitions, R"(\([0-9][0-9]\)\1)", std::regex::grep, "44"},
    {"BackReferenceAfterOtherText", repetitions, R"(a(\d)-\1)", std::regex::ECMAScript, "8"},
    {"AGroupThatDoesNotMatch", takes, R"((?:a(\d)|b\d+|.*))", std::regex::ECMAScript, "2"},
    {"AnotherGroupThatDoesNotMatch", takes, R"((?:x(\d)|a(\d+)))", std::regex::ECMAScript, "1"},
    {"AnOptionalGroup", takes, R"(a(\d+)?)", std::regex::ECMAScript, "23"},
    {"AGroupInAnother", takes, "b(([0-9])[0-9])[0-9]+", std::regex::extended, "45"},
    {"TheLastOfARepeatedGroup", takes, R"(b(\d)*)", std::regex::ECMAScript, "5"},
    {"ALookAhead", takes, R"((?=a\d\d)a(\d+))", std::regex::ECMAScript, "23"},
    {"ANegativeLookAhead", takes, R"((?!a\d\d)a(\d+))", std::regex::ECMAScript, "2"},
};

std::string RowName(const testing::TestParamInfo<Row>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Grammars, NextIndexGrammarTest, testing::ValuesIn(grammars), RowName);
INSTANTIATE_TEST_SUITE_P(Flags, NextIndexGrammarTest, testing::ValuesIn(flags), RowName);
INSTANTIATE_TEST_SUITE_P(Groups, NextIndexGrammarTest, testing::ValuesIn(groups), RowName);

} // namespace
