#pragma once

#include <sys/types.h>

namespace Tests {

/// Turns a process of root into one of an ordinary user while it lives: root may read and write every folder,
/// so a test of a refusal would test nothing.
///
/// Does nothing if the process does not run as root.
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
