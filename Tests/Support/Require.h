#pragma once

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace Tests {

/// Throws when a step of a test's preparation has failed, so that the test does not go on with a wrong
/// folder.
///
/// @param step  completes "cannot ...", such as "open a.txt"
inline void Require(bool hasSucceeded, const std::string& step)
{
    if (!hasSucceeded)
        throw std::runtime_error("cannot " + step + ": " + std::strerror(errno));
}

} // namespace Tests
