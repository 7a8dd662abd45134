#include "Lib/Util/FS/FileManager.h"

#include "Core/FileOperations.h"
#include "Lib/Interfaces/AutoInstanceRegistrator.h"
#include "Util/ExploreFile.h"

#include <functional>
#include <memory>

namespace Zendra::LW {

struct FileManager::Impl
{
    using Notification = void (IFileManagerObserver::*)(const ioPath&);

    void NotifyObservers(Notification notification, const ioPath& path)
    {
        eventHandlers.PerformForEachEventHandler(std::bind(notification, std::placeholders::_1, path));
    }

    // The registration is the last member, so that it is destroyed before the list.
    Core::EventHandlerList<IFileManagerObserver, Core::SyncExecutePolicy> eventHandlers;
    std::unique_ptr<AutoInstanceRegistrator<IFileManager>> registration;
};

FileManager::FileManager()
{
    impl->registration = std::make_unique<AutoInstanceRegistrator<IFileManager>>(this);
}

void FileManager::RegisterEventHandler(IFileManagerObserver* observer)
{
    impl->eventHandlers.RegisterEventHandler(observer);
}

void FileManager::UnregisterEventHandler(IFileManagerObserver* observer)
{
    impl->eventHandlers.UnregisterEventHandler(observer);
}

FileManager::~FileManager()
{
    impl->registration.reset();
}

bool FileManager::ExploreFile(const ioPath& path)
{
    if (!Util::ExploreFile(path))
        return false;

    impl->NotifyObservers(&IFileManagerObserver::OnFileExplored, path);
    return true;
}

bool FileManager::MoveToTrash(const ioPath& path)
{
    if (!Core::MoveToTrash(path))
        return false;

    impl->NotifyObservers(&IFileManagerObserver::OnFileMovedToTrash, path);
    return true;
}

bool FileManager::Remove(const ioPath& path)
{
    if (!Core::RemoveFile(path))
        return false;

    impl->NotifyObservers(&IFileManagerObserver::OnFileRemoved, path);
    return true;
}

bool FileManager::Exists(const ioPath& path)
{
    return path.exists();
}

bool FileManager::CreateDirectories(const ioPath& path)
{
    return ioPath::create_directories(path);
}

} // namespace Zendra::LW
