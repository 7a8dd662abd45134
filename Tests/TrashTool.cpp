// Calls MoveToTrash() in a process of its own, since a process looks at its environment for a trash only
// once.
//
//     TrashTool [--as-stranger] [--unable-to-write] [--lose-note] [--replace-at-once]
//     [--rename-in-trash=NAME]
//               [--few-looks] [--no-listing] <path, percent-encoded>
//
// Ends with 0 when the call returned true and with 1 when it returned false; with 3 when it did what the
// options forbid: looked at very many files (--few-looks), or listed a trash (--no-listing).

#include "Core/FileOperations.h"
#include "Tests/Support/Unprivileged.h"

#include <QByteArray>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gio/gio.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
#    include <sanitizer/lsan_interface.h>
#endif

namespace {

constexpr int cannotTell = 2;
constexpr int didWhatIsForbidden = 3;

bool loseNote = false;
bool replaceAtOnce = false;
std::string nameInTrash;
bool mayList = true;
bool mayLookOften = true;
constexpr int fewLooks = 100;
std::atomic<int> looks = 0;

/// From now on files can be made, moved and deleted, but nothing written to them, as on a full disk.
bool LoseTheAbilityToWrite()
{
    const rlimit nothing = {0, 0};
    return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && ::setrlimit(RLIMIT_FSIZE, &nothing) == 0;
}

void RenameInTrash(GFile* file)
{
    const std::filesystem::path trash = std::filesystem::path(g_get_user_data_dir()) / "Trash";
    const std::string name = std::filesystem::path(g_file_peek_path(file)).filename();
    std::filesystem::rename(trash / "files" / name, trash / "files" / nameInTrash);
    std::filesystem::rename(trash / "info" / (name + ".trashinfo"),
                            trash / "info" / (nameInTrash + ".trashinfo"));
}

/// Leaves the note of a file in the home folder's trash as an older GIO does when the disk is full.
void EmptyNoteOf(GFile* file)
{
    const std::string name = std::filesystem::path(g_file_peek_path(file)).filename();
    const std::string note = std::string(g_get_user_data_dir()) + "/Trash/info/" + name + ".trashinfo";
    std::filesystem::resize_file(note, 0);
}

} // namespace

/// Stands before the system's own, as the next ones do.
extern "C" __attribute__((visibility("default"))) int lstat(const char* path, struct stat* status) noexcept
{
    if (!mayLookOften && ++looks > fewLooks)
        ::_exit(didWhatIsForbidden);
    return ::fstatat(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}

extern "C" __attribute__((visibility("default"))) DIR* opendir(const char* path)
{
    static const auto original = reinterpret_cast<decltype(&opendir)>(::dlsym(RTLD_NEXT, "opendir"));
    if (!mayList && std::filesystem::path(path).filename() == "files")
        ::_exit(didWhatIsForbidden);
    return original(path);
}

/// Stands before GIO's own. Then the note is lost, or somebody makes an empty file where one has just gone to
/// the trash, or GIO has given it another name there.
extern "C" __attribute__((visibility("default"))) gboolean
g_file_trash(GFile* file, GCancellable* cancellable, GError** error)
{
    const auto original = reinterpret_cast<decltype(&g_file_trash)>(::dlsym(RTLD_NEXT, "g_file_trash"));
#ifdef __SANITIZE_ADDRESS__
    // GIO forgets a string or two when it refuses.
    const __lsan::ScopedDisabler passOverItsLeaks;
#endif
    const gboolean done = original(file, cancellable, error);
    if (done && loseNote)
        EmptyNoteOf(file);
    if (replaceAtOnce)
        ::close(::open(g_file_peek_path(file), O_WRONLY | O_CREAT | O_EXCL, 0600));
    if (done && !nameInTrash.empty())
        RenameInTrash(file);
    return done;
}

int main(int argc, char* argv[])
{
    if (argc < 2)
        return cannotTell;

    const QByteArray renameInTrash = "--rename-in-trash=";
    std::unique_ptr<Tests::Unprivileged> stranger;
    for (int i = 1; i < argc - 1; ++i) {
        const QByteArray option = argv[i];
        if (option == "--as-stranger")
            stranger = std::make_unique<Tests::Unprivileged>();
        else if (option == "--lose-note")
            loseNote = true;
        else if (option == "--replace-at-once")
            replaceAtOnce = true;
        else if (option == "--few-looks")
            mayLookOften = false;
        else if (option == "--no-listing")
            mayList = false;
        else if (option.startsWith(renameInTrash))
            nameInTrash = option.mid(renameInTrash.size()).toStdString();
        else if (option != "--unable-to-write" || !LoseTheAbilityToWrite())
            return cannotTell;
    }

    const std::string path = QByteArray::fromPercentEncoding(argv[argc - 1]).toStdString();
    return Zendra::Core::MoveToTrash(path) ? EXIT_SUCCESS : EXIT_FAILURE;
}
