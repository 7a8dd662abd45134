#pragma once

#include "Lib/Util/FS/TemporaryHardLink.h"
#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/Environment.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace Tests {

/// A path too long for a link: a name in the temporary folder is reserved, then making the link fails.
inline const std::string unlinkable(5000, 'x');

/// The target text of a symbolic link.
inline std::string LinkText(const std::string& link)
{
    return std::filesystem::read_symlink(link);
}

/// Gives the process a temporary folder of the test's own.
class TemporaryHardLinkFixture : public testing::Test, protected ByteFolder
{
protected:
    TemporaryHardLinkFixture() { UseTemporaryFolder(MakeFolder("temp")); }

    void UseTemporaryFolder(const std::string& path)
    {
        environment.Set("TMPDIR", QByteArray::fromStdString(path));
    }
    /// Sets a file as the temporary folder. For a missing folder Qt would use the root folder.
    void MakeTemporaryFolderUnusable() { UseTemporaryFolder(Write("file")); }

    std::string WriteOriginal(const std::string& name = "original") const { return Write(name); }

    /// Writes a file at an absolute path in the folder, as another process might.
    void WriteAt(const std::string& path) const
    {
        Write(std::filesystem::path(path).lexically_relative(Path()));
    }

    /// The names in the folder, sorted.
    std::vector<std::string> Entries(const std::string& relativePath = ".") const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Path(relativePath)))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    /// The paths in the temporary folder, sorted.
    std::vector<std::string> TemporaryFiles() const
    {
        std::vector<std::string> paths = Entries("temp");
        for (std::string& path : paths)
            path.insert(0, Path("temp/"));
        return paths;
    }

    /// The target texts of the links in the temporary folder, in the order of their names.
    std::vector<std::string> LinkTexts() const
    {
        std::vector<std::string> texts;
        for (const std::string& file : TemporaryFiles())
            texts.push_back(LinkText(file));
        return texts;
    }

private:
    Environment environment;
};

} // namespace Tests
