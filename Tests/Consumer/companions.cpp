// The library with an application's own companions. The results show that it uses these and no others.

#include "Core/ioPath.h"
#include "Lib/Interfaces/InstanceRegistry.h"
#include "Lib/Util/FS/DirectoryChecker.h"
#include "Lib/Util/FS/DirectoryUtils.h"
#include "Lib/Util/FS/FileManager.h"
#include "Util/AlertBox.h"

#include <QCoreApplication>

#include <iostream>

#if !defined(STAND_IN_CORE) || !defined(STAND_IN_UTIL) || !defined(STAND_IN_REGISTRY)                        \
    || !defined(STAND_IN_POINTERS)
#    error "These are not the application's own companions."
#endif

namespace {

int failures = 0;

void Expect(bool holds, const char* what)
{
    if (holds)
        return;
    std::cerr << "failed: " << what << '\n';
    ++failures;
}

struct Observer : Zendra::LW::IFileManagerObserver
{
    void OnFileExplored(const Zendra::ioPath&) override { ++calls; }
    void OnFileMovedToTrash(const Zendra::ioPath&) override { ++calls; }
    void OnFileRemoved(const Zendra::ioPath&) override { ++calls; }

    int calls = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);

    Zendra::LW::InstanceRegistry registry;
    {
        Zendra::LW::FileManager service;
        auto* files = static_cast<Zendra::LW::IFileManager*>(registry.published);
        Expect(files == &service, "the file manager is in the stand-in registry");
        Observer observer;
        service.RegisterEventHandler(&observer);
        Expect(files->Exists("stand-in"), "only the stand-in path exists");
        Expect(!files->Exists("/"), "and no real one");
        Expect(files->CreateDirectories("stand-in"), "only the stand-in folder can be created");
        Expect(files->ExploreFile("stand-in") && files->MoveToTrash("stand-in") && files->Remove("stand-in"),
               "the stand-in operations succeed");
        Expect(observer.calls == 3, "and the observer is notified of each");
        Expect(!files->Remove("/no/such/file"), "a file that is not the stand-in cannot be removed");
    }
    Expect(registry.published == nullptr, "the file manager is unregistered");

    Expect(!Zendra::LW::CheckPathAndAnnoyUserIfInvalid("/", nullptr),
           "the stand-in validation accepts no folder");
    Expect(Zendra::Util::AlertBox::shown == "a stand-in reason: /", "the stand-in alert is shown");

    Zendra::LW::DirectoryChecker checker;
    Expect(checker.StartWatching("/no/such/folder", {}, {}, 0), "a folder can be watched");

    if (failures == 0)
        std::cout << "The library uses the consumer's own companions.\n";
    return failures;
}
