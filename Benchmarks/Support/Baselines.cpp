#include "Benchmarks/Support/Baselines.h"

#include <QDateTime>
#include <QDir>

#include <algorithm>
#include <limits>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace Benchmarks {
namespace {

enum class FileStat
{
    Skip,
    Read
};

std::size_t WalkRaw(const std::string& path, FileStat fileStat, const KeepsName& keeps)
{
    DIR* const folder = ::opendir(path.c_str());
    if (!folder)
        return 0;
    std::size_t files = 0;
    while (const dirent* entry = ::readdir(folder)) {
        if (entry->d_name[0] == '.')
            continue;
        if (entry->d_type == DT_DIR) {
            files += WalkRaw(path + '/' + entry->d_name, fileStat, keeps);
            continue;
        }
        if (keeps && !keeps(entry->d_name))
            continue;
        struct stat data;
        if (fileStat == FileStat::Skip || ::fstatat(::dirfd(folder), entry->d_name, &data, 0) == 0)
            ++files;
    }
    ::closedir(folder);
    return files;
}

bool NameLess(const QFileInfo& a, const QFileInfo& b)
{
    return a.fileName() < b.fileName();
}

QList<QFileInfo> Scan(const QString& path, unsigned int depth)
{
    const QDir dir(path);
    QList<QFileInfo> files = dir.entryInfoList(QStringList(), QDir::Files, QDir::NoSort);
    if (depth == 0)
        return files;
    for (const QFileInfo& folder : dir.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort))
        files.append(Scan(folder.absoluteFilePath(), depth - 1));
    return files;
}

QList<QFileInfo> SortedScan(const QString& path)
{
    QList<QFileInfo> files = Scan(path, std::numeric_limits<unsigned int>::max());
    std::sort(files.begin(), files.end(), NameLess);
    return files;
}

} // namespace

std::size_t ListRaw(const std::string& path)
{
    return WalkRaw(path, FileStat::Skip, {});
}

std::size_t ListAndStatRaw(const std::string& path, const KeepsName& keeps)
{
    return WalkRaw(path, FileStat::Read, keeps);
}

void PollingLoop::Start(const std::filesystem::path& root)
{
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (IsIncluded(entry))
            known[entry.path().string()] = entry.last_write_time();
    }
}

std::size_t PollingLoop::Check(const std::filesystem::path& root)
{
    std::size_t differences = 0;
    for (auto file = known.begin(); file != known.end();) {
        if (std::filesystem::exists(file->first)) {
            ++file;
        } else {
            file = known.erase(file);
            ++differences;
        }
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (!IsIncluded(entry))
            continue;
        const auto time = entry.last_write_time();
        const auto [file, added] = known.try_emplace(entry.path().string(), time);
        if (added || file->second != time) {
            file->second = time;
            ++differences;
        }
    }
    return differences;
}

bool PollingLoop::IsIncluded(const std::filesystem::directory_entry& entry) const
{
    return entry.is_regular_file() && (!keeps || keeps(entry.path().filename().c_str()));
}

void Transcription::Start(const QString& root)
{
    files = SortedScan(root);
    for (const QFileInfo& info : qAsConst(files))
        info.lastModified();
}

std::size_t Transcription::Check(const QString& root)
{
    const QList<QFileInfo> known = files;
    std::size_t differences = LookForNewFiles(root);
    for (const QFileInfo& entry : known) {
        const QFileInfo info(entry.absoluteFilePath());
        const int index = IndexOf(info);
        if (!info.exists() || info.lastModified() != files.at(index).lastModified())
            ++differences;
    }
    return differences;
}

std::size_t Transcription::LookForNewFiles(const QString& root)
{
    std::size_t differences = 0;
    for (const QFileInfo& info : SortedScan(root)) {
        const int index = IndexOf(info);
        if (index == -1 || files.at(index) != info)
            ++differences;
    }
    return differences;
}

int Transcription::IndexOf(const QFileInfo& info) const
{
    const auto range = std::equal_range(files.begin(), files.end(), info, NameLess);
    if (range.first == files.end())
        return -1;
    for (auto entry = range.first; entry != range.second; ++entry) {
        if (*entry == info)
            return static_cast<int>(entry - files.begin());
    }
    return static_cast<int>(range.first - files.begin());
}

} // namespace Benchmarks
