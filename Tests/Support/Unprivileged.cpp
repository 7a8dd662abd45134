#include "Tests/Support/Unprivileged.h"

#include <cstdlib>
#include <stdexcept>

#include <unistd.h>

namespace Tests {
namespace {

#ifdef __linux__

// The real ids too, since access() asks for those; the saved ones stay for the way back.

bool Become(uid_t user)
{
    return ::setresgid(user, user, 0) == 0 && ::setresuid(user, user, 0) == 0;
}

bool BecomeRootAgain()
{
    return ::setresuid(0, 0, 0) == 0 && ::setresgid(0, 0, 0) == 0;
}

#else

// There is no way back from other real ids, so access() goes on answering for root.

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
