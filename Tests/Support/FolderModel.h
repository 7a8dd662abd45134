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

/// What a polling watcher has to report and to keep, worked out from the file system by the standard library
/// alone.
///
/// Every step is told what the watcher did and says whether that is right. The file system must not change
/// between the two.
///
/// Two things are left to the watcher: the order of files of one name, and when an entry's links are resolved
/// for the first time, for its target is remembered from then on. The model follows every possibility, and
/// drops those that what the watcher does contradicts.
class FolderModel
{
public:
    struct Settings
    {
        std::string dirPath;
        std::vector<std::string> nameFilters; ///< with * and ?, without regard to the case of ASCII letters
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
        /// The signals, and "Asked <path>" for each question to the predicate: "FileAdded /folder/a.txt".
        std::vector<std::string> trace;
        std::vector<File> files; ///< the snapshot afterwards
    };

    /// Each returns an empty text if the watcher was right, else what is wrong.
    std::string Start(const Settings& wanted, const Observation& observed);
    std::string Stop(const Observation& observed);
    std::string CheckFolder(const Observation& observed);
    std::string OnDirectoryChanged(const std::string& path, const Observation& observed);
    std::string OnFileChanged(const std::string& path, const Observation& observed);

    /// What a new scan finds and keeps, sorted by path.
    static std::vector<std::string> Scan(const Settings& settings);

private:
    struct Entry
    {
        std::string path;
        std::u16string name;
        std::int64_t time = 0;
        std::string target;                    ///< the path without links, as it is now
        std::set<std::string> earlier;         ///< what it was before and may have been remembered as
        std::optional<std::string> remembered; ///< what counts from now on

        bool operator<(const Entry& other) const;
    };
    using World = std::vector<Entry>;

    struct Branch
    {
        World world;
        std::size_t explained = 0; ///< how much of the trace

        bool operator<(const Branch& other) const;
    };
    using Branches = std::set<Branch>;

    enum class Mode
    {
        Initial, ///< at a start, without signals
        Filling, ///< an empty snapshot: there is nothing to compare with
        Inserting
    };

    class Step;

    static Entry Look(const std::string& path);
    static bool AreEqual(const Entry& a, const Entry& b);
    static bool IsSurelyEqual(const Entry& a, const Entry& b);
    static std::vector<World> Decided(const World& world, const Entry& entry);
    static int FindPlace(const World& world, const Entry& entry);
    std::vector<Entry> ScanSorted(const std::string& path) const;
    void ScanInto(std::vector<Entry>& entries, const std::string& path, unsigned int depth) const;
    bool MatchesNameFilters(const std::string& name) const;

    Branches Begin();
    std::string Finish(const Step& step, const Branches& branches);

    void TakeNewFiles(Step& step, Branches& branches, const std::string& path) const;
    void TakeNewFilesOfOneName(Step& step, Branches& branches, const std::vector<Entry>& entries,
                               Mode mode) const;
    Branches TakeIfNew(Step& step, const Branch& branch, const Entry& entry, Mode mode) const;
    void LookAt(Step& step, Branches& branches, const std::string& path) const;

    Settings settings;
    std::set<World> worlds = {World()};
};

} // namespace Tests
