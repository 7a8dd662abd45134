#pragma once

#include <QString>
#include <QTemporaryDir>

#include <string>

namespace Benchmarks {

/// A temporary folder full of empty files.
class FolderTree
{
public:
    /// @param sameNames  the folders have files of the same names; otherwise every name is unique
    /// @param parent  where to create it; in the temporary folder if empty
    FolderTree(int folders, int filesPerFolder, bool sameNames = false, const QString& parent = QString());

    QString Path() const { return root.path(); }
    int FileCount() const { return folderCount * filesPerFolder; }

    /// Gives every hundredth file a modification time that no file had before.
    void ChangeTimesOfOnePercent();
    /// Creates a new file next to every hundredth, or removes it again.
    void AddOnePercent() const;
    void RemoveAdded() const;
    /// Removes every hundredth file, or creates it again.
    void RemoveOnePercent() const;
    void RestoreRemoved() const;
    /// Makes the file system list the files in another order, if it supports that.
    /// @return whether the order changed
    bool ShuffleListing();

    /// Fills an existing folder.
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
