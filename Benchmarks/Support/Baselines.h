#pragma once

#include <QFileInfo>
#include <QList>
#include <QString>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <unordered_map>

/// The baselines of the library, written as an application would write them.
namespace Benchmarks {

/// Whether to include a file, by its name. An empty function includes all files.
using KeepsName = std::function<bool(const char* name)>;

/// The file system's own cost: readdir alone. @return the number of files
std::size_t ListRaw(const std::string& path);
/// The file system's own cost: readdir, and fstatat for each file that counts.
std::size_t ListAndStatRaw(const std::string& path, const KeepsName& keeps = {});

/// The polling loop that an application would write with the standard library.
class PollingLoop
{
public:
    explicit PollingLoop(const KeepsName& keepsName = {}) : keeps(keepsName) {}

    /// Call this once.
    void Start(const std::filesystem::path& root);
    /// @return the number of differences
    std::size_t Check(const std::filesystem::path& root);

private:
    bool IsIncluded(const std::filesystem::directory_entry& entry) const;

    KeepsName keeps;
    std::unordered_map<std::string, std::filesystem::file_time_type> known;
};

/// The checker's rules, implemented directly with QDir, std::sort and QFileInfo, regardless of speed.
class Transcription
{
public:
    void Start(const QString& root);
    /// Both halves of a pass. @return the number of differences
    std::size_t Check(const QString& root);
    /// The half that searches for new files.
    std::size_t LookForNewFiles(const QString& root);

private:
    int IndexOf(const QFileInfo& info) const;

    QList<QFileInfo> files;
};

} // namespace Benchmarks
