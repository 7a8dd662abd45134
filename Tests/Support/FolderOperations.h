#pragma once

#include <cstddef>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace Tests {

/// The source of a run's random decisions: a seed, or the bytes of a fuzzer's input.
class Choices
{
public:
    explicit Choices(unsigned int seed);
    /// Does not copy the bytes.
    Choices(const unsigned char* data, std::size_t size);

    /// A number from 0 to bound - 1; always 0 once the bytes are used up.
    unsigned int Below(unsigned int bound);
    bool OneIn(unsigned int count) { return Below(count) == 0; }
    /// Always false for a seed.
    bool AreUsedUp() const { return isBytes && position == size; }

private:
    std::mt19937 generator;
    const unsigned char* data = nullptr;
    std::size_t size = 0;
    std::size_t position = 0;
    bool isBytes = false;
};

/// Random operations on real files in a playground: a folder "root" to be watched, and a folder "outside" as
/// a target of links.
///
/// Names come from small sets, so that the same one is deleted, made again, overwritten by a rename and
/// linked, and occurs in several folders. Operations that are impossible, such as moving a folder into
/// itself, are skipped.
///
/// A relative link that was moved may lead up to three levels above the playground, so these must belong to
/// the test, too.
class FolderOperations
{
public:
    struct Kinds
    {
        bool links = true; ///< symbolic links, to files and to folders, and files outside
        bool hardLinks = true;
        bool moveFolders = true;
        bool replaceRoot = true; ///< delete the root or move it away, and make it again
        bool oddNames = false;   ///< also names that are hard to decode, quote or compare
        bool oddTimes = false;   ///< also modification times around the start of 1970
    };

    /// @param folder  the playground: exists, is empty, and has no links in its path
    explicit FolderOperations(const std::filesystem::path& folder) : FolderOperations(folder, Kinds()) {}
    FolderOperations(const std::filesystem::path& folder, const Kinds& allowed);

    /// Performs one operation. @return its description, for example "write root/a/m.txt"
    std::string Perform(Choices& choices);

    std::filesystem::path Root() const { return playground / "root"; }
    /// Mostly an existing file or link, sometimes a path where there may be none.
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
