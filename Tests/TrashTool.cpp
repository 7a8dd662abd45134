// Calls MoveToTrash() in a process of its own, since a process looks at its environment for a trash only
// once.
//
//     TrashTool [--as-stranger] [--unable-to-write] [--replace-at-once] <path, percent-encoded>
//
// Ends with 0 when the call returned true and with 1 when it returned false.

#include "Core/FileOperations.h"
#include "Tests/Support/Unprivileged.h"

#include <QByteArray>

#include <csignal>
#include <cstdlib>
#include <memory>

#include <dlfcn.h>
#include <fcntl.h>
#include <gio/gio.h>
#include <sys/resource.h>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
#    include <sanitizer/lsan_interface.h>
#endif

namespace {

constexpr int cannotTell = 2;

bool replaceAtOnce = false;

/// From now on files can be made, moved and deleted, but nothing written to them, as on a full disk.
bool LoseTheAbilityToWrite()
{
    const rlimit nothing = {0, 0};
    return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && ::setrlimit(RLIMIT_FSIZE, &nothing) == 0;
}

} // namespace

/// Stands before GIO's own: somebody makes an empty file where one has just gone to the trash.
extern "C" __attribute__((visibility("default"))) gboolean
g_file_trash(GFile* file, GCancellable* cancellable, GError** error)
{
    const auto original = reinterpret_cast<decltype(&g_file_trash)>(::dlsym(RTLD_NEXT, "g_file_trash"));
#ifdef __SANITIZE_ADDRESS__
    // GIO forgets a string or two when it refuses.
    const __lsan::ScopedDisabler passOverItsLeaks;
#endif
    const gboolean done = original(file, cancellable, error);
    if (replaceAtOnce)
        ::close(::open(g_file_peek_path(file), O_WRONLY | O_CREAT | O_EXCL, 0600));
    return done;
}

int main(int argc, char* argv[])
{
    if (argc < 2)
        return cannotTell;

    std::unique_ptr<Tests::Unprivileged> stranger;
    for (int i = 1; i < argc - 1; ++i) {
        const QByteArray option = argv[i];
        if (option == "--as-stranger")
            stranger = std::make_unique<Tests::Unprivileged>();
        else if (option == "--replace-at-once")
            replaceAtOnce = true;
        else if (option != "--unable-to-write" || !LoseTheAbilityToWrite())
            return cannotTell;
    }

    const std::string path = QByteArray::fromPercentEncoding(argv[argc - 1]).toStdString();
    return Zendra::Core::MoveToTrash(path) ? EXIT_SUCCESS : EXIT_FAILURE;
}
