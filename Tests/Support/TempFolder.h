#pragma once

#include "Tests/Support/PathText.h"

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <chrono>

namespace Tests {

/// A new folder that a test has to itself; gone, with all that is in it, when the test ends.
///
/// All paths are relative to it. Every step must succeed: a failure throws std::runtime_error, so that a test
/// never goes on with a folder that is not as it was meant to be.
class TempFolder
{
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    /// The folder's absolute path with no links in it.
    QString Path() const { return root.path(); }
    /// The absolute path of something in it.
    QString Path(const PathText& relativePath) const { return root.filePath(relativePath); }

    /// Writes a file, new or in place of what it held, and makes missing folders on the way.
    QString Write(const PathText& relativePath, const QByteArray& content = QByteArray("content")) const;
    QString MakeFolder(const PathText& relativePath) const;
    /// A symbolic link with just this target text.
    QString Link(const PathText& target, const PathText& relativePath) const;
    void HardLink(const PathText& existingPath, const PathText& relativePath) const;
    /// Deletes a file or a link.
    void Remove(const PathText& relativePath) const;
    void RemoveFolder(const PathText& relativePath) const;
    /// Renames, over an existing file too.
    void Rename(const PathText& from, const PathText& to) const;
    void SetModificationTime(const PathText& relativePath, const QDateTime& time) const;
    /// To the nanosecond, of a folder too.
    void SetModificationTime(const PathText& relativePath, std::chrono::nanoseconds sinceEpoch) const;
    /// Moves the modification time forward by a minute, so that the change cannot be missed.
    void Touch(const PathText& relativePath) const;
    void SetPermissions(const PathText& relativePath, unsigned int mode) const;

    /// Every entry's name, hidden ones too, sorted.
    QStringList Entries(const PathText& relativePath = QString()) const;

private:
    QTemporaryDir holder;
    QDir root;
};

} // namespace Tests
