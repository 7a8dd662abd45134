#pragma once

#include <QFile>
#include <QMetaType>

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#    include <QTextCodec>
#endif

#include <clocale>

namespace Tests {

// Functions that Qt 5 and Qt 6 name differently, and behaviour in which they differ.

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

/// Sets a locale whose encoding is not UTF-8, while it lives. Qt 6 writes file names in UTF-8 in any locale.
class NonUtf8Locale
{
public:
    NonUtf8Locale() { std::setlocale(LC_CTYPE, "C"); }
    ~NonUtf8Locale() { std::setlocale(LC_CTYPE, "C.UTF-8"); }
    NonUtf8Locale(const NonUtf8Locale&) = delete;
    NonUtf8Locale& operator=(const NonUtf8Locale&) = delete;

    /// The letter U+00E4 in the name of a file on the disk.
    static constexpr const char* umlaut = "\xc3\xa4";
};

#else

/// Sets a locale whose encoding is not UTF-8, while it lives. Qt 5 writes file names in the locale's
/// encoding.
class NonUtf8Locale
{
public:
    NonUtf8Locale() { QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1")); }
    ~NonUtf8Locale() { QTextCodec::setCodecForLocale(nullptr); }
    NonUtf8Locale(const NonUtf8Locale&) = delete;
    NonUtf8Locale& operator=(const NonUtf8Locale&) = delete;

    /// The letter U+00E4 in the name of a file on the disk.
    static constexpr const char* umlaut = "\xe4";
};

#endif

} // namespace Tests
