#include "Lib/Util/FS/DirectoryUtils.h"

#include "Tests/Fuzz/NumberOracle.h"
#include "Tests/Support/ByteFolder.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <filesystem>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

// Compares random texts in place of the number with an oracle that parses them without a number type.

using Tests::NextNumber;
using Tests::NumberAnswer;
using Tests::NumberPattern;
using Tests::NumberPatterns;

namespace {

constexpr int textCount = 400;
constexpr std::size_t longestText = 250;

class RandomText
{
public:
    explicit RandomText(unsigned int seed) : random(seed) {}

    std::string Next()
    {
        const std::vector<std::string> signs = {"", "", "", "-", "+", "--", " ", "- "};
        const std::vector<std::string> prefixes = {"", "", "", "0", "00", "0x", "0X", "x", "0x0", "00x"};
        const std::vector<std::string> digits = {"01",
                                                 "01234567",
                                                 "0123456789",
                                                 "0123456789",
                                                 "0123456789abcdef",
                                                 "0123456789ABCDEF",
                                                 "0123456789g",
                                                 "0123456789 .,-+xX'_\t\n\xC3\xA4"};
        const std::vector<std::string> ends = {"", "", "", "", "", " ", "8", "g", "h", "L", "\xFF"};
        std::string text = OneOf(signs) + OneOf(prefixes);
        const std::string& kind = OneOf(digits);
        const std::size_t length = Below(Below(4) == 0 ? longestText : 25);
        while (text.size() < length)
            text += kind[Below(kind.size())];
        return text + OneOf(ends);
    }

private:
    std::size_t Below(std::size_t limit) { return random() % limit; }

    const std::string& OneOf(const std::vector<std::string>& texts) { return texts[Below(texts.size())]; }

    std::mt19937 random;
};

/// The pattern whose first group is the whole name.
const NumberPattern& WholeName()
{
    for (const NumberPattern& pattern : NumberPatterns())
        if (pattern.expression == std::string("(.*)"))
            return pattern;
    throw std::logic_error("the oracle has no such pattern");
}

class NextIndexNumbersTest : public testing::TestWithParam<unsigned int>
{
};

TEST_P(NextIndexNumbersTest, ReadsATextAsTheOracleDoes)
{
    const Tests::ByteFolder folder;
    const std::regex pattern(WholeName().expression);
    RandomText texts(GetParam());
    for (int i = 0; i < textCount; ++i) {
        const std::string text = texts.Next();
        if (text.empty())
            continue;
        const std::string file = folder.Write(text, "");
        const NumberAnswer expected = NextNumber(WholeName(), {text});

        try {
            EXPECT_EQ(Zendra::LW::GetNextAvaliableIndex(folder.Path(), pattern), expected.next) << text;
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(expected.errors, testing::ElementsAre(error.what())) << text;
        }
        std::filesystem::remove(file);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, NextIndexNumbersTest, testing::Range(1U, 6U));

} // namespace
