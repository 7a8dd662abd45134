// The library on an application's own companions: what it does by them shows that they are these.

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
    std::cerr << "not so: " << what << '\n';
    ++failures;
}

struct Observer : Zendra::LW::IFileManagerObserver
{
    void OnFileExplored(const Zendra::ioPath&) override { ++told; }
    void OnFileMovedToTrash(const Zendra::ioPath&) override { ++told; }
    void OnFileRemoved(const Zendra::ioPath&) override { ++told; }

    int told = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);

    Zendra::LW::InstanceRegistry registry;
    {
        Zendra::LW::FileManager service;
        auto* files = static_cast<Zendra::LW::IFileManager*>(registry.published);
        Expect(files == &service, "the stand-in registry has the file manager");
        Observer observer;
        service.RegisterEventHandler(&observer);
        Expect(files->Exists("stand-in"), "only the stand-in path exists");
        Expect(!files->Exists("/"), "and no real one");
        Expect(files->CreateDirectories("stand-in"), "only the stand-in folder is made");
        Expect(files->ExploreFile("stand-in") && files->MoveToTrash("stand-in") && files->Remove("stand-in"),
               "the stand-in operations succeed");
        Expect(observer.told == 3, "and the observer is told of each");
        Expect(!files->Remove("/no/such/file"), "no other operation does");
    }
    Expect(registry.published == nullptr, "the file manager is withdrawn");

    Expect(!Zendra::LW::CheckPathAndAnnoyUserIfInvalid("/", nullptr), "the stand-in rules accept no folder");
    Expect(Zendra::Util::AlertBox::shown == "a stand-in reason: /", "the stand-in alert is shown");

    Zendra::LW::DirectoryChecker checker;
    Expect(checker.StartWatching("/no/such/folder", {}, {}, 0), "a folder can be watched");

    if (failures == 0)
        std::cout << "The consumer's own companions did it.\n";
    return failures;
}
