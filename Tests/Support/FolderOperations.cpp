#include "Tests/Support/FolderOperations.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace Tests {
namespace {

// The last two sort differently by their bytes and by their UTF-16 code units.
constexpr std::array fileNames = {"m.txt",
                                  "M.txt",
                                  "a.txt",
                                  "b.mp4",
                                  "B.MP4",
                                  ".h.txt",
                                  "z\xC3\xBC m.txt",
                                  "\xEF\xBD\xA1.mp4",
                                  "\xF0\x9F\x98\x80.mp4"};
constexpr std::array oddFileNames = {" blank .txt",
                                     "it's \"odd\" & <b>.txt",
                                     "\xEF\xBB\xBF"
                                     "a.txt", // a byte order mark first
                                     "\xEF\xBB\xBF.mp4",
                                     "\xC3\xBC.txt",  // composed
                                     "u\xCC\x88.txt", // decomposed
                                     "line\nbreak.txt",
                                     "\xF0\x9F\x98\x80\xEF\xBB\xBF",
                                     "..txt",
                                     "\xFF\xFE.txt", // not UTF-8
                                     "m\xC3.txt"};
constexpr std::array folderNames = {"", "a", "b", "a/c", "a/c/b", ".h", "b/.h"};
constexpr std::array folderLinkNames = {"to1", "to2", "to3.mp4"};
// Each cycle of links multiplies the paths of a file.
constexpr std::size_t folderLinkLimit = 3;

constexpr long long second = 1'000'000'000; // in nanoseconds
constexpr long long hour = 3600 * second;

/// Modification times around the start of a millisecond, in nanoseconds since 1.5e9 seconds after 1970.
constexpr std::array<long long, 7> times = {
    0, 999'999, 1'000'000, -1, 5'000'000'000, -400'000'000'000'000'000, 90'000'000'000'000'000};
/// Around midnight at the start of 1970 in several zones, in nanoseconds since 1970.
constexpr std::array<long long, 8> oddTimes = {
    0, 999'999, 1'000'000, -1, -hour, 5 * hour, -5 * hour - hour / 2, -second};

void SetTime(const fs::path& path, long long nanoseconds)
{
    const long long fraction = (nanoseconds % second + second) % second;
    const timespec both[2] = {{0, UTIME_OMIT}, {(nanoseconds - fraction) / second, fraction}};
    // Ignored: a random path may be missing.
    static_cast<void>(::utimensat(AT_FDCWD, path.c_str(), both, 0));
}

/// Sorted, since the system lists them in another order in each run.
std::vector<fs::path> Below(const fs::path& folder, bool wantFolders)
{
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; entry != end; entry.increment(error)) {
        if (fs::is_directory(entry->symlink_status(error)) == wantFolders)
            found.push_back(entry->path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

bool IsBelowOrSame(const fs::path& path, const fs::path& folder)
{
    const fs::path relative = path.lexically_relative(folder);
    return !relative.empty() && *relative.begin() != "..";
}

} // namespace

Choices::Choices(unsigned int seed) : generator(seed)
{
}

Choices::Choices(const unsigned char* bytes, std::size_t byteCount)
    : data(bytes), size(byteCount), isBytes(true)
{
}

unsigned int Choices::Below(unsigned int bound)
{
    if (!isBytes)
        return static_cast<unsigned int>(generator() % bound);
    if (position == size)
        return 0;
    return data[position++] % bound;
}

FolderOperations::FolderOperations(const fs::path& folder, const Kinds& allowed)
    : playground(folder), kinds(allowed)
{
    fs::create_directory(Root());
    fs::create_directory(playground / "outside");
}

std::string FolderOperations::Perform(Choices& choices)
{
    std::error_code error;
    switch (choices.Below(16)) {
    default:
        return Write(NewFile(choices), choices);
    case 4: {
        const fs::path path = ChooseFile(choices);
        const long long time = ChooseTime(choices);
        SetTime(path, time);
        return Described("date " + std::to_string(time), path);
    }
    case 5:
    case 6: {
        const fs::path path = ChooseFile(choices);
        fs::remove(path, error);
        return Described("remove", path);
    }
    case 7:
    case 8: {
        const fs::path from = ChooseFile(choices);
        const fs::path to = NewFile(choices);
        fs::rename(from, to, error);
        return Described("rename", from, to);
    }
    case 9: {
        const fs::path path = ChooseFolder(choices);
        fs::create_directories(path, error);
        return Described("make folder", path);
    }
    case 10: {
        const fs::path path = ExistingFolder(choices);
        if (path == Root() && !(kinds.replaceRoot && choices.OneIn(4)))
            return "nothing";
        fs::remove_all(path, error);
        return Described("remove folder", path);
    }
    case 11: {
        const fs::path from = ExistingFolder(choices);
        const fs::path to = ChooseFolder(choices);
        const bool isAllowed = kinds.moveFolders && !IsBelowOrSame(to, from)
                               && (from != Root() || (kinds.replaceRoot && choices.OneIn(4)));
        if (!isAllowed)
            return "nothing";
        fs::rename(from, to, error);
        return Described("rename folder", from, to);
    }
    case 12:
        if (!kinds.links)
            return "nothing";
        return MakeLink(choices);
    case 13: {
        if (!kinds.hardLinks)
            return "nothing";
        const fs::path from = ChooseFile(choices);
        const fs::path to = NewFile(choices);
        fs::create_hard_link(from, to, error);
        return Described("hard link", from, to);
    }
    case 14: {
        const fs::path path = ChooseFile(choices);
        if (!kinds.moveFolders || !fs::remove(path, error))
            return "nothing";
        fs::create_directory(path, error);
        SetTime(path, ChooseTime(choices));
        return Described("replace by a folder", path);
    }
    case 15: {
        const fs::path path = NewFile(choices);
        ::mkfifo(path.c_str(), 0600);
        return Described("make a pipe", path);
    }
    }
}

fs::path FolderOperations::ChooseFile(Choices& choices) const
{
    std::vector<fs::path> files = Below(Root(), false);
    if (kinds.links) {
        const std::vector<fs::path> outside = Below(playground / "outside", false);
        files.insert(files.end(), outside.begin(), outside.end());
    }
    if (files.empty() || choices.OneIn(8))
        return NewFile(choices);
    return files[choices.Below(static_cast<unsigned int>(files.size()))];
}

fs::path FolderOperations::ChooseFolder(Choices& choices) const
{
    const fs::path top = kinds.links && choices.OneIn(6) ? playground / "outside" : Root();
    const char* name = folderNames[choices.Below(folderNames.size())];
    return *name == '\0' ? top : top / name;
}

fs::path FolderOperations::NewFile(Choices& choices) const
{
    const fs::path folder = ChooseFolder(choices);
    if (kinds.oddNames && choices.OneIn(2))
        return folder / oddFileNames[choices.Below(oddFileNames.size())];
    return folder / fileNames[choices.Below(fileNames.size())];
}

long long FolderOperations::ChooseTime(Choices& choices) const
{
    if (kinds.oddTimes && choices.OneIn(2))
        return oddTimes[choices.Below(oddTimes.size())];
    return 1'500'000'000 * second + times[choices.Below(times.size())];
}

fs::path FolderOperations::ExistingFolder(Choices& choices) const
{
    const std::vector<fs::path> folders = Below(Root(), true);
    if (folders.empty() || choices.OneIn(8))
        return Root();
    return folders[choices.Below(static_cast<unsigned int>(folders.size()))];
}

std::string FolderOperations::Write(const fs::path& path, Choices& choices)
{
    std::error_code error;
    // Opening a pipe would block until there is a reader.
    if (fs::exists(path, error) && !fs::is_regular_file(path, error))
        return "nothing";
    fs::create_directories(path.parent_path(), error);
    std::ofstream(path) << std::string(choices.Below(10), 'x');
    if (choices.OneIn(2))
        SetTime(path, ChooseTime(choices));
    return Described("write", path);
}

std::string FolderOperations::MakeLink(Choices& choices)
{
    std::error_code error;
    if (choices.OneIn(2)) {
        const fs::path target = ChooseFile(choices);
        const fs::path path = NewFile(choices);
        fs::create_symlink(choices.OneIn(2) ? target : target.lexically_relative(path.parent_path()), path,
                           error);
        return Described("link", target, path);
    }

    std::vector<fs::path> folderLinks = Below(playground, false);
    const auto isNoFolderLink = [&](const fs::path& entry) { return !fs::is_directory(entry, error); };
    folderLinks.erase(std::remove_if(folderLinks.begin(), folderLinks.end(), isNoFolderLink),
                      folderLinks.end());
    if (folderLinks.size() >= folderLinkLimit) {
        const fs::path& path = folderLinks[choices.Below(static_cast<unsigned int>(folderLinks.size()))];
        fs::remove(path, error);
        return Described("remove", path);
    }
    const fs::path target = ChooseFolder(choices);
    // In two statements: the order of the choices must not depend on the compiler.
    const char* const name = folderLinkNames[choices.Below(folderLinkNames.size())];
    const fs::path path = ChooseFolder(choices) / name;
    fs::create_directory_symlink(choices.OneIn(2) ? target : target.lexically_relative(path.parent_path()),
                                 path, error);
    return Described("link folder", target, path);
}

std::string FolderOperations::Described(const std::string& verb, const fs::path& path) const
{
    return verb + ' ' + path.lexically_relative(playground).string();
}

std::string FolderOperations::Described(const std::string& verb, const fs::path& from,
                                        const fs::path& to) const
{
    return Described(verb, from) + " -> " + to.lexically_relative(playground).string();
}

} // namespace Tests
