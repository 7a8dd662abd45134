#pragma once

#include <QString>

namespace Zendra::LW {

/// Reads the modification times of one file after the other.
///
/// Keeps the folder open while several files in a row are in it, which spares the system the way to each of
/// them.
class FileTimeReader
{
public:
    FileTimeReader() = default;
    ~FileTimeReader();
    FileTimeReader(const FileTimeReader&) = delete;
    FileTimeReader& operator=(const FileTimeReader&) = delete;

    /// ReadModificationTime() of an absolute path.
    qint64 Read(const QString& path);
    /// Closes the folder. To be called when it may have been renamed or replaced.
    void CloseFolder();

private:
    bool IsInFolderOfLast(const QString& path) const;

    QString lastPath;
    int folderLength = 0; ///< of the last path
    int folder = -1;      ///< the descriptor of that folder; -1 while it is not open
};

} // namespace Zendra::LW
