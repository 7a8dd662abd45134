#include "Benchmarks/Support/SystemCalls.h"

#include "Benchmarks/Support/Baselines.h"
#include "Benchmarks/Support/FolderTree.h"
#include "Benchmarks/Support/Work.h"
#include "Lib/Util/FS/DirectoryChecker.h"
#include "Lib/Util/FS/DirectoryWatcher.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstdio>
#include <limits>

namespace Benchmarks {
namespace {

constexpr int folders = 10;
constexpr int filesPerFolder = 100;
constexpr unsigned int anyDepth = std::numeric_limits<unsigned int>::max();
const std::string notice = "library, folder notice";

/// @return all system calls of so many passes, start and end of the process included; -1 if they cannot be
/// counted
double Count(const std::string& doer, int passes)
{
    const QTemporaryDir folder;
    const QString report = folder.filePath(QStringLiteral("report"));
    QProcess strace;
    strace.start(QStringLiteral("strace"),
                 {QStringLiteral("-f"), QStringLiteral("-c"), QStringLiteral("-o"), report,
                  QCoreApplication::applicationFilePath(), QStringLiteral("--passes"),
                  QString::fromStdString(doer), QString::number(passes)});
    QFile file(report);
    if (!strace.waitForFinished(120000) || strace.exitCode() != 0 || !file.open(QIODevice::ReadOnly))
        return -1;
    // The last line: time, seconds, microseconds a call, calls, errors, "total".
    const QRegularExpression total(QStringLiteral(R"(^\s*\S+\s+\S+\s+\S+\s+(\d+).*total$)"),
                                   QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = total.match(QString::fromLatin1(file.readAll()));
    return match.hasMatch() ? match.captured(1).toDouble() : -1;
}

} // namespace

void MakePasses(const std::string& doer, int number)
{
    const QTemporaryDir root;
    const QString path = root.path();
    const std::string nativePath = QFile::encodeName(path).toStdString();
    Zendra::LW::DirectoryChecker checker;
    Zendra::LW::DirectoryWatcher watcher;
    PollingLoop polling;
    Transcription transcription;
    // Before there are files: those that fill an empty snapshot are not registered one by one.
    if (doer == notice)
        watcher.StartWatching(path, {}, {}, anyDepth);
    FolderTree::Fill(path, folders, filesPerFolder);
    checker.StartWatching(path, {}, {}, anyDepth);
    polling.Start(nativePath);
    transcription.Start(path);
    for (int pass = 0; pass < number; ++pass) {
        if (doer == Doer::library)
            checker.CheckFolder();
        else if (doer == notice)
            watcher.OnDirectoryChanged(path);
        else if (doer == Doer::polling)
            polling.Check(nativePath);
        else if (doer == Doer::transcription)
            transcription.Check(path);
    }
}

std::string CountSystemCalls()
{
    if (QStandardPaths::findExecutable(QStringLiteral("strace")).isEmpty())
        return "Not counted: strace is not installed.\n";
    std::string table = "| doer | system calls per known file and pass |\n|---|---|\n";
    for (const std::string& doer : {Doer::library, notice, Doer::polling, Doer::transcription}) {
        // The first pass after a start may cost more; those after it are alike.
        constexpr int few = 2;
        constexpr int many = 12;
        const double calls =
            (Count(doer, many) - Count(doer, few)) / (many - few) / (folders * filesPerFolder);
        char text[32];
        std::snprintf(text, sizeof text, "%.2f", calls);
        table += "| " + doer + " | " + text + " |\n";
    }
    return table;
}

} // namespace Benchmarks
