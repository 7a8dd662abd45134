#pragma once

#include <string>
#include <vector>

namespace Tests {

/// Each text on a line of its own after this indent; "nothing" when there is none.
inline std::string IndentedLines(const std::vector<std::string>& texts, const char* indent)
{
    std::string lines;
    for (const std::string& text : texts)
        lines += '\n' + (indent + text);
    return lines.empty() ? std::string("\n") + indent + "nothing" : lines;
}

} // namespace Tests
