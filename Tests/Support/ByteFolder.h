#pragma once

#include "Tests/Support/TempFolder.h"

#include <string>
#include <vector>

#include <sys/types.h>

namespace Tests {

/// A new folder like TempFolder, for names of any bytes, UTF-8 or not, whatever the locale. Every user may
/// enter it, so that another user is refused only where the test wants it.
///
/// Names are relative to it. A function that makes something returns its absolute path, and throws when it
/// fails.
class ByteFolder
{
public:
    ByteFolder();

    /// The folder's absolute path with no links in it.
    std::string Path() const { return root; }
    std::string Path(const std::string& name) const { return root + "/" + name; }

    /// Whether the file system accepts this name: some accept only UTF-8.
    bool CanStore(const std::string& name) const;

    /// Writes or overwrites a file, and makes its missing folders.
    std::string Write(const std::string& name, const std::string& content = "content") const;
    /// Makes a folder and its missing parents, or only sets the mode of an existing one.
    std::string MakeFolder(const std::string& name, mode_t mode = 0755) const;
    /// Makes a symbolic link with exactly this target text.
    std::string Link(const std::string& target, const std::string& name) const;
    void SetMode(const std::string& name, mode_t mode) const;

    /// The names of all entries at every depth, unsorted.
    std::vector<std::string> Tree() const;

private:
    TempFolder holder;
    std::string root;
};

} // namespace Tests
