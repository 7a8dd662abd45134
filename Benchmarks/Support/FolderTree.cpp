#include "Benchmarks/Support/FolderTree.h"

#include <QFile>

#include <stdexcept>
#include <string>

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

} // namespace

FolderTree::FolderTree(int folders, int filesPerFolder, bool sameNames) : fileCount(folders * filesPerFolder)
{
    Fill(Path(), folders, filesPerFolder, sameNames);
}

void FolderTree::Fill(const QString& path, int folders, int filesPerFolder, bool sameNames)
{
    const std::string root = QFile::encodeName(path).toStdString();
    for (int folder = 0; folder < folders; ++folder) {
        const std::string folderPath = root + "/Folder " + std::to_string(folder);
        Require(::mkdir(folderPath.c_str(), 0755) == 0, folderPath);
        for (int file = 0; file < filesPerFolder; ++file) {
            // The numbers of a folder lie scattered over all names, as those of recordings of many days do.
            const int number = sameNames ? file : file * folders + folder;
            const std::string filePath = folderPath + "/Recording " + std::to_string(number) + ".png";
            const int descriptor = ::open(filePath.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644);
            Require(descriptor >= 0, filePath);
            ::close(descriptor);
        }
    }
}

} // namespace Benchmarks
