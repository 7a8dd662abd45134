#include "Lib/Util/FS/NameMatcher.h"

#include "Tests/Support/QStringText.h"

#include <QDir>

#include <gtest/gtest.h>

#include <ostream>
#include <random>

namespace Zendra::LW {
namespace {

using Tests::operator""_q;

struct MatchCase
{
    QString wildcard;
    QString name;
    bool matches;
};

std::ostream& operator<<(std::ostream& stream, const MatchCase& matchCase)
{
    return stream << matchCase.wildcard.toStdString() << " and " << matchCase.name.toStdString();
}

class NameMatchTest : public testing::TestWithParam<MatchCase>
{
};

TEST_P(NameMatchTest, IsThatOfQDir)
{
    const auto& [wildcard, name, matches] = GetParam();
    const NameMatcher matcher({wildcard});

    ASSERT_TRUE(matcher.SupportsAllWildcards());
    EXPECT_EQ(matcher.Matches(name), matches);
    EXPECT_EQ(QDir::match(QStringList(wildcard), name), matches);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, NameMatchTest,
    testing::Values(
        MatchCase{"a.txt"_q, "a.txt"_q, true}, MatchCase{"a.txt"_q, "a.txt2"_q, false},
        MatchCase{"a.txt"_q, "aatxt"_q, false}, MatchCase{"a.txt"_q, "a.tx"_q, false},
        MatchCase{"a.txt"_q, "ba.txt"_q, false}, MatchCase{"A.tXt"_q, "a.TxT"_q, true},
        MatchCase{"*"_q, ""_q, true}, MatchCase{"*"_q, "a"_q, true}, MatchCase{"**"_q, ""_q, true},
        MatchCase{"*.mp4"_q, "a.mp4"_q, true}, MatchCase{"*.mp4"_q, ".mp4"_q, true},
        MatchCase{"*.mp4"_q, "a.MP4"_q, true}, MatchCase{"*.mp4"_q, "a.mp4.mp4"_q, true},
        MatchCase{"*.mp4"_q, "a.mp4x"_q, false}, MatchCase{"*.mp4"_q, "mp4"_q, false},
        MatchCase{"*.mp4"_q, "録画 ä.mp4"_q, true}, MatchCase{"*.mp4"_q, "録画"_q, false},
        MatchCase{"*.mp4"_q, "😀.mp4"_q, true}, MatchCase{"a*b*c"_q, "a1b2c"_q, true},
        MatchCase{"a*b*c"_q, "abbcbc"_q, true}, MatchCase{"a*b*c"_q, "acb"_q, false},
        MatchCase{"a*"_q, "a"_q, true}, MatchCase{"a*"_q, "ba"_q, false}, MatchCase{"a**"_q, "ab"_q, true},
        MatchCase{"*aab"_q, "aaab"_q, true}, MatchCase{"*ab*ab"_q, "abab"_q, true},
        MatchCase{"*ab*ab"_q, "abb"_q, false}, MatchCase{"?"_q, "a"_q, true}, MatchCase{"?"_q, "ä"_q, true},
        MatchCase{"?"_q, "録"_q, true}, MatchCase{"?"_q, ""_q, false}, MatchCase{"?"_q, "ab"_q, false},
        MatchCase{"a?c"_q, "a.c"_q, true}, MatchCase{"*?"_q, "ab"_q, true}, MatchCase{"*?"_q, ""_q, false},
        MatchCase{"[abc]"_q, "b"_q, true}, MatchCase{"[abc]"_q, "B"_q, true},
        MatchCase{"[ABC]"_q, "c"_q, true}, MatchCase{"[abc]"_q, "d"_q, false},
        MatchCase{"[abc]"_q, "ä"_q, false}, MatchCase{"[abc]"_q, "[abc]"_q, false},
        MatchCase{"*[02468].png"_q, "Recording 14.png"_q, true},
        MatchCase{"*[02468].png"_q, "Recording 15.png"_q, false}, MatchCase{"a b"_q, "a b"_q, true},
        MatchCase{"(a|b)+.{1}^$"_q, "(a|b)+.{1}^$"_q, true}, MatchCase{"a.b"_q, "axb"_q, false},
        MatchCase{"a\nb*"_q, "a\nb\nc"_q, true}, MatchCase{"a-z"_q, "a-z"_q, true},
        MatchCase{"\u007F"_q, "\u007F"_q, true}, MatchCase{"a"_q, "\u0080"_q, false},
        MatchCase{"?"_q, "\u0080"_q, true}, MatchCase{"k"_q, "\u212A"_q, true},
        MatchCase{"K"_q, "\u212A"_q, true}, MatchCase{"s"_q, "\u017F"_q, true},
        MatchCase{"[iks]"_q, "\u212A"_q, true}, MatchCase{"i"_q, "\u0130"_q, false},
        MatchCase{"i"_q, "\u0131"_q, false}, MatchCase{"?"_q, "\u212A"_q, true},
        MatchCase{"?"_q, "😀"_q, true}, MatchCase{"??"_q, "😀"_q, false}, MatchCase{"??"_q, "a😀"_q, true},
        MatchCase{"?b"_q, "😀b"_q, true}, MatchCase{"*??"_q, "😀"_q, false},
        MatchCase{"*?b"_q, "a😀b"_q, true}));

TEST(NameMatcherTest, MatchesEverythingWithoutWildcards)
{
    const NameMatcher matcher({});

    EXPECT_TRUE(matcher.SupportsAllWildcards());
    EXPECT_TRUE(matcher.Matches(u"a"));
}

TEST(NameMatcherTest, MatchesWhatAnyWildcardMatches)
{
    const NameMatcher matcher({"*.mp4"_q, "*.mov"_q, "b?"_q});

    EXPECT_TRUE(matcher.Matches(u"a.mp4"));
    EXPECT_TRUE(matcher.Matches(u"a.mov"));
    EXPECT_TRUE(matcher.Matches(u"b1"));
    EXPECT_FALSE(matcher.Matches(u"a.txt"));
}

// The library lists folders with Qt for these.
TEST(NameMatcherTest, DoesNotSupportOtherWildcards)
{
    for (const QString& wildcard :
         {""_q, "ä*"_q, "*.録"_q, "a\\b"_q, "a]"_q, "[a"_q, "[]"_q, "[]a]"_q, "[!a]"_q, "[^a]"_q, "[a-z]"_q,
          "[ä]"_q, "[a*]"_q, "[[a]]"_q, "["_q, "a[b"_q, "[a.b"_q, "\u0080"_q})
        EXPECT_FALSE(NameMatcher({wildcard}).SupportsAllWildcards()) << wildcard.toStdString();
    EXPECT_FALSE(NameMatcher({"*.mp4"_q, "[!a]"_q}).SupportsAllWildcards());
    EXPECT_FALSE(NameMatcher({"[!a]"_q, "*.mp4"_q}).SupportsAllWildcards());
}

// Intended: Qt's regular expressions give up here, and find no match.
TEST(NameMatcherTest, MatchesLongNamesWithManyStars)
{
    const NameMatcher matcher({"*a*a*a*a*a*a*a?b*"_q});

    EXPECT_TRUE(matcher.Matches(QString(20, QLatin1Char('a')) + "xb"_q + QString(60, QLatin1Char('a'))));
    EXPECT_FALSE(matcher.Matches(QString(20, QLatin1Char('a')) + "xc"_q + QString(60, QLatin1Char('a'))));
}

TEST(NameMatcherTest, TreatsHalfASurrogatePairAsACharacter)
{
    for (const char16_t half : {u'\xD83D', u'\xDE00'}) {
        const QString name = "a"_q + QChar(half);

        EXPECT_TRUE(NameMatcher({"a?"_q}).Matches(name));
        EXPECT_FALSE(NameMatcher({"a"_q}).Matches(name));
        EXPECT_FALSE(NameMatcher({"a??"_q}).Matches(name));
    }
}

QString RandomText(std::mt19937& random, const QString& alphabet, std::size_t longest)
{
    QString text;
    for (std::size_t length = random() % (longest + 1); length > 0; --length)
        text += alphabet.at(static_cast<int>(random() % static_cast<std::size_t>(alphabet.size())));
    return text;
}

TEST(NameMatcherTest, AgreesWithQDirForRandomWildcardsAndNames)
{
    std::mt19937 random(1);
    int matchCount = 0;
    for (int run = 0; run < 20000; ++run) {
        const QString wildcard = RandomText(random, "aab.***??"_q, 6).replace(QLatin1Char('b'), "[bK]"_q);
        const QString name = RandomText(random, "aaBb.ä\u212A"_q, 6).replace(QLatin1Char('B'), "😀"_q);
        const NameMatcher matcher({wildcard});
        if (!matcher.SupportsAllWildcards())
            continue;
        const bool expected = QDir::match(QStringList(wildcard), name);
        ASSERT_EQ(matcher.Matches(name), expected) << wildcard.toStdString() << " and " << name.toStdString();
        matchCount += expected ? 1 : 0;
    }
    EXPECT_GT(matchCount, 1000);
}

} // namespace
} // namespace Zendra::LW
