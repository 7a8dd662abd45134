#pragma once

#include <QChar>
#include <QStringList>
#include <QStringView>
#include <QVector>

#include <bitset>

namespace Zendra::LW {

/// Matches file names with wildcards as QDir does, without regard to case, in a small part of the time of its
/// regular expressions. Supports the usual wildcards: ASCII text with *, ? and sets of letters and digits
/// such as [abc].
///
/// Intended: with many stars and a long name Qt gives up and finds no match; this class finds it.
class NameMatcher
{
public:
    /// @param wildcards  if empty, every name matches
    explicit NameMatcher(const QStringList& wildcards);

    /// If not, Matches() must not be called.
    bool SupportsAllWildcards() const { return supportsAll; }
    bool Matches(QStringView name) const;

private:
    /// A part of a wildcard: a star, or what matches one character.
    struct Token
    {
        bool isStar;
        std::bitset<128> ascii; ///< in folded case
        bool matchesOthers;     ///< characters that are not ASCII

        bool Matches(QChar character) const;
    };
    using Pattern = QVector<Token>;

    static Pattern Parse(QStringView wildcard);
    static bool Matches(const Pattern& pattern, QStringView name);

    QVector<Pattern> patterns;
    bool supportsAll;
};

} // namespace Zendra::LW
