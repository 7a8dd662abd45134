#pragma once

#include <algorithm>

namespace Zendra {

/// Whether a path, a std::string or a QString, has a null character in it and so names nothing. Private to
/// the companion libraries.
///
/// The system would read such a path only up to there, and take it for another one.
template <typename Text>
bool HasNullCharacter(const Text& path)
{
    return std::find(path.begin(), path.end(), typename Text::value_type()) != path.end();
}

} // namespace Zendra
