#include "Benchmarks/Support/FolderTree.h"
#include "Benchmarks/Support/Work.h"
#include "Core/Interfaces/EventHandlerList.h"
#include "Core/ioPath.h"
#include "Lib/Util/FS/DirectoryUtils.h"

#include <QFile>

#include <boost/signals2/signal.hpp>

#include <algorithm>
#include <functional>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include <dirent.h>

namespace Benchmarks {
namespace {

const char* const pattern = R"(Recording (\d+)\.png)";

/// The next number as an application would search for it, without long numbers and without error handling.
long NextNumber(const std::string& folder, const std::regex& names)
{
    long maximum = 0;
    DIR* const listing = ::opendir(folder.c_str());
    if (!listing)
        return 0;
    std::smatch match;
    while (const dirent* entry = ::readdir(listing)) {
        const std::string name = entry->d_name;
        if (std::regex_match(name, match, names))
            maximum = std::max(maximum, std::stol(match[1].str()));
    }
    ::closedir(listing);
    return maximum + 1;
}

void AddNextIndex()
{
    const Work work{"GetNextAvaliableIndex, 100,000 names", Contender::bare, 1.2};
    const auto tree = std::make_shared<std::unique_ptr<FolderTree>>();
    const auto path = [tree] {
        if (!*tree)
            *tree = std::make_unique<FolderTree>(1, IsBrief() ? 1000 : 100000);
        return QFile::encodeName((*tree)->Path() + QStringLiteral("/Folder 0")).toStdString();
    };

    AddContender(work, Contender::bare, [path](benchmark::State& state) {
        const std::string folder = path();
        const std::regex names(pattern);
        for (auto _ : state)
            benchmark::DoNotOptimize(NextNumber(folder, names));
    });
    AddContender(work, Contender::library, [path](benchmark::State& state) {
        const Zendra::ioPath folder = path();
        const std::regex names(pattern);
        for (auto _ : state)
            benchmark::DoNotOptimize(Zendra::LW::GetNextAvaliableIndex(folder, names));
    });
}

class Observer
{
public:
    virtual ~Observer() = default;
    virtual void OnFile(const Zendra::ioPath& path) { benchmark::DoNotOptimize(&path); }
};

void AddObserverPass()
{
    constexpr int observerCount = 64;
    constexpr int passes = 2000;
    const Work work{"observer pass, 64 observers, a 44-byte path, 2,000 times", "boost::signals2", 1.6};
    const Zendra::ioPath path("/home/somebody/Recordings/Recording 1234.png");

    AddContender(
        work, "boost::signals2",
        [path](benchmark::State& state) {
            std::vector<Observer> observers(observerCount);
            boost::signals2::signal<void(const Zendra::ioPath&)> signal;
            for (Observer& observer : observers)
                signal.connect(std::bind(&Observer::OnFile, &observer, std::placeholders::_1));
            for (auto _ : state) {
                for (int pass = 0; pass < passes; ++pass)
                    signal(path);
            }
        },
        51);
    AddContender(
        work, Contender::library,
        [path](benchmark::State& state) {
            std::vector<Observer> observers(observerCount);
            Zendra::Core::EventHandlerList<Observer, Zendra::Core::SyncExecutePolicy> list;
            for (Observer& observer : observers)
                list.RegisterEventHandler(&observer);
            for (auto _ : state) {
                for (int pass = 0; pass < passes; ++pass)
                    list.PerformForEachEventHandler(
                        std::bind(&Observer::OnFile, std::placeholders::_1, path));
            }
        },
        51);
}

} // namespace

void AddCallBenchmarks()
{
    AddNextIndex();
    AddObserverPass();
}

} // namespace Benchmarks
