#pragma once

#include "Lib/Util/FS/Export.h"

#include <string>

namespace Zendra::LW {

/// Links a file under a new name in the temporary folder, and removes the recorded path when it is reset or
/// destroyed.
///
///     TemporaryHardLink link(recording);
///     ...
///     const std::string usable = link.GetExistFilePath(); // the recording, or else the recorded path
///
/// Two things are not as the name suggests. The link is a symbolic one, so it can be opened only while the
/// file itself exists. And the path is recorded exactly when the link could *not* be created: a link that was
/// created is not recorded, not removed, and stays in the temporary folder.
///
/// All paths are UTF-8; other bytes are replaced by U+FFFD, so a file with such a name is not found. A
/// relative path becomes the link's target unchanged, and is then relative to the temporary folder.
///
/// Errors are reported only as an empty string or false, and nothing is logged. Every call blocks for a few
/// file-system calls. Takes no locks: use an object on one thread at a time; the static functions may be
/// called from any thread. Between reserving the name and creating the link, another process can take the
/// name: creating the link then fails, and the recorded path is that process's file.
class LWUTILFS_EXPORT TemporaryHardLink
{
public:
    /// Links the file as Reset() does. Intended: not explicit, so that a path converts to a link.
    TemporaryHardLink(const std::string& filePath);
    /// Removes the file at the recorded path, never the original. Never throws.
    ~TemporaryHardLink();

    // Two objects must never remove the same path.
    TemporaryHardLink(const TemporaryHardLink&) = delete;
    TemporaryHardLink& operator=(const TemporaryHardLink&) = delete;
    /// Takes over both paths; those of the other object are empty afterwards.
    TemporaryHardLink(TemporaryHardLink&& other) noexcept;
    /// Removes its own recorded path first. Self-assignment changes nothing.
    TemporaryHardLink& operator=(TemporaryHardLink&& other) noexcept;

    /// Removes the recorded path, then links another file, or the same one again under a new name.
    ///
    /// @param filePath  need not exist; an empty path makes no link
    void Reset(const std::string& filePath);

    /// The path that was passed last; the reference is valid until the next Reset() or move.
    const std::string& GetOriginalFilePath() const;
    /// The recorded path; empty when a link was created, when the path was empty, or when the temporary
    /// folder is unusable. The reference is valid until the next Reset() or move.
    const std::string& GetLinkedFilePath() const;
    /// The original path if that exists, else the recorded path if that exists, else an empty string.
    std::string GetExistFilePath() const;

    /// Creates a link to the file under a new name in QDir::tempPath().
    ///
    /// If TMPDIR names a missing folder, that is the root folder.
    ///
    /// @return the path to record: the new name when the link could not be created; empty when it was
    ///         created, and for an empty filePath or an unusable temporary folder
    static std::string CreateLinkToFile(const std::string& filePath);
    /// Removes a file, or a link (never its target); does nothing for an empty path. Failures are ignored.
    static void UnlinkFilePath(const std::string& filePath);
    /// Whether there is a file or folder at the path. Follows links: false for a dangling link and for an
    /// empty path.
    static bool exists(const std::string& filePath);

private:
    std::string originalFilePath;
    std::string linkedFilePath;
};

} // namespace Zendra::LW
