#pragma once

#include <QString>

namespace Zendra::LW {

/// Reads the modification times of many files.
///
/// Keeps a folder open while consecutive files are in it, so that the system need not resolve its path for
/// each.
class FileTimeReader
{
public:
    FileTimeReader() = default;
    ~FileTimeReader();
    FileTimeReader(const FileTimeReader&) = delete;
    FileTimeReader& operator=(const FileTimeReader&) = delete;

    /// ReadModificationTime() of an absolute path.
    qint64 Read(const QString& path);
    /// Closes the folder. Call it when the folder may have been renamed or replaced.
    void CloseFolder();

private:
    bool IsInLastFolder(const QString& path) const;

    QString lastPath;
    int folderLength = 0; ///< of the last path
    int folder = -1;      ///< the descriptor of that folder; -1 while it is not open
};

} // namespace Zendra::LW
