#pragma once

#include "Lib/Util/FS/IFileManager.h"

#include <QObject>
#include <QStringList>

namespace RecordingsFolder {

/// The file operations of the window, done by the IFileManager that the registry knows.
///
/// It is also the observer that turns the file manager's notifications into a signal. Without a file
/// manager in the registry every operation fails.
class FileActions : public QObject, private Zendra::LW::IFileManagerObserver
{
    Q_OBJECT

public:
    /// Registers with the file manager, which must outlive this object.
    explicit FileActions(QObject* parent = nullptr);
    ~FileActions() override;
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    // Each does its operation on every path and returns those for which it failed.
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

} // namespace RecordingsFolder
