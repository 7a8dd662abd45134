#pragma once

#include "Core/Interfaces/EventHandlerList.h"
#include "Core/ioPath.h"
#include "Lib/Util/FS/Export.h"

namespace Zendra::LW {

/// Is told of the file operations that succeeded.
///
/// Derive from it, say what to do, and register it with IFileManager::RegisterEventHandler().
///
/// A notification comes on the thread that performed the operation, after it and before its caller knows of
/// it. The path is the one that was passed to the operation; the reference is valid during the call. From
/// inside a notification an observer may register and unregister observers, itself too, and may use the file
/// manager. What it throws passes to the caller of the operation, and the observers after it are not told.
class LWUTILFS_EXPORT IFileManagerObserver
{
public:
    /// Unregisters nothing: that has to be done before.
    virtual ~IFileManagerObserver() = default;

    /// IFileManager::ExploreFile() has shown this path.
    virtual void OnFileExplored(const Zendra::ioPath& path) = 0;
    /// IFileManager::MoveToTrash() has moved what was at this path.
    virtual void OnFileMovedToTrash(const Zendra::ioPath& path) = 0;
    /// IFileManager::Remove() has deleted what was at this path.
    virtual void OnFileRemoved(const Zendra::ioPath& path) = 0;
};

/// The application's file operations, each of which tells the registered observers when it has succeeded.
///
/// Found in the registry under this type:
///
///     if (auto* files = InstanceRegistry::Instance()->Find<IFileManager>())
///         files->MoveToTrash(recording);
///
/// Any thread may use it, and an operation runs on the thread that calls it. Observers are told in the order
/// in which they registered, and notifications from different threads come one after the other; see
/// EventHandlerList for what that means for an observer that unregisters, and for locks. Operations
/// themselves are performed with no lock held.
///
/// A failed operation returns false; nobody is told and nothing is logged. An exception from an observer
/// passes to the caller, although the operation itself has happened.
class LWUTILFS_EXPORT IFileManager : public Core::EventPublisher<IFileManagerObserver>
{
public:
    /// Shows a file, selected, in the system's file browser, and calls OnFileExplored().
    /// Blocks for as long as Util::ExploreFile() does, two seconds at most. Off the GUI thread only the file
    /// browser is asked; on it the containing folder is opened when the browser does not answer.
    /// @return false for a missing path, or when it could not be shown
    virtual bool ExploreFile(const Zendra::ioPath& path) = 0;

    /// Moves a file, folder or link to the user's trash, and calls OnFileMovedToTrash().
    /// @return as Core::MoveToTrash(), which has the rules
    virtual bool MoveToTrash(const Zendra::ioPath& path) = 0;

    /// Deletes a file or a link for good, never what the link points to, and calls OnFileRemoved().
    /// @return false for a folder, a missing path, or when it could not be deleted
    virtual bool Remove(const Zendra::ioPath& path) = 0;

    /// Whether the path, with links followed, names something that exists. Nobody is told.
    virtual bool Exists(const Zendra::ioPath& path) = 0;

    /// Creates a folder and every missing one above it. Nobody is told.
    /// @return whether the path is a folder now, newly made or there before
    virtual bool CreateDirectories(const Zendra::ioPath& path) = 0;
};

} // namespace Zendra::LW
