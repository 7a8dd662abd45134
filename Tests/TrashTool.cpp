// Calls MoveToTrash() in a process of its own, since a process reads the environment for the trash only once.
//
//     TrashTool [option]... <path, percent-encoded>
//
//     --as-other-user         run as an unprivileged user
//     --full-disk             fail when something is written to a file
//     --lose-info             empty the info of the file in the trash
//     --replace-file          make an empty file where the trashed one was
//     --rename-in-trash=NAME  give the file another name in the trash
//     --few-lstat-calls       forbid many calls of lstat()
//     --no-listing            forbid listing the trash
//
// The exit code is 0 when the call returned true, 1 when it returned false, 2 when an option is wrong, and 3
// when the call did something forbidden.

#include "Core/FileOperations.h"
#include "Tests/Support/NextFunction.h"
#include "Tests/Support/Unprivileged.h"

#include <QByteArray>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <gio/gio.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
#    include <sanitizer/lsan_interface.h>
#endif

namespace {

constexpr int wrongUsage = 2;
constexpr int forbiddenCall = 3;

bool loseInfo = false;
bool replaceFile = false;
std::string nameInTrash;
bool mayList = true;
bool mayCallLstatOften = true;
constexpr int fewCalls = 100;
std::atomic<int> lstatCalls = 0;

/// As on a full disk, files can be made, moved and deleted from now on, but nothing can be written to them.
bool ForbidWriting()
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

/// Empties the info of a file in the home folder's trash, as an older GIO leaves it when the disk is full.
void EmptyInfoOf(GFile* file)
{
    const std::string name = std::filesystem::path(g_file_peek_path(file)).filename();
    const std::string info = std::string(g_get_user_data_dir()) + "/Trash/info/" + name + ".trashinfo";
    std::filesystem::resize_file(info, 0);
}

} // namespace

// These replace functions of the system and of GIO.

extern "C" __attribute__((visibility("default"))) int lstat(const char* path, struct stat* status) noexcept
{
    if (!mayCallLstatOften && ++lstatCalls > fewCalls)
        ::_exit(forbiddenCall);
    return ::fstatat(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}

extern "C" __attribute__((visibility("default"))) DIR* opendir(const char* path)
{
    static const auto original = Tests::NextFunction<decltype(opendir)>("opendir");
    if (!mayList && std::filesystem::path(path).filename() == "files")
        ::_exit(forbiddenCall);
    return original(path);
}

extern "C" __attribute__((visibility("default"))) gboolean
g_file_trash(GFile* file, GCancellable* cancellable, GError** error)
{
    const auto original = Tests::NextFunction<decltype(g_file_trash)>("g_file_trash");
#ifdef __SANITIZE_ADDRESS__
    // GIO leaks a few strings when it refuses a file.
    const __lsan::ScopedDisabler ignoreLeaks;
#endif
    const gboolean done = original(file, cancellable, error);
    if (done && loseInfo)
        EmptyInfoOf(file);
    if (replaceFile)
        ::close(::open(g_file_peek_path(file), O_WRONLY | O_CREAT | O_EXCL, 0600));
    if (done && !nameInTrash.empty())
        RenameInTrash(file);
    return done;
}

int main(int argc, char* argv[])
{
    if (argc < 2)
        return wrongUsage;

    const QByteArray renameInTrash = "--rename-in-trash=";
    std::unique_ptr<Tests::Unprivileged> otherUser;
    for (int i = 1; i < argc - 1; ++i) {
        const QByteArray option = argv[i];
        if (option == "--as-other-user")
            otherUser = std::make_unique<Tests::Unprivileged>();
        else if (option == "--lose-info")
            loseInfo = true;
        else if (option == "--replace-file")
            replaceFile = true;
        else if (option == "--few-lstat-calls")
            mayCallLstatOften = false;
        else if (option == "--no-listing")
            mayList = false;
        else if (option.startsWith(renameInTrash))
            nameInTrash = option.mid(renameInTrash.size()).toStdString();
        else if (option != "--full-disk" || !ForbidWriting())
            return wrongUsage;
    }

    const std::string path = QByteArray::fromPercentEncoding(argv[argc - 1]).toStdString();
    return Zendra::Core::MoveToTrash(path) ? EXIT_SUCCESS : EXIT_FAILURE;
}
