#pragma once

#include "Core/Export.h"

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/path.hpp>

#include <iosfwd>
#include <string>

namespace Zendra {

/// A path in the file system, and the few questions that the application asks about one.
///
/// A plain value: made from text, copied and compared freely, and bound to nothing on the disk. Whether
/// something is there is asked anew at each call. A path may be relative; each call then takes it from
/// the process's current folder of that moment.
///
///     Zendra::ioPath folder = settings.outputFolder; // UTF-8
///     if (!Zendra::ioPath::create_directories(folder))
///         return;
///     for (auto entry = folder.iterator(); entry != boost::filesystem::directory_iterator(); ++entry)
///         std::cout << Zendra::ioPath(entry->path()) << '\n';
///
/// The text is UTF-8, but nothing checks that: names on Linux are bytes, and bytes that are no UTF-8 come
/// out as they went in. No name can hold a null character, so a path that has one names nothing, and none
/// of the calls below takes it for the path in front of it.
///
/// The calls that ask the disk block for as long as the file system takes. One object follows the rules of
/// a std::string: any number of threads may read it, or one may change it.
class ZENDRA_CORE_EXPORT ioPath
{
public:
    /// The empty path, which names nothing.
    ioPath() = default;
    /// From text, taken as it is. Implicit, so that a text can stand where a path is wanted.
    /// @param utf8  not null
    ioPath(const char* utf8);
    /// From text, taken as it is; implicit, too.
    ioPath(const std::string& utf8);
    /// From Boost's path, with the same text; implicit, too.
    ioPath(const boost::filesystem::path& path);

    /// The text it was made from, unchanged: no slash is added, doubled ones stay.
    std::string string() const;

    /// Whether the path names something, of whatever kind.
    ///
    /// Links are followed.
    /// @return false for a missing entry, for a link that leads nowhere or in a circle, for the empty path,
    ///         and when it can't be told, as inside a folder that may not be entered. Never throws.
    bool exists() const;

    /// Makes a folder, with every folder above it that is missing.
    ///
    /// What was made on the way stays when a later step fails. "..", as everywhere, is the folder above:
    /// "new/../other" makes both.
    ///
    /// @return true when the path is a folder now, newly made, there before, or reached by a link; false
    ///         otherwise: something else stands in the way (a link that leads nowhere, too), the system
    ///         refused, or the path is empty. Never throws.
    static bool create_directories(const ioPath& folder);

    /// Goes through the entries of the folder, in no particular order, and without "." and "..".
    ///
    /// Intended: exists() turns every error into an answer, this throws. A folder that cannot be read must
    /// never look like an empty one: the next number chosen in it would be that of an existing file.
    ///
    /// @return the first entry; the end iterator when the folder is empty
    /// @throws boost::filesystem::filesystem_error when the path is missing, is no folder or cannot be
    ///         listed. So does the iterator's plain ++ when reading on fails.
    boost::filesystem::directory_iterator iterator() const;

    /// Equality and order go name by name and by bytes, without a look at the disk: "a//b" equals "a/b", but
    /// "a", "a/" and "./a" all differ, and so do the composed and the decomposed spelling of an umlaut.
    friend bool operator==(const ioPath& left, const ioPath& right) { return left.path == right.path; }
    /// The opposite of ==.
    friend bool operator!=(const ioPath& left, const ioPath& right) { return left.path != right.path; }
    /// An order for maps and sorted lists, in which equal paths are those that == calls so.
    friend bool operator<(const ioPath& left, const ioPath& right) { return left.path < right.path; }

private:
    boost::filesystem::path path;
};

/// Writes what string() returns. Intended: no quotation marks, unlike boost::filesystem::path.
ZENDRA_CORE_EXPORT std::ostream& operator<<(std::ostream& stream, const ioPath& path);

} // namespace Zendra
