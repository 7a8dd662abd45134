#pragma once

#include <QString>
#include <QTemporaryDir>

#include <string>

namespace Benchmarks {

/// A temporary folder full of empty files.
class FolderTree
{
public:
    /// @param sameNames  files of all folders have the same names: `file0.png`, ...; otherwise every name is
    /// another one
    /// @param parent  where to make it; the system's folder for temporary files if empty
    FolderTree(int folders, int filesPerFolder, bool sameNames = false, const QString& parent = QString());

    QString Path() const { return root.path(); }
    int FileCount() const { return folderCount * filesPerFolder; }

    /// Gives every hundredth file a modification time that none had before.
    void DateOnePercent();
    /// Makes, or removes again, a new file beside every hundredth.
    void AddOnePercent() const;
    void RemoveAdded() const;
    /// Removes every hundredth file, or makes it again.
    void RemoveOnePercent() const;
    void RestoreRemoved() const;
    /// Has the file system list the files in another order, where it can be brought to that.
    /// @return whether it has
    bool ShuffleListing();

    /// Fills a folder that is there already.
    static void Fill(const QString& path, int folders, int filesPerFolder, bool sameNames = false);

private:
    std::string NativePath(int folder, int file) const;
    template <typename Action>
    void ForOnePercent(Action action) const;

    QTemporaryDir root;
    int folderCount;
    int filesPerFolder;
    bool sameNames;
    int dates = 0;
    unsigned int shuffles = 0;
};

} // namespace Benchmarks
