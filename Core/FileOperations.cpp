#include "Core/FileOperations.h"

#include "Core/MoveEntryToTrash.h"
#include "Core/NullCharacter.h"

#include <boost/filesystem/path.hpp>

#include <cstdlib>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace Zendra::Core {
namespace {

bool EntryExists(const std::string& path)
{
    struct stat ignored = {};
    return ::lstat(path.c_str(), &ignored) == 0;
}

/// The path without links, or nothing when the system cannot follow it.
std::string Resolve(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    return resolved ? resolved.get() : std::string();
}

/// The absolute path of an entry: links in the folders above it are resolved, its own name is not.
///
/// GIO removes ".." textually. After a link that gives another file than the system would open.
std::string Locate(const std::string& path)
{
    const std::string text = path.substr(0, path.find_last_not_of('/') + 1);
    const size_t nameStart = text.rfind('/') + 1;
    const std::string name = text.substr(nameStart);
    if (name.empty() || name == "." || name == "..")
        return Resolve(path);

    const std::string folder = Resolve(nameStart == 0 ? "." : text.substr(0, nameStart));
    if (folder.empty())
        return {};
    return (boost::filesystem::path(folder) / name).string();
}

} // namespace

bool MoveToTrash(const ioPath& path)
{
    const std::string text = path.string();
    if (HasNullCharacter(text) || !EntryExists(text))
        return false;

    const std::string entry = Locate(text);
    return !entry.empty() && MoveEntryToTrash(entry);
}

// No check for a folder first: unlink() refuses a folder, even one that has just replaced the file.
bool RemoveFile(const ioPath& path)
{
    const std::string text = path.string();
    return !HasNullCharacter(text) && ::unlink(text.c_str()) == 0;
}

} // namespace Zendra::Core
