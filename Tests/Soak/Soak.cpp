#include "Lib/Util/FS/DirectoryChecker.h"
#include "Lib/Util/FS/DirectoryWatcher.h"
#include "Tests/Soak/Resources.h"
#include "Tests/Soak/SignalAudit.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/FolderModel.h"
#include "Tests/Support/FolderOperations.h"
#include "Tests/Support/Playground.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTimer>

#include <glog/logging.h>

#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <poll.h>
#include <unistd.h>

// Both watchers watch one folder while another process performs operations on its files. Memory and open
// files must stop growing, every signal must have its operation, and in the end the lists must be right.

using Zendra::LW::DirectoryChecker;
using Zendra::LW::DirectoryWatcher;
using Zendra::LW::IDirectoryWatcher;

namespace Soak {
namespace {

constexpr unsigned int depth = 3;
/// Gives the watchers time to see most states.
constexpr int betweenOperationsMilliseconds = 1;
constexpr int passMilliseconds = 15;
constexpr int sampleMilliseconds = 100;
constexpr int watcherRestartMilliseconds = 700;
constexpr int checkerRestartMilliseconds = 1900;
/// One write may be reported three times: as a new file, as new content and as a new modification time.
constexpr long long signalsPerOperation = 3;

Tests::FolderOperations::Kinds PlainFiles()
{
    Tests::FolderOperations::Kinds kinds;
    // Without these every signal is about a path that an operation names.
    kinds.links = false;
    kinds.hardLinks = false;
    kinds.moveFolders = false;
    kinds.replaceRoot = false;
    return kinds;
}

/// Waits for a moment for the end of the input.
bool IsInputClosed()
{
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    return ::poll(&input, 1, betweenOperationsMilliseconds) > 0;
}

/// The other process: performs operations until its input is closed, and prints them.
int Operate(const std::string& playground, unsigned int seed)
{
    Tests::Choices choices(seed);
    Tests::FolderOperations operations(playground, PlainFiles());
    while (!IsInputClosed())
        std::cout << operations.Perform(choices) << '\n' << std::flush;
    return 0;
}

/// The operations of the other process, by path.
class Journal
{
public:
    void Read(QProcess& process)
    {
        while (process.canReadLine())
            Add(process.readLine().trimmed().toStdString());
    }

    long long OperationCount() const { return total; }

    /// The number of operations on a path below the playground or on the folders above it.
    long long CountFor(const std::string& path) const
    {
        long long count = 0;
        for (std::size_t end = path.size(); end != std::string::npos && end > 0;
             end = path.rfind('/', end - 1)) {
            const auto found = counts.find(path.substr(0, end));
            count += found == counts.end() ? 0 : found->second;
        }
        return count;
    }

private:
    void Add(const std::string& line)
    {
        ++total;
        const std::size_t from = line.find("root");
        if (from == std::string::npos)
            return;
        const std::size_t arrow = line.find(" -> ", from);
        ++counts[line.substr(from, arrow == std::string::npos ? arrow : arrow - from)];
        if (arrow != std::string::npos)
            ++counts[line.substr(arrow + 4)];
    }

    Counts counts;
    long long total = 0;
};

class Run
{
public:
    explicit Run(unsigned int operationSeed) : seed(operationSeed)
    {
        settings.dirPath = playground.Path().toStdString() + "/root";
        settings.depth = depth;
    }

    int Play(int seconds)
    {
        QProcess other;
        other.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QObject::connect(&other, &QProcess::readyReadStandardOutput, [&] { journal.Read(other); });
        other.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("--operate"), playground.Path(), QStringLiteral("--seed"),
                     QString::number(seed)});
        if (!other.waitForStarted())
            return Report("cannot start the other process");

        Start(watcher, watcherAudit);
        Start(checker, checkerAudit);
        RunLoop(seconds);

        other.closeWriteChannel();
        if (!other.waitForFinished() || other.exitCode() != 0)
            return Report("the other process failed");
        journal.Read(other);
        Tests::HandleQueuedNotices();
        return Report(FinalError());
    }

private:
    void Start(IDirectoryWatcher& which, SignalAudit& audit)
    {
        which.StopWatching();
        which.StartWatching(QString::fromStdString(settings.dirPath), {}, {}, depth);
        audit.ReadList();
    }

    void RunLoop(int seconds)
    {
        QEventLoop loop;
        const auto repeat = [&](QTimer& timer, int milliseconds, const std::function<void()>& act) {
            QObject::connect(&timer, &QTimer::timeout, act);
            timer.start(milliseconds);
        };
        QTimer passes;
        repeat(passes, passMilliseconds, [&] {
            checker.CheckFolder();
            ++passCount;
        });
        QTimer samples;
        repeat(samples, sampleMilliseconds, [&] { resources.Sample(); });
        QTimer watcherRestarts;
        repeat(watcherRestarts, watcherRestartMilliseconds, [&] { Start(watcher, watcherAudit); });
        QTimer checkerRestarts;
        repeat(checkerRestarts, checkerRestartMilliseconds, [&] { Start(checker, checkerAudit); });
        QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
        loop.exec();
    }

    std::string FinalError()
    {
        if (journal.OperationCount() == 0 || checkerAudit.SignalCount() == 0
            || watcherAudit.SignalCount() == 0)
            return "nothing happened";

        // A new file in the root makes the watcher scan once more. Nothing else changes any longer.
        QFile fence(QString::fromStdString(settings.dirPath + "/fence"));
        if (!fence.open(QIODevice::WriteOnly))
            return "cannot write a file";
        Tests::HandleQueuedNotices();
        checker.CheckFolder();
        const long long signalsBefore = checkerAudit.SignalCount();
        checker.CheckFolder();
        if (checkerAudit.SignalCount() != signalsBefore)
            return "the checker reports something although nothing has changed";

        for (const std::string& error :
             {CompareLists(), checkerAudit.Error(), watcherAudit.Error(), CompareWithOperations(checkerAudit),
              CompareWithOperations(watcherAudit), resources.Error()}) {
            if (!error.empty())
                return error;
        }
        return {};
    }

    std::string CompareLists() const
    {
        std::map<std::string, qint64> times;
        for (const QFileInfo& info : checker.GetFileInfoList())
            times[info.filePath().toStdString()] = info.lastModified().toMSecsSinceEpoch();
        std::set<std::string> watched;
        for (const QFileInfo& info : watcher.GetFileInfoList())
            watched.insert(info.filePath().toStdString());

        const std::vector<std::string> scanned = Tests::FolderModel::Scan(settings);
        for (const std::string& path : scanned) {
            const auto listed = times.find(path);
            if (listed == times.end())
                return "the checker misses " + path;
            if (listed->second != QFileInfo(QString::fromStdString(path)).lastModified().toMSecsSinceEpoch())
                return "the checker has an old time of " + path;
            if (watched.count(path) == 0)
                return "the watcher misses " + path;
        }
        const std::set<std::string> present(scanned.begin(), scanned.end());
        for (const auto& [path, time] : times) {
            // A known file stays listed when a pipe replaces it between two passes.
            if (present.count(path) == 0 && !std::filesystem::is_fifo(path))
                return "the checker knows a file that is gone: " + path;
        }
        return {};
    }

    std::string CompareWithOperations(const SignalAudit& audit) const
    {
        const std::size_t prefixLength = settings.dirPath.size() - std::string("root").size();
        for (const auto& [path, count] : audit.SignalCounts()) {
            const std::string relative = path.substr(prefixLength);
            if (relative != "root/fence" && count > signalsPerOperation * journal.CountFor(relative))
                return std::to_string(count) + " signals about " + relative + ", but "
                       + std::to_string(journal.CountFor(relative)) + " operations";
        }
        return {};
    }

    int Report(const std::string& error) const
    {
        std::cout << journal.OperationCount() << " operations, " << passCount << " passes, "
                  << checkerAudit.SignalCount() << " signals of the checker, " << watcherAudit.SignalCount()
                  << " of the watcher\n"
                  << resources.Summary() << '\n'
                  << (error.empty() ? "no errors" : "seed " + std::to_string(seed) + ": " + error)
                  << std::endl;
        return error.empty() ? 0 : 1;
    }

    const unsigned int seed;
    const Tests::Playground playground;
    Tests::FolderModel::Settings settings;
    DirectoryWatcher watcher;
    DirectoryChecker checker;
    SignalAudit watcherAudit{watcher, "watcher"};
    SignalAudit checkerAudit{checker, "checker"};
    Journal journal;
    Resources resources;
    long long passCount = 0;
};

} // namespace
} // namespace Soak

int main(int argc, char* argv[])
{
    google::InitGoogleLogging(argv[0]);
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption seconds(QStringLiteral("seconds"), QStringLiteral("How long to run."),
                                     QStringLiteral("number"), QStringLiteral("20"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("The seed of the operations."),
                                  QStringLiteral("number"), QStringLiteral("1"));
    const QCommandLineOption operate(QStringLiteral("operate"),
                                     QStringLiteral("Be the other process, which works in this folder."),
                                     QStringLiteral("folder"));
    parser.addOptions({seconds, seed, operate});
    parser.addHelpOption();
    parser.process(application);

    if (parser.isSet(operate))
        return Soak::Operate(parser.value(operate).toStdString(), parser.value(seed).toUInt());
    return Soak::Run(parser.value(seed).toUInt()).Play(parser.value(seconds).toInt());
}
