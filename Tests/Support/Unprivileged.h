#pragma once

#include <sys/types.h>

namespace Tests {

/// Makes the process an ordinary user while it lives: for root every folder is readable and writable,
/// so a test of a refusal would test nothing.
///
/// Changes nothing when the process is not root in the first place.
class Unprivileged
{
public:
    Unprivileged();
    ~Unprivileged();
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

    /// The user that a root process becomes.
    static constexpr uid_t userId = 65534;

private:
    bool switched = false;
};

} // namespace Tests
