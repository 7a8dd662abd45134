#pragma once

#include <cstddef>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace Tests {

/// Where a run takes its decisions from: a seed, or the bytes of an input.
class Choices
{
public:
    explicit Choices(unsigned int seed);
    /// Does not copy the bytes.
    Choices(const unsigned char* data, std::size_t size);

    /// 0 to bound - 1; 0 once the bytes are used up.
    unsigned int Below(unsigned int bound);
    bool OneIn(unsigned int count) { return Below(count) == 0; }
    /// Never true for a seed.
    bool AreUsedUp() const { return isBytes && position == size; }

private:
    std::mt19937 generator;
    const unsigned char* data = nullptr;
    std::size_t size = 0;
    std::size_t position = 0;
    bool isBytes = false;
};

/// Does real things to the files in a playground: a folder "root" to be watched, and a folder "outside" that
/// links may lead to.
///
/// Names come from small sets, so that the same one is deleted, made again, renamed over and linked, in
/// several folders at once. What cannot be done, such as a folder moved into itself, is left undone.
///
/// A relative link that is moved may lead up to three levels above the playground: give these to it, too.
class FolderOperations
{
public:
    struct Kinds
    {
        bool links = true; ///< symbolic links, to files and to folders, and files outside
        bool hardLinks = true;
        bool moveFolders = true;
        bool replaceRoot = true; ///< delete the root or move it away, and make it again
        bool oddNames = false;   ///< names that are hard to decode, quote or compare, too
        bool oddTimes = false;   ///< modification times around the start of 1970, too
    };

    /// The playground exists, is empty, and has no links in its path.
    explicit FolderOperations(const std::filesystem::path& folder) : FolderOperations(folder, Kinds()) {}
    FolderOperations(const std::filesystem::path& folder, const Kinds& allowed);

    /// Does one thing and says what, for example "write root/a/m.txt".
    std::string Perform(Choices& choices);

    std::filesystem::path Root() const { return playground / "root"; }
    /// A file or link that is there, or a path where there may be none.
    std::filesystem::path ChooseFile(Choices& choices) const;
    std::filesystem::path ChooseFolder(Choices& choices) const;

private:
    std::filesystem::path NewFile(Choices& choices) const;
    /// In nanoseconds since 1970.
    long long ChooseTime(Choices& choices) const;
    std::filesystem::path ExistingFolder(Choices& choices) const;
    std::string Write(const std::filesystem::path& path, Choices& choices);
    std::string MakeLink(Choices& choices);
    std::string Described(const std::string& verb, const std::filesystem::path& path) const;
    std::string Described(const std::string& verb, const std::filesystem::path& from,
                          const std::filesystem::path& to) const;

    std::filesystem::path playground;
    Kinds kinds;
};

} // namespace Tests
