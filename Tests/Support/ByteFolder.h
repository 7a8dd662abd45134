#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace Tests {

/// A new folder like TempFolder, for names as the system takes them: any bytes, UTF-8 or not, whatever the
/// locale. Everybody may enter it, so that another user is refused only where the test wants it.
///
/// Names are relative to it, and what makes something returns its absolute path. Every step must succeed: a
/// failure throws.
class ByteFolder
{
public:
    ByteFolder();
    ~ByteFolder();
    ByteFolder(const ByteFolder&) = delete;
    ByteFolder& operator=(const ByteFolder&) = delete;

    /// The folder's absolute path with no links in it.
    std::string Path() const { return root; }
    std::string Path(const std::string& name) const { return root + "/" + name; }

    /// Whether the file system takes this name: not every one takes other bytes than UTF-8.
    bool Takes(const std::string& name) const;

    /// Writes a file, new or in place of what it held, and makes missing folders on the way.
    std::string Write(const std::string& name, const std::string& content = "content") const;
    /// Makes a folder with the missing ones above, or only sets its mode.
    std::string MakeFolder(const std::string& name, mode_t mode = 0755) const;
    /// A symbolic link with just this target text.
    std::string Link(const std::string& target, const std::string& name) const;
    void SetMode(const std::string& name, mode_t mode) const;

    /// The names of all entries below, in every depth, in no particular order.
    std::vector<std::string> Tree() const;

private:
    std::string root;
};

} // namespace Tests
