#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tests {

/// The rules for the next free number, written down once more without regular expressions and without a
/// number type.

struct NumberPattern
{
    const char* expression;
    /// What the first group has of a whole name; nothing when the name does not match, or the group took no
    /// part.
    std::optional<std::string_view> (*group)(std::string_view name);
};

const std::vector<NumberPattern>& NumberPatterns();

struct NumberAnswer
{
    std::string next;                ///< empty when there has to be an error
    std::vector<std::string> errors; ///< the texts, one of which has to come
};

NumberAnswer NextNumber(const NumberPattern& pattern, const std::vector<std::string>& names);

} // namespace Tests
