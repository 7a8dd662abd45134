#include "Tests/Support/Unprivileged.h"

#include <cstdlib>
#include <stdexcept>

#include <unistd.h>

namespace Tests {
namespace {

#ifdef __linux__

// Sets the real ids too, since access() uses them. The saved ids stay, to switch back.

bool Become(uid_t user)
{
    return ::setresgid(user, user, 0) == 0 && ::setresuid(user, user, 0) == 0;
}

bool BecomeRootAgain()
{
    return ::setresuid(0, 0, 0) == 0 && ::setresgid(0, 0, 0) == 0;
}

#else

// Real ids could not be restored, so access() still uses those of root.

bool Become(uid_t user)
{
    return ::setegid(user) == 0 && ::seteuid(user) == 0;
}

bool BecomeRootAgain()
{
    return ::seteuid(0) == 0 && ::setegid(0) == 0;
}

#endif

} // namespace

Unprivileged::Unprivileged()
{
    if (::geteuid() != 0)
        return;
    if (!Become(userId))
        throw std::runtime_error("cannot become an unprivileged user");
    switched = true;
}

Unprivileged::~Unprivileged()
{
    if (switched && !BecomeRootAgain())
        std::abort();
}

} // namespace Tests
