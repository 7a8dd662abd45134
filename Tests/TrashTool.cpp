// Calls MoveToTrash() in a process of its own, since a process looks at its environment for a trash only
// once.
//
//     TrashTool [--as-stranger] [--unable-to-write] <path, percent-encoded>
//
// Ends with 0 when the call returned true and with 1 when it returned false.

#include "Core/FileOperations.h"
#include "Tests/Support/Unprivileged.h"

#include <QByteArray>

#include <csignal>
#include <cstdlib>
#include <memory>

#include <sys/resource.h>

namespace {

constexpr int cannotTell = 2;

/// From now on files can be made, moved and deleted, but nothing written to them, as on a full disk.
bool LoseTheAbilityToWrite()
{
    const rlimit nothing = {0, 0};
    return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && ::setrlimit(RLIMIT_FSIZE, &nothing) == 0;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc < 2)
        return cannotTell;

    std::unique_ptr<Tests::Unprivileged> stranger;
    for (int i = 1; i < argc - 1; ++i) {
        const QByteArray option = argv[i];
        if (option == "--as-stranger")
            stranger = std::make_unique<Tests::Unprivileged>();
        else if (option != "--unable-to-write" || !LoseTheAbilityToWrite())
            return cannotTell;
    }

    const std::string path = QByteArray::fromPercentEncoding(argv[argc - 1]).toStdString();
    return Zendra::Core::MoveToTrash(path) ? EXIT_SUCCESS : EXIT_FAILURE;
}
