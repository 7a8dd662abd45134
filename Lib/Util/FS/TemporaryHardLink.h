#pragma once

#include "Lib/Util/FS/Export.h"

#include <string>

namespace Zendra::LW {

/// Links a file under a fresh name in the temporary folder, and removes the path it has recorded when it
/// is reset or destroyed.
///
///     TemporaryHardLink link(recording);
///     ...
///     const std::string usable = link.GetExistFilePath(); // the recording, or else the recorded path
///
/// Two things are not as the name suggests. The link is a symbolic one, so it opens only as long as the
/// file itself is there. And the path is recorded exactly when the link could *not* be made: a link that
/// was made is not recorded, not removed, and stays in the temporary folder.
///
/// All paths are UTF-8; bytes that are not become U+FFFD on the way to the file system, so a file with such a
/// name is not reached. A relative path is the link's text as it is, relative to the temporary folder then.
///
/// Nothing reports an error except by an empty string or false, and nothing is logged. Every call blocks
/// for a few file-system calls. Takes no locks: an object belongs to one thread at a time; the static
/// functions may be called from any. Between the reservation of the name and the link another process can
/// take the name: the link then fails, and the recorded path is that process's file.
class LWUTILFS_EXPORT TemporaryHardLink
{
public:
    /// Links the file as Reset() does. Intended: not explicit, so a path can stand where a link is wanted.
    TemporaryHardLink(const std::string& filePath);
    /// Removes whatever file has the recorded path, never the original. Never throws.
    ~TemporaryHardLink();

    // Two objects must never remove the same path.
    TemporaryHardLink(const TemporaryHardLink&) = delete;
    TemporaryHardLink& operator=(const TemporaryHardLink&) = delete;
    /// Takes both paths over and leaves the other object with none.
    TemporaryHardLink(TemporaryHardLink&& other) noexcept;
    /// Removes its own recorded path first. Moving an object into itself changes nothing.
    TemporaryHardLink& operator=(TemporaryHardLink&& other) noexcept;

    /// Removes the recorded path, then links another file, or the same one once more under a new name.
    ///
    /// @param filePath  need not exist; an empty path makes no link
    void Reset(const std::string& filePath);

    /// The path given last; valid until the next Reset() or move.
    const std::string& GetOriginalFilePath() const;
    /// The recorded path; empty when a link was made, when there was no path to link, or when the temporary
    /// folder is unusable. Valid until the next Reset() or move.
    const std::string& GetLinkedFilePath() const;
    /// The original path if that exists, else the recorded path if that exists, else an empty string.
    std::string GetExistFilePath() const;

    /// Makes a link to the file under a fresh name in QDir::tempPath().
    ///
    /// Where TMPDIR names a folder that is not there, that is the root folder.
    ///
    /// @return the path to record: the fresh name when the link could not be made, empty when it was, as
    ///         for an empty filePath and an unusable temporary folder
    static std::string CreateLinkToFile(const std::string& filePath);
    /// Removes a file, or a link (never its target); does nothing for an empty path. Failures are ignored.
    static void UnlinkFilePath(const std::string& filePath);
    /// Whether there is a file or folder. Follows links: false for one that leads nowhere, and for an
    /// empty path.
    static bool exists(const std::string& filePath);

private:
    std::string originalFilePath;
    std::string linkedFilePath;
};

} // namespace Zendra::LW
