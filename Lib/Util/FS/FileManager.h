#pragma once

#include "Lib/Util/FS/Export.h"
#include "Lib/Util/FS/IFileManager.h"
#include "Pointers.h"

namespace Zendra::LW {

/// The file operations as one service, published in the instance registry under IFileManager.
///
/// The application creates one after the registry, and keeps it while the service is needed:
///
///     InstanceRegistry registry;
///     FileManager fileManager;
///
/// It is published from the end of its constructor to the start of its destructor. Without a registry it
/// works unpublished; a registry that is created later does not contain it.
///
/// Each operation is one call of Util::ExploreFile(), Core::MoveToTrash(), Core::RemoveFile(),
/// ioPath::exists() or ioPath::create_directories() on the calling thread, which may be any; their results
/// and exceptions are passed on. Takes no lock of its own. Each observer gets a copy of the path.
class LWUTILFS_EXPORT FileManager : public IFileManager
{
public:
    /// Publishes the service. Exceptions from the registry reach the caller; nothing is published then.
    FileManager();
    FileManager(const FileManager&) = delete;
    FileManager& operator=(const FileManager&) = delete;

    /// Adds an observer, which is not owned, last in the order of calls. One that is registered already keeps
    /// its place; null is ignored. If std::bad_alloc is thrown, the observers are unchanged.
    void RegisterEventHandler(IFileManagerObserver* observer) override;
    /// Removes an observer. Null, and one that is not registered, are ignored. Does not wait for a
    /// notification that is running on another thread: it may still reach the observer.
    void UnregisterEventHandler(IFileManagerObserver* observer) override;

    /// Withdraws the service first, while it is still complete. Observers are neither notified nor deleted.
    /// No operation may be running on another thread. An exception from the registry terminates the process.
    ~FileManager() override;

    bool ExploreFile(const Zendra::ioPath& path) override;
    bool MoveToTrash(const Zendra::ioPath& path) override;
    bool Remove(const Zendra::ioPath& path) override;
    bool Exists(const Zendra::ioPath& path) override;
    bool CreateDirectories(const Zendra::ioPath& path) override;

private:
    struct Impl;
    Zendra::PropagateConstPtr<Impl, Zendra::UniquePtr> impl;
};

} // namespace Zendra::LW
