#pragma once

#include "Lib/Util/FS/NewFiles.h"
#include "Tests/Support/FileTexts.h"
#include "Tests/Support/SnapshotFixture.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

/// A file that a pass has added, and whether the snapshot was empty before the pass.
struct AddedFile
{
    std::string path;
    bool fillsEmptySnapshot;
};

inline bool operator==(const AddedFile& a, const AddedFile& b)
{
    return a.path == b.path && a.fillsEmptySnapshot == b.fillsEmptySnapshot;
}

inline std::ostream& operator<<(std::ostream& stream, const AddedFile& file)
{
    return stream << file.path << (file.fillsEmptySnapshot ? ", fills an empty snapshot" : "");
}

/// Passes that add the new files of the folder to the snapshot.
class NewFilesFixture : public SnapshotFixture
{
protected:
    NewFilesFixture()
    {
        settings.dirPath = folder.Path();
        settings.depth = 2;
    }

    /// Deletes a file and removes it from the snapshot.
    void RemoveKnown(const char* path)
    {
        Remove(path);
        snapshot.Update(File(path));
    }

    /// The same, and makes the file again.
    void RemoveAndRestore(const char* path)
    {
        RemoveKnown(path);
        Write(path);
    }

    /// An update for a file that is not in the snapshot replaces the next one.
    void ReplaceNextBy(const char* path)
    {
        const QFileInfo info = NewFile(path);
        SetTime(path, QDateTime::fromMSecsSinceEpoch(1500000000123));
        ASSERT_EQ(snapshot.Update(info), Zendra::LW::DirectorySnapshot::Difference::Changed);
    }

    void Pass() { Pass(folder.Path()); }
    void Pass(const QString& path)
    {
        auto files = Zendra::LW::NewFiles::ForPass(snapshot, path, source.GetToken());
        while (files.MoveNext()) {
            const QFileInfo info = files.Get();
            added.push_back({RelativePath(info.filePath(), folder.Path()), files.SnapshotWasEmpty()});
            EXPECT_EQ(files.Add().filePath(), info.filePath());
            if (afterEach)
                afterEach(info.fileName().toStdString());
        }
    }

    /// Files whose order by name is not that of their folders.
    void WriteInManyFolders() const
    {
        Write({"1/b.txt", "2/c.txt", "3/a.txt", "1/f.txt", "2/d.txt", "3/e.txt", "g.txt", "2/0.txt"});
    }

    /// The next listing finds each file of the snapshot where it expects it.
    void ExpectTheOrderOfTheListing() const
    {
        Zendra::LW::KnownPathFinder finder(*snapshot.GetKnownPaths());
        const auto listed = Zendra::LW::GetFilesInDirRecursively(folder.Path(), settings.depth, {});
        for (const Zendra::LW::ListedFile& file : listed.files) {
            EXPECT_TRUE(finder.IsNext(file.info.filePath())) << qPrintable(file.info.filePath());
            EXPECT_TRUE(finder.Find(file.info.filePath())) << qPrintable(file.info.filePath());
        }
        EXPECT_EQ(listed.files.size(), snapshot.GetFileInfos().size());
    }

    void SetPredicate(std::function<bool(const std::string& name)> predicate)
    {
        settings.filter = [this, predicate = std::move(predicate)](const QFileInfo& info) {
            asked.push_back(RelativePath(info.filePath(), folder.Path()));
            return predicate(info.fileName().toStdString());
        };
    }

    Zendra::LW::WatchSettings& settings = snapshot.settings;
    Zendra::LW::WatchTokenSource source;
    std::vector<AddedFile> added;
    Texts asked;                                            ///< the files that the predicate was asked about
    std::function<void(const std::string& name)> afterEach; ///< called after each added file, as a slot is
};

} // namespace Tests
