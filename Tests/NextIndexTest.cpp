#include "Lib/Util/FS/DirectoryUtils.h"

#include "Tests/Support/TempFolder.h"
#include "Tests/Support/Unprivileged.h"

#include <QFile>

#include <boost/exception/exception.hpp>
#include <boost/filesystem/exception.hpp>
#include <boost/multiprecision/cpp_int.hpp>

#include <gmock/gmock.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <locale>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#ifdef __GLIBC__
#    include <malloc.h>
#endif
#include <sys/stat.h>

namespace {

using Tests::TempFolder;
using Tests::Unprivileged;
using Zendra::ioPath;
using Zendra::LW::GetNextAvaliableIndex;

static_assert(
    std::is_same_v<decltype(&GetNextAvaliableIndex), std::string (*)(const ioPath&, const std::regex&)>);

std::string Native(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

/// A folder whose entries have just these bytes as their names.
class NumberedFolder
{
public:
    NumberedFolder() = default;
    explicit NumberedFolder(const std::vector<std::string>& entries)
    {
        for (const std::string& name : entries)
            Add(name);
    }
    ~NumberedFolder()
    {
        // Qt could not: some of the names are no text.
        for (const std::string& path : paths)
            std::remove(path.c_str());
    }
    NumberedFolder(const NumberedFolder&) = delete;
    NumberedFolder& operator=(const NumberedFolder&) = delete;

    void Add(const std::string& name)
    {
        paths.push_back(Path() + '/' + name);
        std::ofstream file(paths.back());
        if (!file && errno != EILSEQ)
            throw std::runtime_error("cannot make " + paths.back());
        isRefused = isRefused || !file;
    }

    /// Whether there is a name that the file system does not take: not every one takes other bytes than
    /// UTF-8.
    bool IsRefused() const { return isRefused; }

    std::string Path() const { return Native(folder.Path()); }
    const TempFolder& Folder() const { return folder; }

    std::string Next(const std::string& pattern) const
    {
        return GetNextAvaliableIndex(Path(), std::regex(pattern));
    }

private:
    TempFolder folder;
    std::vector<std::string> paths;
    bool isRefused = false;
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

class NextIndexRules : public testing::TestWithParam<NumberRule>
{
};

TEST_P(NextIndexRules, GivesOneMoreThanTheLargestNumber)
{
    const NumberedFolder folder(GetParam().entries);
    if (folder.IsRefused())
        GTEST_SKIP() << "this file system takes no names but UTF-8";

    EXPECT_EQ(folder.Next(GetParam().pattern), GetParam().next);
}

INSTANTIATE_TEST_SUITE_P(Counting, NextIndexRules,
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

INSTANTIATE_TEST_SUITE_P(Matching, NextIndexRules,
                         testing::ValuesIn(std::vector<NumberRule>{
                             {"ARestBehindTheMatchIsNoMatch", {"a12.txt", "a3"}, R"(a(\d+))", "4"},
                             {"ARestBeforeTheMatchIsNoMatch", {"ba12", "a3"}, R"(a(\d+))", "4"},
                             {"APatternWithoutAGroup", {"a5"}, R"(a\d+)", "1"},
                             {"AGroupThatDoesNotCapture", {"a5"}, R"(a(?:\d+))", "1"},
                             {"AnEmptyGroupIsSkipped", {"a"}, R"(a(\d*))", "1"},
                             {"AnEmptyGroupBesideANumber", {"a", "a4"}, R"(a(\d*))", "5"},
                             {"AGroupThatTookNoPart", {"ab", "a3b"}, R"(a(\d+)?b)", "4"},
                             {"OnlyTheSecondGroupTookPart", {"a2", "b9"}, R"(a(\d+)|b(\d+))", "3"},
                             {"FurtherGroupsAreIgnored", {"a3-99"}, R"(a(\d+)-(\d+))", "4"},
                             {"TheOuterOfTwoGroups", {"a12"}, R"(a(1(\d)))", "13"},
                             {"TheLastRoundOfARepeatedGroup", {"a71"}, R"(a(\d)+)", "2"},
                             {"TheNameBeginsAndEndsForAnchors", {"a5"}, R"(^a(\d+)$)", "6"},
                             {"TheNameBeginsAndEndsForWords", {"a5"}, R"(\ba(\d+)\b)", "6"},
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
    Reading, NextIndexRules,
    testing::ValuesIn(std::vector<NumberRule>{
        {"OctalSeven", {"a007"}, R"(a(\d+))", "8"},
        {"OctalEight", {"a010"}, R"(a(\d+))", "9"},
        {"OctalEightyThree", {"a0123"}, R"(a(\d+))", "84"},
        {"OctalLosesAgainstDecimal", {"a010", "a9"}, R"(a(\d+))", "10"},
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

struct UnreadableNumber
{
    std::string name;
    std::string text;
    std::string error;
};

void PrintTo(const UnreadableNumber& number, std::ostream* stream)
{
    *stream << number.text;
}

class NextIndexErrors : public testing::TestWithParam<UnreadableNumber>
{
protected:
    const NumberedFolder folder{{"a1", "a" + GetParam().text, "a99"}};
};

TEST_P(NextIndexErrors, OneNumberThatCannotBeReadFailsTheCall)
{
    if (folder.IsRefused())
        GTEST_SKIP() << "this file system takes no names but UTF-8";
    std::string error;

    try {
        folder.Next(R"(a(.+))");
    } catch (const std::runtime_error& exception) {
        error = exception.what();
    }

    EXPECT_EQ(error, GetParam().error);
}

TEST_P(NextIndexErrors, ComesAsABoostExceptionToo)
{
    if (folder.IsRefused())
        GTEST_SKIP() << "this file system takes no names but UTF-8";
    EXPECT_THROW(folder.Next(R"(a(.+))"), boost::exception);
}

INSTANTIATE_TEST_SUITE_P(Numbers, NextIndexErrors,
                         testing::ValuesIn(std::vector<UnreadableNumber>{
                             {"ALetterBehindTheDigits", "12b", inDecimal},
                             {"ALetterBehindDigitsOfMoreThanAWord", "18446744073709551616b", inDecimal},
                             {"ALetterBehindANegative", "-12b", inDecimal},
                             {"ALetterAlone", "b", inDecimal},
                             {"APlus", "+5", inDecimal},
                             {"TwoSigns", "--5", inDecimal},
                             {"ASpaceBefore", " 5", inDecimal},
                             {"ASpaceBehind", "5 ", inDecimal},
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
                         RuleName<UnreadableNumber>);

TEST(NextIndexTest, CountsEveryKindOfEntry)
{
    const auto nextAfter = [](void (*add)(const TempFolder&)) {
        const TempFolder folder;
        folder.Write("a1");
        add(folder);
        return GetNextAvaliableIndex(Native(folder.Path()), std::regex(R"(a(\d+))"));
    };

    EXPECT_EQ(nextAfter([](const TempFolder& folder) { folder.MakeFolder("a5"); }), "6");
    EXPECT_EQ(nextAfter([](const TempFolder& folder) { folder.Link(folder.Path(), "a6"); }), "7");
    EXPECT_EQ(nextAfter([](const TempFolder& folder) { folder.Link("none", "a7"); }), "8");
    EXPECT_EQ(nextAfter([](const TempFolder& folder) { folder.Link("a8", "a8"); }), "9");
    EXPECT_EQ(nextAfter([](const TempFolder& folder) {
                  ASSERT_EQ(::mkfifo(Native(folder.Path("a9")).c_str(), 0600), 0);
              }),
              "10");
}

TEST(NextIndexTest, DoesNotEnterSubfolders)
{
    const TempFolder folder;
    folder.Write("sub/a5");
    folder.Write("a2/a7");

    EXPECT_EQ(GetNextAvaliableIndex(Native(folder.Path()), std::regex(R"(a(\d+))")), "3");
}

TEST(NextIndexTest, TakesNoNumberFromTheFolderItself)
{
    const TempFolder folder;
    const std::string path = Native(folder.MakeFolder("a99"));
    folder.Write("a99/b");

    EXPECT_EQ(GetNextAvaliableIndex(path, std::regex(R"(a(\d+)|.*a(\d+).*)")), "1");
}

TEST(NextIndexTest, TakesTheFolderInEverySpelling)
{
    const TempFolder folder;
    folder.Write("sub/a4");
    folder.Link("sub", "link");
    const std::regex pattern(R"(a(\d+))");
    const std::string path = Native(folder.Path());

    EXPECT_EQ(GetNextAvaliableIndex(path + "/sub/", pattern), "5");
    EXPECT_EQ(GetNextAvaliableIndex(path + "//sub//", pattern), "5");
    EXPECT_EQ(GetNextAvaliableIndex(path + "/sub/.", pattern), "5");
    EXPECT_EQ(GetNextAvaliableIndex(path + "/sub/../sub", pattern), "5");
    EXPECT_EQ(GetNextAvaliableIndex(path + "/link", pattern), "5");
}

TEST(NextIndexTest, TakesARelativeFolderFromTheCurrentOne)
{
    const TempFolder folder;
    folder.Write("sub/a4");
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.Path()));

    const std::string next = GetNextAvaliableIndex("sub", std::regex(R"(a(\d+))"));
    ASSERT_TRUE(QDir::setCurrent(before));

    EXPECT_EQ(next, "5");
}

TEST(NextIndexTest, UsesThePatternWithItsFlags)
{
    const NumberedFolder folder({"A5"});

    EXPECT_EQ(GetNextAvaliableIndex(folder.Path(), std::regex(R"(a(\d+))", std::regex::icase)), "6");
    EXPECT_EQ(GetNextAvaliableIndex(folder.Path(), std::regex(R"(A\([0-9]*\))", std::regex::basic)), "6");
    EXPECT_EQ(GetNextAvaliableIndex(folder.Path(), std::regex(R"(A(\d+))", std::regex::nosubs)), "1");
    EXPECT_EQ(GetNextAvaliableIndex(folder.Path(), std::regex()), "1");
}

/// Capitals and small letters, of which one cannot be told.
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

TEST(NextIndexTest, PassesOnWhatMatchingThrows)
{
    const NumberedFolder folder({"a1", "x2"});
    std::regex pattern;
    pattern.imbue(std::locale(std::locale::classic(), new FailingLetters));
    pattern.assign("A(1)", std::regex::icase);

    EXPECT_THROW(GetNextAvaliableIndex(folder.Path(), pattern), std::regex_error);

    const NumberedFolder readable({"a1"});
    EXPECT_EQ(GetNextAvaliableIndex(readable.Path(), pattern), "2");
}

TEST(NextIndexTest, ReservesNothing)
{
    const NumberedFolder folder({"a1"});

    EXPECT_EQ(folder.Next(R"(a(\d+))"), "2");
    EXPECT_EQ(folder.Next(R"(a(\d+))"), "2");
    EXPECT_EQ(folder.Folder().Entries(), QStringList(QStringLiteral("a1")));
}

TEST(NextIndexTest, FollowsWhatIsInTheFolder)
{
    NumberedFolder folder({"a1", "a2"});
    ASSERT_EQ(folder.Next(R"(a(\d+))"), "3");

    folder.Add("a3");
    EXPECT_EQ(folder.Next(R"(a(\d+))"), "4");

    folder.Folder().Remove(QStringLiteral("a3"));
    folder.Folder().Remove(QStringLiteral("a2"));
    EXPECT_EQ(folder.Next(R"(a(\d+))"), "2");
}

TEST(NextIndexTest, FindsTheLargestAmongManyNames)
{
    NumberedFolder folder;
    for (int number = 1; number <= 2000; ++number)
        folder.Add("a" + std::to_string(number));

    EXPECT_EQ(folder.Next(R"(a(\d+))"), "2001");
}

TEST(NextIndexTest, MayRunOnSeveralThreadsAtOnce)
{
    const NumberedFolder folder({"a1", "a20", "a010", "a18446744073709551616"});
    const std::regex pattern(R"(a(\d+))");
    std::atomic<int> right = 0;

    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round)
                right += GetNextAvaliableIndex(folder.Path(), pattern) == "18446744073709551617";
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(right, 200);
}

TEST(NextIndexTest, ThrowsForAFolderThatIsMissing)
{
    const TempFolder folder;

    EXPECT_THROW(GetNextAvaliableIndex(Native(folder.Path("none")), std::regex("a")),
                 boost::filesystem::filesystem_error);
    EXPECT_THROW(GetNextAvaliableIndex("", std::regex("a")), boost::filesystem::filesystem_error);
}

TEST(NextIndexTest, ThrowsForAFile)
{
    const TempFolder folder;
    const std::string file = Native(folder.Write("file"));

    EXPECT_THROW(GetNextAvaliableIndex(file, std::regex("a")), boost::filesystem::filesystem_error);
}

/// While it lives, memory that is handed out holds no zeros.
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

// Each of these numbers has one bit, in the first digit, and that bit is the first of a machine word.
INSTANTIATE_TEST_SUITE_P(Exponents, LongOctalTest, testing::Values(64u, 128u, 256u, 320u));

TEST_P(LongOctalTest, IsReadAsItStandsThere)
{
    const unsigned int exponent = GetParam();
    const std::string digits = std::to_string(1u << exponent % 3) + std::string(exponent / 3, '0');
    const NumberedFolder folder({"a0" + digits, "a000" + digits, "a1"});
    [[maybe_unused]] const DirtyMemory dirty;

    const std::string next = folder.Next(R"(a(\d+))");

    using boost::multiprecision::cpp_int;
    EXPECT_EQ(next, cpp_int((cpp_int(1) << exponent) + 1).str());
}

TEST(NextIndexTest, ThrowsForAFolderThatMayNotBeRead)
{
    const TempFolder folder;
    folder.Write("closed/a1");
    folder.SetPermissions(QString(), 0755);
    folder.SetPermissions("closed", 0311);
    const std::string path = Native(folder.Path("closed"));

    const Unprivileged user;
    EXPECT_THROW(GetNextAvaliableIndex(path, std::regex(R"(a(\d+))")), boost::filesystem::filesystem_error);
}

} // namespace
