#pragma once

#include <QFile>
#include <QMetaType>

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#    include <QTextCodec>
#endif

#include <clocale>

namespace Tests {

// What the tests ask of Qt, and what Qt 5 and Qt 6 call differently or do differently.

/// Whether Qt knows a type by its name.
inline bool IsMetaType(const char* name)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return QMetaType::fromName(name).isValid();
#else
    return QMetaType::type(name) != QMetaType::UnknownType;
#endif
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)

/// A locale whose encoding is not UTF-8, while it lives. Qt 6 writes file names in UTF-8 in any locale.
class OtherLetters
{
public:
    OtherLetters() { std::setlocale(LC_CTYPE, "C"); }
    ~OtherLetters() { std::setlocale(LC_CTYPE, "C.UTF-8"); }
    OtherLetters(const OtherLetters&) = delete;
    OtherLetters& operator=(const OtherLetters&) = delete;

    /// The letter U+00E4 in a file's name on the disk.
    static constexpr const char* umlaut = "\xc3\xa4";
};

#else

/// A locale whose encoding is not UTF-8, while it lives. Qt 5 writes file names in the locale's encoding.
class OtherLetters
{
public:
    OtherLetters() { QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1")); }
    ~OtherLetters() { QTextCodec::setCodecForLocale(nullptr); }
    OtherLetters(const OtherLetters&) = delete;
    OtherLetters& operator=(const OtherLetters&) = delete;

    /// The letter U+00E4 in a file's name on the disk.
    static constexpr const char* umlaut = "\xe4";
};

#endif

} // namespace Tests
