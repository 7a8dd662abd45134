// Moves files to the trash, and prints what has happened: ./discard FILE...

#include "Lib/Interfaces/InstanceRegistry.h"
#include "Lib/Util/FS/FileManager.h"

#include <iostream>

using Zendra::ioPath;
using Zendra::LW::FileManager;
using Zendra::LW::IFileManager;
using Zendra::LW::IFileManagerObserver;
using Zendra::LW::InstanceRegistry;

/// Prints each operation that succeeded, whichever part of the application called it.
class Journal : public IFileManagerObserver
{
public:
    void OnFileExplored(const ioPath& path) override { std::cout << "shown    " << path << std::endl; }
    void OnFileMovedToTrash(const ioPath& path) override { std::cout << "in trash " << path << std::endl; }
    void OnFileRemoved(const ioPath& path) override { std::cout << "deleted  " << path << std::endl; }
};

/// Another part of the application, which only knows the interface.
bool Discard(const ioPath& path)
{
    auto* files = InstanceRegistry::Instance()->Find<IFileManager>();
    return files && files->MoveToTrash(path);
}

int main(int argc, char* argv[])
{
    const InstanceRegistry registry;
    FileManager fileManager;
    Journal journal;
    fileManager.RegisterEventHandler(&journal);

    int refused = 0;
    for (int i = 1; i < argc; ++i) {
        if (!Discard(argv[i])) {
            std::cout << "refused  " << argv[i] << std::endl;
            ++refused;
        }
    }

    fileManager.UnregisterEventHandler(&journal);
    return refused;
}
