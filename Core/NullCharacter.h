#pragma once

#include <algorithm>

namespace Zendra {

/// Whether a path, a std::string or a QString, contains a null character and so names no file. Private to the
/// companion libraries.
///
/// The system would read such a path only up to that character and use another file.
template <typename Text>
bool HasNullCharacter(const Text& path)
{
    return std::find(path.begin(), path.end(), typename Text::value_type()) != path.end();
}

} // namespace Zendra
