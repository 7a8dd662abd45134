#pragma once

#include "Tests/Support/FileTexts.h"
#include "Tests/Support/PathText.h"
#include "Tests/Support/TempFolder.h"

#include <QDateTime>
#include <QFileInfo>
#include <QString>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <initializer_list>
#include <string>

namespace Tests {

/// A predicate of a watcher.
using Predicate = std::function<bool(const QFileInfo&)>;

inline bool IsNamed(const QFileInfo& info, const char* name)
{
    return info.fileName() == QString::fromUtf8(name);
}

/// A folder of the test's own, and what tests do in it most often. All paths are relative to the folder.
class FolderFixture : public testing::Test
{
protected:
    /// The absolute path of something in the folder.
    QString Path(const PathText& path) const { return folder.Path(path); }
    /// The folder's own path, as texts of signals have it.
    std::string RootPath() const { return folder.Path().toStdString(); }

    /// Writes files with some content, and makes missing folders on the way.
    void Write(std::initializer_list<const char*> paths) const
    {
        for (const char* path : paths)
            folder.Write(path);
    }
    void Write(const PathText& path, const QByteArray& content = "content") const
    {
        folder.Write(path, content);
    }

    /// Deletes files or links.
    void Remove(std::initializer_list<const char*> paths) const
    {
        for (const char* path : paths)
            folder.Remove(path);
    }
    void Remove(const PathText& path) const { folder.Remove(path); }

    /// Moves modification times forward by a minute.
    void Touch(std::initializer_list<const char*> paths) const
    {
        for (const char* path : paths)
            folder.Touch(path);
    }
    void Touch(const PathText& path) const { folder.Touch(path); }

    void SetTime(const PathText& path, const QDateTime& time) const
    {
        folder.SetModificationTime(path, time);
    }
    void SetTime(const PathText& path, std::chrono::nanoseconds sinceEpoch) const
    {
        folder.SetModificationTime(path, sinceEpoch);
    }

    const TempFolder folder;
};

} // namespace Tests
