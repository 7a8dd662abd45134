#include "Tests/Support/TempFolder.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tests {
namespace {

void Require(bool done, const char* step, const QString& path)
{
    if (!done)
        throw std::runtime_error(std::string(step) + " " + path.toStdString() + ": " + std::strerror(errno));
}

QByteArray Native(const QString& path)
{
    return QFile::encodeName(path);
}

/// Only root can delete what is in a folder that a test has closed.
void Open(const std::filesystem::path& folder)
{
    namespace fs = std::filesystem;
    std::error_code ignored;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (fs::directory_iterator entry(folder, ignored), end; entry != end; entry.increment(ignored))
        if (entry->symlink_status(ignored).type() == fs::file_type::directory)
            Open(entry->path());
}

} // namespace

TempFolder::TempFolder()
{
    Require(holder.isValid(), "make a folder", holder.path());
    root.setPath(QFileInfo(holder.path()).canonicalFilePath());
}

TempFolder::~TempFolder()
{
    const std::filesystem::path folder = Native(Path()).toStdString();
    Open(folder);
    // QTemporaryDir cannot delete a name that is no text.
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

QString TempFolder::Write(const PathText& relativePath, const QByteArray& content) const
{
    const QString path = Path(relativePath);
    Require(QDir().mkpath(QFileInfo(path).path()), "make the folder of", path);
    QFile file(path);
    Require(file.open(QIODevice::WriteOnly), "open", path);
    Require(file.write(content) == content.size() && file.flush(), "write", path);
    return path;
}

QString TempFolder::MakeFolder(const PathText& relativePath) const
{
    Require(root.mkpath(relativePath), "make", Path(relativePath));
    return Path(relativePath);
}

QString TempFolder::Link(const PathText& target, const PathText& relativePath) const
{
    Require(::symlink(Native(target), Native(Path(relativePath))) == 0, "link", Path(relativePath));
    return Path(relativePath);
}

void TempFolder::HardLink(const PathText& existingPath, const PathText& relativePath) const
{
    Require(::link(Native(Path(existingPath)), Native(Path(relativePath))) == 0, "link", Path(relativePath));
}

void TempFolder::Remove(const PathText& relativePath) const
{
    Require(::unlink(Native(Path(relativePath))) == 0, "remove", Path(relativePath));
}

void TempFolder::RemoveFolder(const PathText& relativePath) const
{
    Require(QDir(Path(relativePath)).removeRecursively(), "remove", Path(relativePath));
}

void TempFolder::Rename(const PathText& from, const PathText& to) const
{
    Require(std::rename(Native(Path(from)), Native(Path(to))) == 0, "rename", Path(from));
}

void TempFolder::SetModificationTime(const PathText& relativePath, const QDateTime& time) const
{
    QFile file(Path(relativePath));
    Require(file.open(QIODevice::ReadWrite), "open", file.fileName());
    Require(file.setFileTime(time, QFileDevice::FileModificationTime), "date", file.fileName());
}

void TempFolder::SetModificationTime(const PathText& relativePath, std::chrono::nanoseconds sinceEpoch) const
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    const timespec times[2] = {{0, UTIME_OMIT}, {seconds.count(), (sinceEpoch - seconds).count()}};
    Require(::utimensat(AT_FDCWD, Native(Path(relativePath)), times, 0) == 0, "date", Path(relativePath));
}

void TempFolder::Touch(const PathText& relativePath) const
{
    SetModificationTime(relativePath, QFileInfo(Path(relativePath)).lastModified().addSecs(60));
}

void TempFolder::SetPermissions(const PathText& relativePath, unsigned int mode) const
{
    Require(::chmod(Native(Path(relativePath)), static_cast<mode_t>(mode)) == 0, "set the permissions of",
            Path(relativePath));
}

QStringList TempFolder::Entries(const PathText& relativePath) const
{
    return QDir(Path(relativePath))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace Tests
