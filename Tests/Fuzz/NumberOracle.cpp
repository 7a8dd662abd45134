#include "Tests/Fuzz/NumberOracle.h"

#include <algorithm>
#include <utility>

namespace Tests {
namespace {

using Group = std::optional<std::string_view>;

constexpr const char* decimalError = "Unexpected character encountered in input.";
constexpr const char* otherError = "Unexpected content found while parsing character string.";

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool AreDigits(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), IsDigit);
}

/// A dot in an expression does not match the end of a line.
bool IsOneLine(std::string_view text)
{
    return text.find_first_of("\n\r") == std::string_view::npos;
}

bool StartsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

Group DigitsAfterA(std::string_view name)
{
    return StartsWith(name, "a") && name.size() > 1 && AreDigits(name.substr(1)) ? Group(name.substr(1))
                                                                                 : std::nullopt;
}

Group MaybeDigitsAfterA(std::string_view name)
{
    return StartsWith(name, "a") && AreDigits(name.substr(1)) ? Group(name.substr(1)) : std::nullopt;
}

Group SignedDigitsAfterA(std::string_view name)
{
    if (!StartsWith(name, "a"))
        return std::nullopt;
    const std::string_view group = name.substr(1);
    const std::string_view digits = group.substr(StartsWith(group, "-") ? 1 : 0);
    return !digits.empty() && AreDigits(digits) ? Group(group) : std::nullopt;
}

Group AnythingAfterA(std::string_view name)
{
    return StartsWith(name, "a") && name.size() > 1 && IsOneLine(name) ? Group(name.substr(1)) : std::nullopt;
}

Group Anything(std::string_view name)
{
    return IsOneLine(name) ? Group(name) : std::nullopt;
}

Group NoGroup(std::string_view)
{
    return std::nullopt;
}

/// The number is in the second group, which is not used.
Group MaybeB(std::string_view name)
{
    return StartsWith(name, "ba") && name.size() > 2 && AreDigits(name.substr(2)) ? Group(name.substr(0, 1))
                                                                                  : std::nullopt;
}

Group DigitsBeforeMp4(std::string_view name)
{
    constexpr std::string_view end = ".mp4";
    if (name.size() <= end.size() || name.substr(name.size() - end.size()) != end)
        return std::nullopt;
    const std::string_view digits = name.substr(0, name.size() - end.size());
    return AreDigits(digits) ? Group(digits) : std::nullopt;
}

int DigitValue(char character)
{
    if (IsDigit(character))
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    return 16;
}

/// Decimal digits, the last one first; zero has no digits.
class Number
{
public:
    void TimesPlus(int factor, int summand)
    {
        int carry = summand;
        for (int& digit : digits) {
            carry += digit * factor;
            digit = carry % 10;
            carry /= 10;
        }
        for (; carry > 0; carry /= 10)
            digits.push_back(carry % 10);
    }

    bool operator<(const Number& other) const
    {
        if (digits.size() != other.digits.size())
            return digits.size() < other.digits.size();
        return std::lexicographical_compare(digits.rbegin(), digits.rend(), other.digits.rbegin(),
                                            other.digits.rend());
    }

    std::string Text() const
    {
        std::string text;
        for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit)
            text.push_back(static_cast<char>('0' + *digit));
        return text;
    }

private:
    std::vector<int> digits;
};

struct Reading
{
    bool isNegative = false;
    Number magnitude;
    const char* error = nullptr;
};

Reading Read(std::string_view text)
{
    Reading reading;
    reading.isNegative = StartsWith(text, "-");
    if (reading.isNegative)
        text.remove_prefix(1);
    int base = 10;
    if (StartsWith(text, "0x") || StartsWith(text, "0X")) {
        base = 16;
        text.remove_prefix(2);
    } else if (StartsWith(text, "0")) {
        base = 8;
    }
    for (const char character : text) {
        const int value = DigitValue(character);
        if (value >= base) {
            reading.error = base == 10 ? decimalError : otherError;
            return reading;
        }
        reading.magnitude.TimesPlus(base, value);
    }
    return reading;
}

} // namespace

const std::vector<NumberPattern>& NumberPatterns()
{
    static const std::vector<NumberPattern> patterns = {
        {"a(\\d+)", DigitsAfterA},
        {"a(\\d*)", MaybeDigitsAfterA},
        {"a(-?\\d+)", SignedDigitsAfterA},
        {"a(.+)", AnythingAfterA},
        {"(.*)", Anything},
        {"a.*", NoGroup},
        {"(b)?a(\\d+)", MaybeB},
        {"(\\d+)\\.mp4", DigitsBeforeMp4},
    };
    return patterns;
}

NumberAnswer NextNumber(const NumberPattern& pattern, const std::vector<std::string>& names)
{
    NumberAnswer answer;
    Number maximum;
    for (const std::string& name : names) {
        const Group group = pattern.group(name);
        if (!group || group->empty())
            continue;
        const Reading reading = Read(*group);
        if (reading.error)
            answer.errors.emplace_back(reading.error);
        else if (!reading.isNegative && maximum < reading.magnitude)
            maximum = reading.magnitude;
    }
    maximum.TimesPlus(1, 1);
    if (answer.errors.empty())
        answer.next = maximum.Text();
    return answer;
}

} // namespace Tests
