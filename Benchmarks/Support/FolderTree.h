#pragma once

#include <QString>
#include <QTemporaryDir>

namespace Benchmarks {

/// A temporary folder full of empty files.
class FolderTree
{
public:
    /// @param sameNames  files of all folders have the same names: `file0.png`, ...; otherwise every name is
    /// another one
    FolderTree(int folders, int filesPerFolder, bool sameNames = false);

    QString Path() const { return root.path(); }
    int FileCount() const { return fileCount; }

    /// Fills a folder that is there already.
    static void Fill(const QString& path, int folders, int filesPerFolder, bool sameNames = false);

private:
    QTemporaryDir root;
    int fileCount;
};

} // namespace Benchmarks
