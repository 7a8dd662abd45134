#pragma once

#include "Lib/Util/FS/DirectorySnapshot.h"
#include "Tests/Support/FileTexts.h"
#include "Tests/Support/FolderFixture.h"

#include <QFileInfo>

#include <initializer_list>

namespace Tests {

/// A snapshot of real files, since entries are equal only if they are the same file.
class SnapshotFixture : public FolderFixture
{
protected:
    QFileInfo File(const char* path) const { return QFileInfo(Path(path)); }
    QFileInfo NewFile(const char* path) const { return QFileInfo(folder.Write(path)); }

    /// Writes files and appends them to the snapshot.
    void Have(std::initializer_list<const char*> paths)
    {
        for (const char* path : paths)
            snapshot.Append({NewFile(path)});
    }

    /// The paths in the snapshot.
    Texts Paths() const { return PathsOf(snapshot.GetFileInfos(), folder.Path()); }

    Zendra::LW::DirectorySnapshot snapshot;
};

} // namespace Tests
