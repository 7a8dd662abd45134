// The examples in the comments of the public headers, word for word; HeaderExamplesTest compares them.

#include "Core/FileOperations.h"
#include "Core/Interfaces/EventHandlerList.h"
#include "Core/ioPath.h"
#include "Lib/Interfaces/AutoInstanceRegistrator.h"
#include "Lib/Interfaces/InstanceRegistry.h"
#include "Lib/Util/FS/DirectoryChecker.h"
#include "Lib/Util/FS/DirectoryUtils.h"
#include "Lib/Util/FS/DirectoryWatcher.h"
#include "Lib/Util/FS/FileManager.h"
#include "Lib/Util/FS/TemporaryHardLink.h"
#include "Pointers.h"
#include "Util/AlertBox.h"

#include <QTimer>

#include <functional>
#include <iostream>
#include <memory>
#include <regex>
#include <string>

using namespace Zendra::Core;
using namespace Zendra::LW;
using namespace Zendra::Util;

// Pointers.h

class Recorder
{
public:
    Recorder();
    ~Recorder();
    int Frames() const;

private:
    struct Impl;
    Zendra::PropagateConstPtr<Impl, Zendra::UniquePtr> impl;
};

struct Recorder::Impl
{
    int frames;
};

Recorder::Recorder() = default;
Recorder::~Recorder() = default;

int Recorder::Frames() const
{
    return impl->frames;
}

// Core/ioPath.h

struct Settings
{
    std::string outputFolder;
};

void ListFolder(const Settings& settings)
{
    Zendra::ioPath folder = settings.outputFolder;
    if (!Zendra::ioPath::create_directories(folder))
        return;
    for (auto entry = folder.iterator(); entry != boost::filesystem::directory_iterator(); ++entry)
        std::cout << Zendra::ioPath(entry->path()) << '\n';
}

// Core/Interfaces/EventHandlerList.h

struct IRecorderObserver
{
    virtual ~IRecorderObserver() = default;
    virtual void OnSaved(const Zendra::ioPath& path) = 0;
};

struct RecorderWindow : IRecorderObserver
{
    void OnSaved(const Zendra::ioPath& path) override { std::cout << path << '\n'; }
};

void TellObservers(RecorderWindow& window, const Zendra::ioPath& path)
{
    EventHandlerList<IRecorderObserver, SyncExecutePolicy> observers;
    observers.RegisterEventHandler(&window);
    const auto saved = std::bind(&IRecorderObserver::OnSaved, std::placeholders::_1, path);
    observers.PerformForEachEventHandler(saved);
}

// Lib/Interfaces

struct IService
{
    virtual ~IService() = default;
};

class Service : public IService
{
public:
    Service() { registration = std::make_unique<AutoInstanceRegistrator<IService>>(this); }
    ~Service() override { registration.reset(); }

private:
    std::unique_ptr<AutoInstanceRegistrator<IService>> registration;
};

void PublishAndFind(const Zendra::ioPath& path)
{
    Zendra::LW::InstanceRegistry registry;
    Zendra::LW::FileManager fileManager;
    if (auto* files = InstanceRegistry::Instance()->Find<IFileManager>())
        files->Remove(path);
}

// Lib/Util/FS

void Publish()
{
    InstanceRegistry registry;
    FileManager fileManager;
}

void Trash(const Zendra::ioPath& recording)
{
    if (auto* files = InstanceRegistry::Instance()->Find<IFileManager>())
        files->MoveToTrash(recording);
}

std::string NextNumber(const Zendra::ioPath& folder)
{
    const std::string number = GetNextAvaliableIndex(folder, std::regex("Recording (\\d+)\\.mp4"));
    return number;
}

std::string Lend(const std::string& recording)
{
    TemporaryHardLink link(recording);
    const std::string usable = link.GetExistFilePath();
    return usable;
}

class FolderView : public QObject
{
public:
    void Watch(const QString& folder)
    {
        connect(&watcher, &IDirectoryWatcher::FileAdded, [](const QFileInfo& info) { Show(info); });
        watcher.StartWatching(folder, {QStringLiteral("*.mp4")}, {}, 0);
    }

    void Poll(const QString& folder)
    {
        checker.StartWatching(folder, {QStringLiteral("*.mp4")}, {}, 0);
        connect(&timer, &QTimer::timeout, &checker, &DirectoryChecker::CheckFolder);
    }

    // Util/AlertBox.h
    static void AskAndDelete(const QString& name, QWidget* window)
    {
        AlertBox box(AlertBox::Level::Question, tr("Delete"), tr("Delete %1?").arg(name),
                     QMessageBox::Yes | QMessageBox::No, window, Qt::Dialog);
        if (box.Exec() == QMessageBox::Yes)
            Delete(name);
    }

private:
    static void Show(const QFileInfo& info) { std::cout << qPrintable(info.fileName()) << '\n'; }
    static void Delete(const QString& name) { RemoveFile(name.toStdString()); }

    DirectoryWatcher watcher;
    DirectoryChecker checker;
    QTimer timer;
};
