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
constexpr unsigned int unlimitedDepth = std::numeric_limits<unsigned int>::max();
const std::string notice = "library, folder notice";

/// @return the number of system calls of a process that makes these passes; -1 if they cannot be counted
double Count(const std::string& contender, int passes)
{
    const QTemporaryDir folder;
    const QString report = folder.filePath(QStringLiteral("report"));
    QProcess strace;
    strace.start(QStringLiteral("strace"),
                 {QStringLiteral("-f"), QStringLiteral("-c"), QStringLiteral("-o"), report,
                  QCoreApplication::applicationFilePath(), QStringLiteral("--passes"),
                  QString::fromStdString(contender), QString::number(passes)});
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

void MakePasses(const std::string& contender, int number)
{
    const QTemporaryDir root;
    const QString path = root.path();
    const std::string nativePath = QFile::encodeName(path).toStdString();
    Zendra::LW::DirectoryChecker checker;
    Zendra::LW::DirectoryWatcher watcher;
    PollingLoop polling;
    Transcription transcription;
    // Before there are files: those that are added to an empty snapshot are not registered.
    if (contender == notice)
        watcher.StartWatching(path, {}, {}, unlimitedDepth);
    FolderTree::Fill(path, folders, filesPerFolder);
    checker.StartWatching(path, {}, {}, unlimitedDepth);
    polling.Start(nativePath);
    transcription.Start(path);
    for (int pass = 0; pass < number; ++pass) {
        if (contender == Contender::library)
            checker.CheckFolder();
        else if (contender == notice)
            watcher.OnDirectoryChanged(path);
        else if (contender == Contender::polling)
            polling.Check(nativePath);
        else if (contender == Contender::transcription)
            transcription.Check(path);
    }
}

std::string CountSystemCalls()
{
    if (QStandardPaths::findExecutable(QStringLiteral("strace")).isEmpty())
        return "Not counted: strace is not installed.\n";
    std::string table = "| contender | system calls per known file and pass |\n|---|---|\n";
    for (const std::string& contender :
         {Contender::library, notice, Contender::polling, Contender::transcription}) {
        // The difference of two counts excludes the start, the first passes and the end of the process.
        constexpr int few = 2;
        constexpr int many = 12;
        const double calls =
            (Count(contender, many) - Count(contender, few)) / (many - few) / (folders * filesPerFolder);
        char text[32];
        std::snprintf(text, sizeof text, "%.2f", calls);
        table += "| " + contender + " | " + text + " |\n";
    }
    return table;
}

} // namespace Benchmarks
