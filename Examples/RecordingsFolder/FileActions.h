#pragma once

#include "Lib/Util/FS/IFileManager.h"

#include <QObject>
#include <QStringList>

namespace RecordingsFolder {

/// The file operations of the window, done by the IFileManager in the registry.
///
/// It is also an observer, and emits the file manager's notifications as a signal. Without a file manager in
/// the registry every operation fails.
class FileActions : public QObject, private Zendra::LW::IFileManagerObserver
{
    Q_OBJECT

public:
    /// Registers with the file manager, which must outlive this object.
    explicit FileActions(QObject* parent = nullptr);
    ~FileActions() override;
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    // These return the paths for which the operation failed.
    QStringList Reveal(const QStringList& paths);
    QStringList MoveToTrash(const QStringList& paths);
    QStringList Delete(const QStringList& paths);

Q_SIGNALS:
    /// The file manager called the observer's function of this name.
    void Notified(const QString& notification, const QString& path);

private:
    using Operation = bool (Zendra::LW::IFileManager::*)(const Zendra::ioPath&);

    QStringList DoForEach(const QStringList& paths, Operation operation);

    void OnFileExplored(const Zendra::ioPath& path) override;
    void OnFileMovedToTrash(const Zendra::ioPath& path) override;
    void OnFileRemoved(const Zendra::ioPath& path) override;

    Zendra::LW::IFileManager* const files;
};

/// Links a file under a new name in the temporary folder, by Zendra::LW::TemporaryHardLink.
///
/// That class does not record the path of a link that it created, so this looks for it. The caller removes
/// the link.
/// @return the link's path; empty when there is none
QString MakeTemporaryLink(const QString& path);

/// The links in the temporary folder that point to this path.
QStringList LinksTo(const QString& path);

} // namespace RecordingsFolder
