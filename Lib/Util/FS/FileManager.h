#pragma once

#include "Lib/Util/FS/Export.h"
#include "Lib/Util/FS/IFileManager.h"
#include "Pointers.h"

namespace Zendra::LW {

/// The file operations as one service, published in the instance registry under IFileManager.
///
/// The application makes one, after the registry, and keeps it for as long as the service is wanted:
///
///     InstanceRegistry registry;
///     FileManager fileManager;
///
/// It is published from the end of its constructor to the start of its destructor. Without a registry it
/// works all the same, unpublished; a registry made later does not learn of it.
///
/// Does no file work of its own: each operation is one call of Util::ExploreFile(), Core::MoveToTrash(),
/// Core::RemoveFile(), ioPath::exists() or ioPath::create_directories(), whose result and exceptions it
/// passes on, on the thread of the caller, which may be any. Takes no lock of its own. Each observer is
/// handed a copy of the path.
class LWUTILFS_EXPORT FileManager : public IFileManager
{
public:
    /// Publishes the service. What the registry throws passes to the caller; nothing is published then.
    FileManager();
    FileManager(const FileManager&) = delete;
    FileManager& operator=(const FileManager&) = delete;

    /// Adds an observer, not owned, last in the order of calls; one that is there keeps its place, null is
    /// ignored. std::bad_alloc passes to the caller, and the observers are as they were.
    void RegisterEventHandler(IFileManagerObserver* observer) override;
    /// Takes an observer out; ignores null and one that is not there. Does not wait for a notification that
    /// is under way on another thread: it may still reach the observer.
    void UnregisterEventHandler(IFileManagerObserver* observer) override;

    /// Withdraws the service first, while it is still whole. Observers are neither told nor deleted. No
    /// operation may be running on another thread. An exception from the registry ends the process.
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
