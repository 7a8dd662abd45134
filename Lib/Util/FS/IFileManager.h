#pragma once

#include "Core/Interfaces/EventHandlerList.h"
#include "Core/ioPath.h"
#include "Lib/Util/FS/Export.h"

namespace Zendra::LW {

/// Is notified of file operations that succeeded.
///
/// Derive from it, and register the observer with IFileManager::RegisterEventHandler().
///
/// A notification comes on the thread that performed the operation, after it and before it returns to its
/// caller. The path is the one that was passed to the operation; the reference is valid during the call.
/// During a notification an observer may register and unregister observers, including itself, and may use the
/// file manager. An exception from it reaches the caller of the operation, and the observers after it are not
/// notified.
class LWUTILFS_EXPORT IFileManagerObserver
{
public:
    /// Does not unregister the observer: that has to be done before.
    virtual ~IFileManagerObserver() = default;

    /// IFileManager::ExploreFile() has shown this path.
    virtual void OnFileExplored(const Zendra::ioPath& path) = 0;
    /// IFileManager::MoveToTrash() has moved what was at this path.
    virtual void OnFileMovedToTrash(const Zendra::ioPath& path) = 0;
    /// IFileManager::Remove() has deleted what was at this path.
    virtual void OnFileRemoved(const Zendra::ioPath& path) = 0;
};

/// The application's file operations. The first three notify the registered observers when they have
/// succeeded.
///
/// Found in the registry under this type:
///
///     if (auto* files = InstanceRegistry::Instance()->Find<IFileManager>())
///         files->MoveToTrash(recording);
///
/// Any thread may use it, and an operation runs on the thread that calls it. Observers are notified in the
/// order in which they registered, and notifications from different threads come one after the other; see
/// EventHandlerList for unregistering during a notification and for locks. No lock is held during the
/// operation itself.
///
/// A failed operation returns false; no observer is notified and nothing is logged. An exception from an
/// observer reaches the caller, although the operation itself has succeeded.
class LWUTILFS_EXPORT IFileManager : public Core::EventPublisher<IFileManagerObserver>
{
public:
    /// Shows a file, selected, in the system's file browser, and calls OnFileExplored(). Blocks for as long
    /// as Util::ExploreFile() does, two seconds at most. When the file browser does not answer, the
    /// containing folder is opened instead, on the GUI thread only.
    /// @return false for a missing path, or when it could not be shown
    virtual bool ExploreFile(const Zendra::ioPath& path) = 0;

    /// Moves a file, folder or link to the user's trash, and calls OnFileMovedToTrash().
    /// @return as Core::MoveToTrash(), where the rules are
    virtual bool MoveToTrash(const Zendra::ioPath& path) = 0;

    /// Permanently deletes a file or a link, never the target of a link, and calls OnFileRemoved().
    /// @return false for a folder, a missing path, or when it could not be deleted
    virtual bool Remove(const Zendra::ioPath& path) = 0;

    /// Whether there is an entry at the path; follows links. Observers are not notified.
    virtual bool Exists(const Zendra::ioPath& path) = 0;

    /// Creates a folder and every missing one above it. Observers are not notified.
    /// @return whether the path is a folder now, created or there before
    virtual bool CreateDirectories(const Zendra::ioPath& path) = 0;
};

} // namespace Zendra::LW
