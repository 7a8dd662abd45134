#include "Benchmarks/Support/Machine.h"
#include "Benchmarks/Support/RatioTable.h"
#include "Benchmarks/Support/SystemCalls.h"
#include "Benchmarks/Support/Work.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <fstream>
#include <iostream>
#include <sstream>

namespace {

const char* const preface = R"(# How fast it is

Written by `./scripts/bench`. Each figure is the median of several runs in one process, in processor time. The runs of
all contenders are interleaved, so that other load on the machine affects them equally. On other machines the times
differ, but the ratios should be similar.

Each column is a contender that does the same work; in brackets, how many times as long the library takes.

- raw walk: `readdir`, and `fstatat` for each file where times are needed; it keeps nothing and compares nothing.
- std::filesystem poller: the polling loop that an application would write with the standard library.
- transcription: the watchers' rules, implemented directly with `QDir`, `std::sort` and `QFileInfo`.
- library, later pass: the library itself, in an ordinary later pass.
- bare: the same work without the library.

)";

std::string Report()
{
    std::ostringstream text;
    text << preface << "## Machine\n\n" << Benchmarks::DescribeMachine() << "\n## Ratios\n\n";
    Benchmarks::RatioTable::Instance().Print(text);
    text << "\n## System calls\n\n" << Benchmarks::CountSystemCalls();
    return text.str();
}

} // namespace

int main(int argc, char* argv[])
{
    benchmark::Initialize(&argc, argv);
    const QCoreApplication application(argc, argv);

    QCommandLineParser arguments;
    const QCommandLineOption briefly(QStringLiteral("brief"),
                                     QStringLiteral("Run everything once on small folders."));
    const QCommandLineOption output(
        QStringLiteral("output"), QStringLiteral("Write the tables to a file, too."), QStringLiteral("file"));
    const QCommandLineOption passes(QStringLiteral("passes"),
                                    QStringLiteral("Only make passes: CONTENDER COUNT."));
    const QCommandLineOption memory(
        QStringLiteral("memory"),
        QStringLiteral("Only print the memory after a start and after ten passes: CONTENDER FOLDER."));
    arguments.addOptions({briefly, output, passes, memory});
    arguments.addHelpOption();
    arguments.process(application);

    const QStringList words = arguments.positionalArguments();
    if ((arguments.isSet(passes) || arguments.isSet(memory)) && words.size() != 2)
        arguments.showHelp(2);
    if (arguments.isSet(memory)) {
        Benchmarks::PrintMemoryOf(words.at(0).toStdString(), words.at(1));
        return 0;
    }
    if (arguments.isSet(passes)) {
        Benchmarks::MakePasses(words.at(0).toStdString(), words.at(1).toInt());
        return 0;
    }
    if (arguments.isSet(briefly))
        Benchmarks::SetBrief();

    Benchmarks::AddPollingBenchmarks();
    Benchmarks::AddPollingMemoryBenchmarks();
    Benchmarks::AddWatchingBenchmarks();
    Benchmarks::AddCallBenchmarks();
    Benchmarks::AddTrashBenchmarks();
    Benchmarks::RunAllWorks();

    if (arguments.isSet(briefly)) {
        std::cout << "All benchmarks ran. The folders were too small for meaningful figures.\n";
        return 0;
    }
    const std::string report = Report();
    std::cout << report;
    if (!arguments.isSet(output))
        return 0;
    std::ofstream file(arguments.value(output).toStdString());
    file << report;
    return file.good() ? 0 : 1;
}
