#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Tests {

/// A model of a polling watcher: works out from the file system what it must report and list, with the
/// standard library alone.
///
/// Each step gets what the watcher did and checks it. The file system must not change between the watcher's
/// step and the model's.
///
/// Two things are left to the watcher: the order of files of one name, and when it resolves an entry's links
/// for the first time, since a QFileInfo remembers the result. The model follows every possibility and drops
/// those that contradict what the watcher did.
class FolderModel
{
public:
    struct Settings
    {
        std::string dirPath;
        std::vector<std::string> nameFilters; ///< with * and ?; the case of ASCII letters does not matter
        std::function<bool(const std::string& path)> filter;
        unsigned int depth = 0;
    };

    struct File
    {
        std::string path;
        std::int64_t time; ///< modification time in milliseconds since 1970

        bool operator==(const File& other) const { return path == other.path && time == other.time; }
    };

    struct Observation
    {
        /// The signals, such as "FileAdded /folder/a.txt", and "Asked <path>" for each call of the predicate.
        std::vector<std::string> trace;
        std::vector<File> files; ///< the snapshot afterwards
    };

    /// Each returns what the watcher did wrong, or an empty text.
    std::string Start(const Settings& wanted, const Observation& observed);
    std::string Stop(const Observation& observed);
    std::string CheckFolder(const Observation& observed);
    std::string OnDirectoryChanged(const std::string& path, const Observation& observed);
    std::string OnFileChanged(const std::string& path, const Observation& observed);

    /// The accepted files of a new scan, sorted by path.
    static std::vector<std::string> Scan(const Settings& settings);

private:
    struct Entry
    {
        std::string path;
        std::u16string name;
        std::int64_t time = 0;
        std::string target;                          ///< the canonical path, as it is now
        std::set<std::string> earlierTargets;        ///< one of them may have been remembered
        std::optional<std::string> rememberedTarget; ///< replaces the target in comparisons

        bool operator<(const Entry& other) const;
    };
    /// One possible content of the watcher's list.
    using Snapshot = std::vector<Entry>;

    /// One possible course of a step.
    struct Branch
    {
        Snapshot snapshot;
        std::size_t explained = 0; ///< the length of the trace that it accounts for

        bool operator<(const Branch& other) const;
    };
    using Branches = std::set<Branch>;

    enum class Mode
    {
        Initial, ///< at a start, without signals
        Filling, ///< into an empty snapshot: there is nothing to compare with
        Inserting
    };

    class Step;

    static Entry ReadEntry(const std::string& path);
    static bool AreEqual(const Entry& a, const Entry& b);
    static bool AreAlwaysEqual(const Entry& a, const Entry& b);
    static std::vector<Snapshot> WithTargetsDecided(const Snapshot& snapshot, const Entry& entry);
    static int FindIndex(const Snapshot& snapshot, const Entry& entry);
    std::vector<Entry> ScanSorted(const std::string& path) const;
    void ScanInto(std::vector<Entry>& entries, const std::string& path, unsigned int depth) const;
    bool MatchesNameFilters(const std::string& name) const;

    Branches BeginStep();
    std::string FinishStep(const Step& step, const Branches& branches);

    void AddNewFiles(Step& step, Branches& branches, const std::string& path, Mode mode) const;
    void AddNewFiles(Step& step, Branches& branches, const std::string& path) const;
    void AddNewFilesOfOneName(Step& step, Branches& branches, const std::vector<Entry>& entries,
                              Mode mode) const;
    Branches AddIfNew(Step& step, const Branch& branch, const Entry& entry, Mode mode) const;
    void CheckFile(Step& step, Branches& branches, const std::string& path) const;

    Settings settings;
    std::set<Snapshot> snapshots = {Snapshot()};
};

} // namespace Tests
