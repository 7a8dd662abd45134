#include "Lib/Util/FS/NameMatcher.h"

#include <algorithm>

namespace Zendra::LW {
namespace {

bool IsAscii(QChar character)
{
    return character.unicode() < 128;
}

bool IsLetterOrDigit(QChar character)
{
    return IsAscii(character) && character.isLetterOrNumber();
}

void Add(std::bitset<128>& ascii, QChar character)
{
    ascii.set(character.toCaseFolded().unicode());
}

} // namespace

NameMatcher::NameMatcher(const QStringList& wildcards)
{
    for (const QString& wildcard : wildcards)
        patterns.append(Parse(wildcard));
    supportsAll = std::none_of(patterns.begin(), patterns.end(),
                               [](const Pattern& pattern) { return pattern.isEmpty(); });
}

bool NameMatcher::Matches(QStringView name) const
{
    return patterns.isEmpty() || std::any_of(patterns.begin(), patterns.end(), [&](const Pattern& pattern) {
               return Matches(pattern, name);
           });
}

/// @return empty if the wildcard is not supported
NameMatcher::Pattern NameMatcher::Parse(QStringView wildcard)
{
    Pattern pattern;
    for (auto character = wildcard.begin(); character != wildcard.end(); ++character) {
        Token token = {false, {}, false};
        if (*character == QLatin1Char('*')) {
            token.isStar = true;
        } else if (*character == QLatin1Char('?')) {
            token.ascii.set();
            token.matchesOthers = true;
        } else if (*character == QLatin1Char('[')) {
            const auto end = std::find_if_not(character + 1, wildcard.end(), IsLetterOrDigit);
            if (end == character + 1 || end == wildcard.end() || *end != QLatin1Char(']'))
                return {};
            std::for_each(character + 1, end, [&](QChar member) { Add(token.ascii, member); });
            character = end;
        } else if (IsAscii(*character) && *character != QLatin1Char(']') && *character != QLatin1Char('\\')) {
            Add(token.ascii, *character);
        } else {
            return {};
        }
        pattern.append(token);
    }
    return pattern;
}

bool NameMatcher::Token::Matches(QChar character) const
{
    // Some characters fold to ASCII: the Kelvin sign to k, the long s to s.
    const QChar folded = character.toCaseFolded();
    return IsAscii(folded) ? ascii.test(folded.unicode()) : matchesOthers;
}

bool NameMatcher::Matches(const Pattern& pattern, QStringView name)
{
    auto token = pattern.begin();
    auto character = name.begin();
    // The last star, and the first character behind what it matches.
    auto star = pattern.end();
    auto behindStar = name.begin();
    while (character != name.end()) {
        if (token != pattern.end() && token->isStar) {
            star = token++;
            behindStar = character;
        } else if (token != pattern.end() && token->Matches(*character)) {
            ++token;
            // A surrogate pair is one character.
            const bool isPair = character->isHighSurrogate() && character + 1 != name.end();
            character += isPair ? 2 : 1;
        } else if (star != pattern.end()) {
            token = star + 1;
            character = ++behindStar;
        } else {
            return false;
        }
    }
    return std::all_of(token, pattern.end(), [](const Token& rest) { return rest.isStar; });
}

} // namespace Zendra::LW
