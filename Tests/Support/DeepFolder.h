#pragma once

#include "Tests/Support/TempFolder.h"

#include <QString>

#include <string>
#include <vector>

namespace Tests {

/// A chain of folders with files: the path of one file is as long as the system allows, those of others are
/// longer.
///
/// Made and removed level by level, since no call accepts the longer paths.
class DeepFolder
{
public:
    DeepFolder();
    ~DeepFolder();
    DeepFolder(const DeepFolder&) = delete;
    DeepFolder& operator=(const DeepFolder&) = delete;

    QString Path() const { return folder.Path(); }
    const std::string& LongestPath() const { return longestPath; }

private:
    struct Level
    {
        std::string name;
        int descriptor;
        std::string file; ///< the one file in it
    };

    int Current() const;
    void Enter(const std::string& name);
    void MakeFile(const std::string& name);

    TempFolder folder;
    std::vector<Level> levels;
    std::string longestPath;
};

} // namespace Tests
