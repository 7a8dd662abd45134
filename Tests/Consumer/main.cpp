// Uses something of each of the libraries. `foreach` and plain literals for QString are intended: the
// definitions that forbid them in the libraries must not reach the programs that use the libraries. Qt
// Widgets, Boost and glog are linked through the libraries alone.

#include "Core/FileOperations.h"
#include "Lib/Interfaces/InstanceRegistry.h"
#include "Lib/Util/FS/DirectoryChecker.h"
#include "Lib/Util/FS/DirectoryUtils.h"
#include "Lib/Util/FS/DirectoryWatcher.h"
#include "Lib/Util/FS/FileManager.h"
#include "Lib/Util/FS/TemporaryHardLink.h"
#include "Util/PathValidation.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QWidget>

#include <boost/exception/exception.hpp>
#include <boost/multiprecision/cpp_int.hpp>
#include <glog/logging.h>

#include <iostream>
#include <regex>
#include <stdexcept>

namespace {

int failures = 0;

void Expect(bool holds, const char* what)
{
    if (holds)
        return;
    std::cerr << "failed: " << what << '\n';
    ++failures;
}

void Write(const QString& path)
{
    QFile file(path);
    Expect(file.open(QIODevice::WriteOnly), "a file can be written");
}

struct Observer : Zendra::LW::IFileManagerObserver
{
    void OnFileExplored(const Zendra::ioPath&) override {}
    void OnFileMovedToTrash(const Zendra::ioPath&) override {}
    void OnFileRemoved(const Zendra::ioPath&) override { ++removed; }

    int removed = 0;
};

template <class Exception>
bool Throws(const Zendra::ioPath& folder, const std::regex& pattern)
{
    try {
        Zendra::LW::GetNextAvaliableIndex(folder, pattern);
    } catch (const Exception&) {
        return true;
    } catch (...) {
    }
    return false;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    google::InitGoogleLogging(argv[0]);
    FLAGS_logtostderr = true;
    QTemporaryDir temporary;
    const QString folder = temporary.path();
    LOG_IF(WARNING, !temporary.isValid()) << "There is no folder for temporary files.";
    Write(folder + "/take 9.mp4");

    // Watching, with a signal of a class in another library.
    Zendra::LW::DirectoryChecker checker;
    QStringList added;
    QObject::connect(&checker, &Zendra::LW::IDirectoryWatcher::FileAdded,
                     [&](const QFileInfo& info) { added << info.fileName(); });
    Expect(checker.StartWatching(folder, {"*.mp4"}, {}, 0), "a folder can be watched");
    Write(folder + "/take 10.mp4");
    checker.CheckFolder();
    Expect(added == QStringList{"take 10.mp4"}, "a new file is reported");
    foreach (const QFileInfo& info, checker.GetFileInfoList())
        Expect(info.fileName().startsWith("take"), "the snapshot holds the takes");
    Zendra::LW::IDirectoryWatcher* watcher = new Zendra::LW::DirectoryWatcher;
    Expect(qobject_cast<Zendra::LW::DirectoryWatcher*>(watcher), "the meta-object is known here");
    delete watcher;

    // The next number, and exceptions thrown in a library and caught here.
    const Zendra::ioPath path(folder.toStdString());
    const boost::multiprecision::cpp_int next(
        Zendra::LW::GetNextAvaliableIndex(path, std::regex(R"(take (\d+)\.mp4)")));
    Expect(next == 11, "11 is next");
    const std::regex noNumber("(take) .*");
    Expect(Throws<std::runtime_error>(path, noNumber), "a name without a number is a runtime_error");
    Expect(Throws<boost::exception>(path, noNumber), "and a boost::exception");
    Expect(Throws<boost::filesystem::filesystem_error>("/no/such/folder", noNumber),
           "a missing folder is an error");

    // A service from the registry, and its observers.
    Zendra::LW::InstanceRegistry registry;
    Zendra::LW::FileManager service;
    auto* files = registry.Find<Zendra::LW::IFileManager>();
    Expect(files == &service, "the file manager is found");
    Observer observer;
    service.RegisterEventHandler(&observer);
    Expect(service.Remove((folder + "/take 9.mp4").toStdString()), "a file can be removed");
    Expect(observer.removed == 1, "and its observer is notified");
    Expect(dynamic_cast<Zendra::LW::FileManager*>(files), "the interface can be cast back");

    // The other functions.
    Expect(Zendra::LW::PrepareFolder(folder, qobject_cast<QWidget*>(&application)), "the folder is valid");
    const Zendra::LW::TemporaryHardLink link("");
    Expect(link.GetExistFilePath().empty(), "an empty path makes no link");
    Expect(Zendra::LW::TemporaryHardLink::exists(folder.toStdString()), "the folder exists");
    QString reason;
    Expect(!Zendra::Util::IsThisPathValid("/no/such/folder", &reason), "a missing folder is invalid");
    Expect(!reason.isEmpty(), "and the reason is given");
    Expect(!Zendra::Core::RemoveFile("/no/such/file"), "a missing file cannot be removed");

    if (failures == 0)
        std::cout << "The consumer can use everything.\n";
    return failures;
}
