#include "Lib/Util/FS/DirectoryUtils.h"

#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/Threads.h"
#include "Tests/Support/Unprivileged.h"

#include <boost/exception/exception.hpp>
#include <boost/filesystem/exception.hpp>
#include <boost/multiprecision/cpp_int.hpp>

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <locale>
#include <regex>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#ifdef __GLIBC__
#    include <malloc.h>
#endif
#include <sys/stat.h>

namespace {

using Tests::ByteFolder;
using Tests::Unprivileged;
using Zendra::ioPath;
using Zendra::LW::GetNextAvaliableIndex;

static_assert(
    std::is_same_v<decltype(&GetNextAvaliableIndex), std::string (*)(const ioPath&, const std::regex&)>);

std::string NextIn(const std::string& folder, const std::string& pattern)
{
    return GetNextAvaliableIndex(folder, std::regex(pattern));
}

/// A folder with these entries.
class NumberedFolder : public ByteFolder
{
public:
    explicit NumberedFolder(const std::vector<std::string>& entries)
    {
        for (const std::string& name : entries) {
            if (CanStore(name))
                Write(name);
            else
                isIncomplete = true;
        }
    }

    /// Whether the file system cannot store some of the names.
    bool IsIncomplete() const { return isIncomplete; }

    std::string Next(const std::string& pattern) const { return NextIn(Path(), pattern); }

private:
    bool isIncomplete = false;
};

const std::string nines(250, '9');
const std::string zeros(250, '0');

struct NumberRule
{
    std::string name;
    std::vector<std::string> entries;
    std::string pattern;
    std::string next;
};

void PrintTo(const NumberRule& rule, std::ostream* stream)
{
    *stream << rule.pattern;
}

template <class Rule>
std::string RuleName(const testing::TestParamInfo<Rule>& info)
{
    return info.param.name;
}

class NextIndexRuleTest : public testing::TestWithParam<NumberRule>
{
};

TEST_P(NextIndexRuleTest, ReturnsOneMoreThanTheLargestNumber)
{
    const NumberedFolder folder(GetParam().entries);
    if (folder.IsIncomplete())
        GTEST_SKIP() << "this file system only stores names in UTF-8";

    EXPECT_EQ(folder.Next(GetParam().pattern), GetParam().next);
}

INSTANTIATE_TEST_SUITE_P(Counting, NextIndexRuleTest,
                         testing::ValuesIn(std::vector<NumberRule>{
                             {"AnEmptyFolderStartsAtOne", {}, R"(a(\d+))", "1"},
                             {"NeitherTheFolderItselfNorItsParentIsAnEntry", {}, R"((.*))", "1"},
                             {"NoNameMatches", {"b1", "c"}, R"(a(\d+))", "1"},
                             {"OneName", {"a1"}, R"(a(\d+))", "2"},
                             {"GapsAreNotFilled", {"a1", "a2", "a7"}, R"(a(\d+))", "8"},
                             {"TenIsMoreThanNine", {"a9", "a10"}, R"(a(\d+))", "11"},
                             {"TheSameNumberTwice", {"a5", "b5"}, R"([ab](\d+))", "6"},
                             {"ZeroDoesNotCount", {"a0"}, R"(a(\d+))", "1"},
                             {"ANineBecomesATen", {"a99"}, R"(a(\d+))", "100"},
                             {"SpacesAndAnExtension", {"Recording 41.mp4"}, R"(Recording (\d+)\.mp4)", "42"},
                         }),
                         RuleName<NumberRule>);

INSTANTIATE_TEST_SUITE_P(Matching, NextIndexRuleTest,
                         testing::ValuesIn(std::vector<NumberRule>{
                             {"TextAfterTheMatchIsNoMatch", {"a12.txt", "a3"}, R"(a(\d+))", "4"},
                             {"TextBeforeTheMatchIsNoMatch", {"ba12", "a3"}, R"(a(\d+))", "4"},
                             {"APatternWithoutAGroup", {"a5"}, R"(a\d+)", "1"},
                             {"AGroupThatDoesNotCapture", {"a5"}, R"(a(?:\d+))", "1"},
                             {"AnEmptyGroupIsSkipped", {"a"}, R"(a(\d*))", "1"},
                             {"AnEmptyGroupBesideANumber", {"a", "a4"}, R"(a(\d*))", "5"},
                             {"AGroupThatDidNotMatch", {"ab", "a3b"}, R"(a(\d+)?b)", "4"},
                             {"OnlyTheSecondGroupMatched", {"a2", "b9"}, R"(a(\d+)|b(\d+))", "3"},
                             {"FurtherGroupsAreIgnored", {"a3-99"}, R"(a(\d+)-(\d+))", "4"},
                             {"TheOuterOfTwoGroups", {"a12"}, R"(a(1(\d)))", "13"},
                             {"TheLastMatchOfARepeatedGroup", {"a71"}, R"(a(\d)+)", "2"},
                             {"AnchorsMatchTheEndsOfTheName", {"a5"}, R"(^a(\d+)$)", "6"},
                             {"WordBoundariesMatchTheEndsOfTheName", {"a5"}, R"(\ba(\d+)\b)", "6"},
                             {"UpperCaseIsNotLowerCase", {"A5"}, R"(a(\d+))", "1"},
                             {"AHiddenName", {".a5"}, R"(\.a(\d+))", "6"},
                             {"TheDotOfAHiddenNameIsPartOfIt", {".a5"}, R"(a(\d+))", "1"},
                             {"ALineBreakIsPartOfTheName", {"a\n5"}, "a\\n(\\d+)", "6"},
                             {"ADotDoesNotMatchALineBreak", {"a\n5"}, R"(a.(\d+))", "1"},
                             {"AByteThatIsNotUtf8",
                              {"a\xff"
                               "5"},
                              R"(a.(\d+))",
                              "6"},
                             {"AnUmlautIsTwoBytes",
                              {"a\xc3\xbc"
                               "5"},
                              R"(a..(\d+))",
                              "6"},
                             {"AnUmlautIsNotOneCharacter",
                              {"a\xc3\xbc"
                               "5"},
                              R"(a.(\d+))",
                              "1"},
                             {"ABackslashIsPartOfTheName", {"9\\a5"}, R"(9\\a(\d+))", "6"},
                             {"ABackslashSeparatesNothing", {"9\\a5"}, R"(a(\d+))", "1"},
                             {"ALongName", {"a" + std::string(251, 'b') + "777"}, R"(ab+(\d+))", "778"},
                         }),
                         RuleName<NumberRule>);

INSTANTIATE_TEST_SUITE_P(
    Reading, NextIndexRuleTest,
    testing::ValuesIn(std::vector<NumberRule>{
        {"OctalSeven", {"a007"}, R"(a(\d+))", "8"},
        {"OctalEight", {"a010"}, R"(a(\d+))", "9"},
        {"OctalEightyThree", {"a0123"}, R"(a(\d+))", "84"},
        {"OctalIsLessThanDecimal", {"a010", "a9"}, R"(a(\d+))", "10"},
        {"ManyZeros", {"a00"}, R"(a(\d+))", "1"},
        {"ALongOctal", {"a0" + std::string(30, '7')}, R"(a(\d+))", "1237940039285380274899124224"},
        {"Hexadecimal", {"a0x1f"}, R"(a(.+))", "32"},
        {"HexadecimalInCapitals", {"a0X1F"}, R"(a(.+))", "32"},
        {"HexadecimalWithZeros", {"a0x001f"}, R"(a(.+))", "32"},
        {"HexadecimalWithoutDigits", {"a0x"}, R"(a(.+))", "1"},
        {"ALongHexadecimal", {"a0xffffffffffffffffffff"}, R"(a(.+))", "1208925819614629174706176"},
        {"OnlyANegative", {"a-5"}, R"(a(-?\d+))", "1"},
        {"ANegativeOfManyDigits", {"a-" + nines, "a3"}, R"(a(-?\d+))", "4"},
        {"ANegativeOctal", {"a-010"}, R"(a(-?\d+))", "1"},
        {"ANegativeHexadecimal", {"a-0x1f"}, R"(a(.+))", "1"},
        {"ASignWithoutDigits", {"a-"}, R"(a(.+))", "1"},
        {"TheLargestWord", {"a18446744073709551615"}, R"(a(\d+))", "18446744073709551616"},
        {"OneMoreThanAWord", {"a18446744073709551616"}, R"(a(\d+))", "18446744073709551617"},
        {"AWordAndMore",
         {"a18446744073709551615", "a18446744073709551616"},
         R"(a(\d+))",
         "18446744073709551617"},
        {"TwentyFiveDigits", {"a1234567890123456789012345"}, R"(a(\d+))", "1234567890123456789012346"},
        {"AsManyDigitsAsANameHolds", {"a" + nines, "a5"}, R"(a(\d+))", "1" + zeros},
    }),
    RuleName<NumberRule>);

const char* const inDecimal = "Unexpected character encountered in input.";
const char* const inOtherBases = "Unexpected content found while parsing character string.";

struct InvalidNumber
{
    std::string name;
    std::string text;
    std::string error;
};

void PrintTo(const InvalidNumber& number, std::ostream* stream)
{
    *stream << number.text;
}

class NextIndexErrorTest : public testing::TestWithParam<InvalidNumber>
{
protected:
    const NumberedFolder folder{{"a1", "a" + GetParam().text, "a99"}};
};

TEST_P(NextIndexErrorTest, OneInvalidNumberFailsTheCall)
{
    if (folder.IsIncomplete())
        GTEST_SKIP() << "this file system only stores names in UTF-8";
    std::string error;

    try {
        folder.Next(R"(a(.+))");
    } catch (const std::runtime_error& exception) {
        error = exception.what();
    }

    EXPECT_EQ(error, GetParam().error);
}

TEST_P(NextIndexErrorTest, IsABoostExceptionToo)
{
    if (folder.IsIncomplete())
        GTEST_SKIP() << "this file system only stores names in UTF-8";
    EXPECT_THROW(folder.Next(R"(a(.+))"), boost::exception);
}

INSTANTIATE_TEST_SUITE_P(Numbers, NextIndexErrorTest,
                         testing::ValuesIn(std::vector<InvalidNumber>{
                             {"ALetterAfterTheDigits", "12b", inDecimal},
                             {"ALetterAfterDigitsOfMoreThanAWord", "18446744073709551616b", inDecimal},
                             {"ALetterAfterANegative", "-12b", inDecimal},
                             {"ALetterAlone", "b", inDecimal},
                             {"APlus", "+5", inDecimal},
                             {"TwoSigns", "--5", inDecimal},
                             {"ASpaceBefore", " 5", inDecimal},
                             {"ASpaceAfter", "5 ", inDecimal},
                             {"AFraction", "1.5", inDecimal},
                             {"AnExtension", "12.txt", inDecimal},
                             {"HexadecimalWithoutPrefix", "1f", inDecimal},
                             {"OtherDigits", "\xd9\xa3", inDecimal},
                             {"ANameThatIsNotUtf8", "\xff", inDecimal},
                             {"Eight", "08", inOtherBases},
                             {"Nine", "09", inOtherBases},
                             {"APaddedDecimal", "0190", inOtherBases},
                             {"ANegativeEight", "-08", inOtherBases},
                             {"ALetterInOctal", "07a", inOtherBases},
                             {"ALetterInHexadecimal", "0x1g", inOtherBases},
                             {"ALetterInCapitalHexadecimal", "0X1G", inOtherBases},
                         }),
                         RuleName<InvalidNumber>);

class NextIndexTest : public testing::Test, protected ByteFolder
{
};

TEST_F(NextIndexTest, CountsEveryKindOfEntry)
{
    Write("a1");
    const auto next = [this] { return NextIn(Path(), R"(a(\d+))"); };

    MakeFolder("a5");
    EXPECT_EQ(next(), "6");
    Link(Path(), "a6");
    EXPECT_EQ(next(), "7");
    Link("none", "a7");
    EXPECT_EQ(next(), "8");
    Link("a8", "a8");
    EXPECT_EQ(next(), "9");
    ASSERT_EQ(::mkfifo(Path("a9").c_str(), 0600), 0);
    EXPECT_EQ(next(), "10");
}

TEST_F(NextIndexTest, DoesNotEnterSubfolders)
{
    Write("sub/a5");
    Write("a2/a7");

    EXPECT_EQ(NextIn(Path(), R"(a(\d+))"), "3");
}

TEST_F(NextIndexTest, IgnoresTheNameOfTheFolderItself)
{
    Write("a99/b");

    EXPECT_EQ(NextIn(Path("a99"), R"(a(\d+)|.*a(\d+).*)"), "1");
}

TEST_F(NextIndexTest, AcceptsTheFolderInEverySpelling)
{
    Write("sub/a4");
    Link("sub", "link");

    for (const char* spelling : {"sub/", "/sub//", "sub/.", "sub/../sub", "link"})
        EXPECT_EQ(NextIn(Path(spelling), R"(a(\d+))"), "5") << spelling;
}

TEST_F(NextIndexTest, AcceptsAFolderRelativeToTheCurrentOne)
{
    Write("sub/a4");
    const Tests::CurrentFolder current(Path());

    EXPECT_EQ(NextIn("sub", R"(a(\d+))"), "5");
}

TEST_F(NextIndexTest, UsesThePatternWithItsFlags)
{
    const NumberedFolder folder({"A5"});

    EXPECT_EQ(GetNextAvaliableIndex(folder.Path(), std::regex(R"(a(\d+))", std::regex::icase)), "6");
    EXPECT_EQ(GetNextAvaliableIndex(folder.Path(), std::regex(R"(A\([0-9]*\))", std::regex::basic)), "6");
    EXPECT_EQ(GetNextAvaliableIndex(folder.Path(), std::regex(R"(A(\d+))", std::regex::nosubs)), "1");
    EXPECT_EQ(GetNextAvaliableIndex(folder.Path(), std::regex()), "1");
}

/// Upper and lower case, with one letter for which the conversion fails.
class FailingLetters : public std::ctype<char>
{
protected:
    char do_tolower(char letter) const override
    {
        if (letter == 'x')
            throw std::regex_error(std::regex_constants::error_complexity);
        return std::ctype<char>::do_tolower(letter);
    }
};

TEST_F(NextIndexTest, PassesOnAnExceptionOfTheMatch)
{
    const NumberedFolder folder({"a1", "x2"});
    std::regex pattern;
    pattern.imbue(std::locale(std::locale::classic(), new FailingLetters));
    pattern.assign("A(1)", std::regex::icase);

    EXPECT_THROW(GetNextAvaliableIndex(folder.Path(), pattern), std::regex_error);

    const NumberedFolder readable({"a1"});
    EXPECT_EQ(GetNextAvaliableIndex(readable.Path(), pattern), "2");
}

TEST_F(NextIndexTest, ReservesNothing)
{
    Write("a1");

    EXPECT_EQ(NextIn(Path(), R"(a(\d+))"), "2");
    EXPECT_EQ(NextIn(Path(), R"(a(\d+))"), "2");
    EXPECT_THAT(Tree(), testing::ElementsAre("a1"));
}

TEST_F(NextIndexTest, FollowsChangesOfTheFolder)
{
    Write("a1");
    Write("a2");
    ASSERT_EQ(NextIn(Path(), R"(a(\d+))"), "3");

    Write("a3");
    EXPECT_EQ(NextIn(Path(), R"(a(\d+))"), "4");

    std::filesystem::remove(Path("a3"));
    std::filesystem::remove(Path("a2"));
    EXPECT_EQ(NextIn(Path(), R"(a(\d+))"), "2");
}

TEST_F(NextIndexTest, FindsTheLargestNumberAmongManyNames)
{
    for (int number = 1; number <= 2000; ++number)
        Write("a" + std::to_string(number));

    EXPECT_EQ(NextIn(Path(), R"(a(\d+))"), "2001");
}

TEST_F(NextIndexTest, MayRunOnSeveralThreadsAtOnce)
{
    const NumberedFolder folder({"a1", "a20", "a010", "a18446744073709551616"});
    const std::regex pattern(R"(a(\d+))");
    std::atomic<int> right = 0;

    Tests::RunOnThreads(4, [&](int /*thread*/) {
        for (int round = 0; round < 50; ++round)
            right += GetNextAvaliableIndex(folder.Path(), pattern) == "18446744073709551617";
    });

    EXPECT_EQ(right, 200);
}

TEST_F(NextIndexTest, ThrowsForAMissingFolder)
{
    EXPECT_THROW(NextIn(Path("none"), "a"), boost::filesystem::filesystem_error);
    EXPECT_THROW(NextIn("", "a"), boost::filesystem::filesystem_error);
}

TEST_F(NextIndexTest, ThrowsForAFile)
{
    EXPECT_THROW(NextIn(Write("file"), "a"), boost::filesystem::filesystem_error);
}

/// Fills allocated memory with other bytes than zero while it lives.
class DirtyMemory
{
public:
#ifdef __GLIBC__
    DirtyMemory()
    {
        ::mallopt(M_PERTURB, 0x5A);
    }
    ~DirtyMemory()
    {
        ::mallopt(M_PERTURB, 0);
    }
#else
    DirtyMemory() = default;
#endif
    DirtyMemory(const DirtyMemory&) = delete;
    DirtyMemory& operator=(const DirtyMemory&) = delete;
};

class LongOctalTest : public testing::TestWithParam<unsigned int>
{
};

// Each of these numbers has one bit, in its first digit, which is the lowest bit of a machine word.
INSTANTIATE_TEST_SUITE_P(Exponents, LongOctalTest, testing::Values(64u, 128u, 256u, 320u));

TEST_P(LongOctalTest, IsReadExactly)
{
    const unsigned int exponent = GetParam();
    const std::string digits = std::to_string(1u << exponent % 3) + std::string(exponent / 3, '0');
    const NumberedFolder folder({"a0" + digits, "a000" + digits, "a1"});
    [[maybe_unused]] const DirtyMemory dirty;

    const std::string next = folder.Next(R"(a(\d+))");

    using boost::multiprecision::cpp_int;
    EXPECT_EQ(next, cpp_int((cpp_int(1) << exponent) + 1).str());
}

TEST_F(NextIndexTest, ThrowsForAFolderThatMayNotBeRead)
{
    Write("closed/a1");
    SetMode("closed", 0311);

    const Unprivileged user;
    EXPECT_THROW(NextIn(Path("closed"), R"(a(\d+))"), boost::filesystem::filesystem_error);
}

} // namespace
