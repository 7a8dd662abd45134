#pragma once

#include "Core/Export.h"

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/path.hpp>

#include <iosfwd>
#include <string>

namespace Zendra {

/// A path in the file system, with the few operations that the application needs.
///
/// A plain value: made from text, copied and compared freely, without any state on the disk. Every call asks
/// the file system anew. A path may be relative: each call then starts at the process's current folder.
///
///     Zendra::ioPath folder = settings.outputFolder; // UTF-8
///     if (!Zendra::ioPath::create_directories(folder))
///         return;
///     for (auto entry = folder.iterator(); entry != boost::filesystem::directory_iterator(); ++entry)
///         std::cout << Zendra::ioPath(entry->path()) << '\n';
///
/// The text is UTF-8, but this is not checked: names on Linux are bytes, and bytes that are not UTF-8 are
/// returned unchanged. No name can contain a null character, so a path that does names nothing, and no call
/// below uses only the part before it.
///
/// The calls that access the disk block for as long as the file system takes. Thread safety is that of a
/// std::string: any number of threads may read an object, or one may change it.
class ZENDRA_CORE_EXPORT ioPath
{
public:
    /// The empty path, which names nothing.
    ioPath() = default;
    /// From text, unchanged. Implicit, so that text can be passed where a path is expected.
    /// @param utf8  not null
    ioPath(const char* utf8);
    /// From text, unchanged; implicit, too.
    ioPath(const std::string& utf8);
    /// From Boost's path, with the same text; implicit, too.
    ioPath(const boost::filesystem::path& path);

    /// The text it was made from, unchanged: no slash is added, double slashes stay.
    std::string string() const;

    /// Whether there is an entry of any kind at the path.
    ///
    /// Links are followed.
    /// @return false for a missing entry, a dangling link, a loop of links, the empty path, and when the
    ///         answer cannot be found out, as in a folder that may not be entered. Never throws.
    bool exists() const;

    /// Creates a folder, with every missing folder above it.
    ///
    /// Folders that were already created stay when a later one fails. ".." is the folder above, so
    /// "new/../other" creates both.
    ///
    /// @return true when the path is a folder now: created, there before, or reached by a link. False when
    ///         something else has the name (also a dangling link), the system refuses, or the path is empty.
    ///         Never throws.
    static bool create_directories(const ioPath& folder);

    /// Lists the entries of the folder, in no particular order and without "." and "..".
    ///
    /// Intended: throws, although exists() returns false for every error. An unreadable folder must not look
    /// like an empty one: the next number chosen in it would be that of an existing file.
    ///
    /// @return the first entry; the end iterator when the folder is empty
    /// @throws boost::filesystem::filesystem_error when the path is missing, is not a folder or cannot be
    ///         listed. The iterator's ++ throws it too, when reading fails later.
    boost::filesystem::directory_iterator iterator() const;

    /// Paths are compared name by name, as bytes, without access to the disk: "a//b" equals "a/b", but "a",
    /// "a/" and "./a" all differ, and so do the composed and the decomposed form of an umlaut.
    friend bool operator==(const ioPath& left, const ioPath& right) { return left.path == right.path; }
    /// The opposite of ==.
    friend bool operator!=(const ioPath& left, const ioPath& right) { return left.path != right.path; }
    /// An order for maps and sorted lists, consistent with ==.
    friend bool operator<(const ioPath& left, const ioPath& right) { return left.path < right.path; }

private:
    boost::filesystem::path path;
};

/// Writes what string() returns. Intended: no quotation marks, unlike boost::filesystem::path.
ZENDRA_CORE_EXPORT std::ostream& operator<<(std::ostream& stream, const ioPath& path);

} // namespace Zendra
