#pragma once

#include <QString>

#include <ostream>

/// For GoogleTest, which would print the characters one by one.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace Tests {

/// A QString literal in UTF-8.
inline QString operator""_q(const char* text, size_t size)
{
    return QString::fromUtf8(text, int(size));
}

} // namespace Tests
