#include "Benchmarks/Support/FolderTree.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <random>
#include <stdexcept>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Benchmarks {
namespace {

void Require(bool done, const std::string& path)
{
    if (!done)
        throw std::runtime_error("cannot make " + path);
}

void MakeFile(const std::string& path)
{
    const int descriptor = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644);
    Require(descriptor >= 0, path);
    ::close(descriptor);
}

void Rename(const std::string& from, const std::string& to)
{
    Require(std::rename(from.c_str(), to.c_str()) == 0, to);
}

std::string FolderName(int folder)
{
    return "/Folder " + std::to_string(folder);
}

/// Consecutive numbers are in different folders, so sorting by name mixes the folders.
std::string FileName(int folder, int file, int folders, bool sameNames)
{
    return "/Recording " + std::to_string(sameNames ? file : file * folders + folder) + ".png";
}

std::string AddedFileNextTo(const std::string& path)
{
    return path.substr(0, path.size() - 4) + " edited.png";
}

std::vector<std::string> Listed(const std::string& path)
{
    std::vector<std::string> names;
    DIR* const folder = ::opendir(path.c_str());
    Require(folder != nullptr, path);
    while (const dirent* entry = ::readdir(folder))
        names.emplace_back(entry->d_name);
    ::closedir(folder);
    return names;
}

QString Template(const QString& parent)
{
    return (parent.isEmpty() ? QDir::tempPath() : parent) + QStringLiteral("/LWBenchmarks-XXXXXX");
}

} // namespace

FolderTree::FolderTree(int folders, int files, bool haveSameNames, const QString& parent)
    : root(Template(parent)), folderCount(folders), filesPerFolder(files), sameNames(haveSameNames)
{
    Fill(Path(), folders, files, sameNames);
}

void FolderTree::Fill(const QString& path, int folders, int filesPerFolder, bool sameNames)
{
    const std::string root = QFile::encodeName(path).toStdString();
    for (int folder = 0; folder < folders; ++folder) {
        const std::string folderPath = root + FolderName(folder);
        Require(::mkdir(folderPath.c_str(), 0755) == 0, folderPath);
        for (int file = 0; file < filesPerFolder; ++file)
            MakeFile(folderPath + FileName(folder, file, folders, sameNames));
    }
}

std::string FolderTree::NativePath(int folder, int file) const
{
    return QFile::encodeName(Path()).toStdString() + FolderName(folder)
           + FileName(folder, file, folderCount, sameNames);
}

template <typename Action>
void FolderTree::ForOnePercent(Action action) const
{
    for (int i = 0; i < FileCount(); i += 100)
        action(NativePath(i / filesPerFolder, i % filesPerFolder));
}

void FolderTree::ChangeTimesOfOnePercent()
{
    const timespec both[2] = {{0, UTIME_OMIT}, {1'500'000'000 + ++dates, 0}};
    ForOnePercent(
        [&](const std::string& path) { Require(::utimensat(AT_FDCWD, path.c_str(), both, 0) == 0, path); });
}

void FolderTree::AddOnePercent() const
{
    ForOnePercent([](const std::string& path) { MakeFile(AddedFileNextTo(path)); });
}

void FolderTree::RemoveAdded() const
{
    ForOnePercent([](const std::string& path) { ::unlink(AddedFileNextTo(path).c_str()); });
}

void FolderTree::RemoveOnePercent() const
{
    ForOnePercent([](const std::string& path) { ::unlink(path.c_str()); });
}

void FolderTree::RestoreRemoved() const
{
    ForOnePercent(MakeFile);
}

bool FolderTree::ShuffleListing()
{
    const std::string first = QFile::encodeName(Path()).toStdString() + FolderName(0);
    const std::vector<std::string> before = Listed(first);
    std::mt19937 generator(++shuffles);
    for (int folder = 0; folder < folderCount; ++folder) {
        std::vector<int> order(static_cast<std::size_t>(filesPerFolder));
        std::iota(order.begin(), order.end(), 0);
        std::shuffle(order.begin(), order.end(), generator);
        for (const int file : order) {
            const std::string path = NativePath(folder, file);
            Rename(path, path + '~');
            Rename(path + '~', path);
        }
    }
    return Listed(first) != before;
}

} // namespace Benchmarks
