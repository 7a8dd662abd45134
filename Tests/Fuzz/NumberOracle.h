#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tests {

/// A second implementation of the rules for the next free number, without regular expressions or a number
/// type.

struct NumberPattern
{
    const char* expression;
    /// What the first group matches in a whole name; nullopt when the name does not match or the group took
    /// no part.
    std::optional<std::string_view> (*group)(std::string_view name);
};

const std::vector<NumberPattern>& NumberPatterns();

struct NumberAnswer
{
    std::string next;                ///< empty when an error is expected
    std::vector<std::string> errors; ///< the error has one of these texts
};

NumberAnswer NextNumber(const NumberPattern& pattern, const std::vector<std::string>& names);

} // namespace Tests
