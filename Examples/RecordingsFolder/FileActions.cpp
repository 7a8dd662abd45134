#include "Examples/RecordingsFolder/FileActions.h"

#include "Lib/Interfaces/InstanceRegistry.h"
#include "Lib/Util/FS/TemporaryHardLink.h"

#include <QDir>
#include <QFileInfo>

namespace RecordingsFolder {

using Zendra::ioPath;
using Zendra::LW::IFileManager;

namespace {

IFileManager* FindFileManager()
{
    const auto* registry = Zendra::LW::InstanceRegistry::Instance();
    return registry ? registry->Find<IFileManager>() : nullptr;
}

} // namespace

FileActions::FileActions(QObject* parent) : QObject(parent), files(FindFileManager())
{
    if (files)
        files->RegisterEventHandler(this);
}

FileActions::~FileActions()
{
    if (files)
        files->UnregisterEventHandler(this);
}

QStringList FileActions::Reveal(const QStringList& paths)
{
    return DoForEach(paths, &IFileManager::ExploreFile);
}

QStringList FileActions::MoveToTrash(const QStringList& paths)
{
    return DoForEach(paths, &IFileManager::MoveToTrash);
}

QStringList FileActions::Delete(const QStringList& paths)
{
    return DoForEach(paths, &IFileManager::Remove);
}

QStringList FileActions::DoForEach(const QStringList& paths, Operation operation)
{
    QStringList failed;
    for (const QString& path : paths) {
        if (!files || !(files->*operation)(path.toStdString()))
            failed.append(path);
    }
    return failed;
}

void FileActions::OnFileExplored(const ioPath& path)
{
    Q_EMIT Notified(QStringLiteral("OnFileExplored"), QString::fromStdString(path.string()));
}

void FileActions::OnFileMovedToTrash(const ioPath& path)
{
    Q_EMIT Notified(QStringLiteral("OnFileMovedToTrash"), QString::fromStdString(path.string()));
}

void FileActions::OnFileRemoved(const ioPath& path)
{
    Q_EMIT Notified(QStringLiteral("OnFileRemoved"), QString::fromStdString(path.string()));
}

QString MakeTemporaryLink(const QString& path)
{
    const QStringList before = LinksTo(path);
    const Zendra::LW::TemporaryHardLink holder(path.toStdString());
    const QStringList after = LinksTo(path);

    for (const QString& link : after) {
        if (!before.contains(link))
            return link;
    }
    return {};
}

QStringList LinksTo(const QString& path)
{
    QStringList links;
    // System: lists dangling links, too.
    const QFileInfoList entries =
        QDir(QDir::tempPath()).entryInfoList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QFileInfo& entry : entries) {
        if (entry.isSymLink() && entry.symLinkTarget() == path)
            links.append(entry.absoluteFilePath());
    }
    return links;
}

} // namespace RecordingsFolder
