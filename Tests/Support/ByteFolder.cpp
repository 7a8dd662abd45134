#include "Tests/Support/ByteFolder.h"

#include "Tests/Support/Require.h"

#include <QFile>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace Tests {

ByteFolder::ByteFolder() : root(QFile::encodeName(holder.Path()).toStdString())
{
    SetMode(".", 0755);
}

bool ByteFolder::CanStore(const std::string& name) const
{
    const int file = ::open(Path(name).c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (file < 0)
        return errno != EILSEQ;
    ::close(file);
    ::unlink(Path(name).c_str());
    return true;
}

std::string ByteFolder::Write(const std::string& name, const std::string& content) const
{
    const fs::path path = Path(name);
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    Require(bool(file << content << std::flush), "write " + path.string());
    return path;
}

std::string ByteFolder::MakeFolder(const std::string& name, mode_t mode) const
{
    fs::create_directories(Path(name));
    SetMode(name, mode);
    return Path(name);
}

std::string ByteFolder::Link(const std::string& target, const std::string& name) const
{
    fs::create_symlink(target, Path(name));
    return Path(name);
}

void ByteFolder::SetMode(const std::string& name, mode_t mode) const
{
    Require(::chmod(Path(name).c_str(), mode) == 0, "set the mode of " + Path(name));
}

std::vector<std::string> ByteFolder::Tree() const
{
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(root))
        names.push_back(entry.path().lexically_relative(root));
    return names;
}

} // namespace Tests
