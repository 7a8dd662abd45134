#include "Benchmarks/Support/Work.h"
#include "Core/FileOperations.h"

#include <QDir>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gio/gio.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace Benchmarks {
namespace {

constexpr int filesToMove = 100;

/// A temporary home folder, so that the user's trash is not used.
///
/// GLib finds the trash once per process, so an empty and a full trash are moved to its path in turn.
class Home
{
public:
    Home() : root(FolderThatHasATrash() + QStringLiteral("/LWBenchmarks-XXXXXX"))
    {
        qputenv("HOME", root.path().toUtf8());
        qputenv("XDG_DATA_HOME", root.filePath(QStringLiteral("data")).toUtf8());
        fs::create_directories(Path("work"));
        fs::create_directories(Path("data"));
        MakeTrash(Path("empty"), 0);
        MakeTrash(Path("full"), IsBrief() ? 100 : 50000);
        // Otherwise the first contender waits until the system has written all these files.
        ::sync();
    }

    /// Calls run() with one of the trashes, "empty" or "full", in its original state.
    void Use(const std::string& trash, const std::function<void(const std::vector<std::string>&)>& run) const
    {
        const std::vector<std::string> files = MakeFiles();
        fs::rename(Path(trash), Path("data/Trash"));
        run(files);
        TakeOut(files);
        fs::rename(Path("data/Trash"), Path(trash));
    }

private:
    /// The temporary folder may be on tmpfs, from which GIO moves no file to the trash.
    static QString FolderThatHasATrash()
    {
        const bool isInMemory = QStorageInfo(QDir::tempPath()).fileSystemType() == "tmpfs";
        return isInMemory ? QStringLiteral("/var/tmp") : QDir::tempPath();
    }

    std::string Path(const std::string& name) const { return root.path().toStdString() + '/' + name; }

    static void MakeTrash(const fs::path& trash, int files)
    {
        fs::create_directories(trash / "files");
        fs::create_directories(trash / "info");
        for (int i = 0; i < files; ++i) {
            const std::string name = "Recording " + std::to_string(i) + ".mp4";
            std::ofstream(trash / "files" / name);
            std::ofstream(trash / "info" / (name + ".trashinfo"))
                << "[Trash Info]\nPath=/home/somebody/" << i << ".mp4\nDeletionDate=2026-01-01T00:00:00\n";
        }
    }

    std::vector<std::string> MakeFiles() const
    {
        std::vector<std::string> files;
        for (int i = 0; i < filesToMove; ++i) {
            files.push_back(Path("work/Take " + std::to_string(i) + ".mp4"));
            std::ofstream(files.back()).flush();
        }
        return files;
    }

    void TakeOut(const std::vector<std::string>& files) const
    {
        const fs::path trash = Path("data/Trash");
        for (const fs::path file : files) {
            const std::string name = file.filename();
            if (!fs::remove(trash / "files" / name) || !fs::remove(trash / "info" / (name + ".trashinfo")))
                throw std::runtime_error("did not come into the trash: " + name);
        }
    }

    const QTemporaryDir root;
};

void MoveByLibrary(const std::vector<std::string>& files)
{
    for (const std::string& file : files)
        Zendra::Core::MoveToTrash(file);
}

void MoveByGio(const std::vector<std::string>& files)
{
    for (const std::string& path : files) {
        GFile* const file = g_file_new_for_path(path.c_str());
        g_file_trash(file, nullptr, nullptr);
        g_object_unref(file);
    }
}

} // namespace

void AddTrashBenchmarks()
{
    const Work work{"MoveToTrash, 100 files, 50,000 files in the trash", "empty trash", 3};
    const auto home = std::make_shared<std::unique_ptr<Home>>();
    const auto measure = [home](const std::string& trash, void (*move)(const std::vector<std::string>&)) {
        return [home, trash, move](benchmark::State& state) {
            if (!*home)
                *home = std::make_unique<Home>();
            for (auto _ : state) {
                state.PauseTiming();
                (*home)->Use(trash, [&](const std::vector<std::string>& files) {
                    state.ResumeTiming();
                    move(files);
                    state.PauseTiming();
                });
                state.ResumeTiming();
            }
        };
    };

    AddContender(work, "empty trash", measure("empty", &MoveByLibrary), 11);
    AddContender(work, "GIO", measure("full", &MoveByGio), 11);
    AddContender(work, Contender::library, measure("full", &MoveByLibrary), 11);
}

} // namespace Benchmarks
