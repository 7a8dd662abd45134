#include "Tests/Support/Unprivileged.h"

#include <cstdlib>
#include <stdexcept>

#include <unistd.h>

namespace Tests {

Unprivileged::Unprivileged()
{
    if (::geteuid() != 0)
        return;
    // The real id too, since access() asks for that one; the saved one stays for the way back.
    if (::setresgid(userId, userId, 0) != 0 || ::setresuid(userId, userId, 0) != 0)
        throw std::runtime_error("cannot become an unprivileged user");
    switched = true;
}

Unprivileged::~Unprivileged()
{
    if (switched && (::setresuid(0, 0, 0) != 0 || ::setresgid(0, 0, 0) != 0))
        std::abort();
}

} // namespace Tests
