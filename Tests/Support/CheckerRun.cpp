#include "Tests/Support/CheckerRun.h"

#include "Lib/Util/FS/DirectoryChecker.h"
#include "Tests/Support/FileTexts.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <array>
#include <exception>
#include <functional>
#include <system_error>

using Zendra::LW::DirectoryChecker;

namespace Tests {
namespace {

constexpr unsigned int predicateKinds = 4;

/// The predicates. They need only a path and a size, so the model can apply them without QFileInfo.
bool Accepts(unsigned int kind, unsigned int generation, const std::string& path, std::uintmax_t size)
{
    switch (kind) {
    case 1:
        return path.find('m', path.rfind('/')) == std::string::npos;
    case 2:
        return size % 2 == 1;
    default:
        return (path.size() + generation) % 2 == 1;
    }
}

std::uintmax_t SizeOf(const std::string& path)
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

} // namespace

CheckerRun::CheckerRun() : RandomRun(FolderOperations::Kinds()), current(playground.Path())
{
    CreateChecker();
}

CheckerRun::~CheckerRun() = default;

void CheckerRun::TakeTurn(Choices& choices)
{
    PerformOperations(choices);
    ++generation;
    try {
        Fail(TakeStep(choices));
    } catch (const std::exception& exception) {
        Fail(exception.what());
    }
}

/// @return what is wrong; empty when nothing is
std::string CheckerRun::TakeStep(Choices& choices)
{
    const unsigned int step = choices.Below(32);
    const bool isIdle = checker->GetWatchedDirPath().isEmpty();
    if (step == 0 || (isIdle && !nextStartAppends && step < 24))
        return Start(choices);

    switch (step) {
    case 1: {
        BeginStep("stop");
        checker->StopWatching();
        return model.Stop(Observe());
    }
    case 2: {
        const std::string path = operations.ChooseFolder(choices).string();
        BeginStep("folder changed " + path);
        checker->OnDirectoryChanged(QString::fromStdString(path));
        return model.OnDirectoryChanged(path, Observe());
    }
    case 3: {
        const std::string path = operations.ChooseFile(choices).string();
        BeginStep("file changed " + path);
        checker->OnFileChanged(QString::fromStdString(path));
        return model.OnFileChanged(path, Observe());
    }
    default: {
        BeginStep("check");
        ++passesDone;
        checker->CheckFolder();
        return model.CheckFolder(Observe());
    }
    }
}

/// Mostly after a stop, and sometimes while the checker is watching already.
std::string CheckerRun::Start(Choices& choices)
{
    if (nextStartAppends) {
        // A second start would append to the list and leave it unsorted; the model does not cover that.
        CreateChecker();
    } else if (!choices.OneIn(4)) {
        BeginStep("stop");
        checker->StopWatching();
        const std::string error = model.Stop(Observe());
        if (!error.empty())
            return error;
    }

    const bool isIdle = checker->GetWatchedDirPath().isEmpty();
    // A refused start leaves the old predicate in use.
    if (isIdle)
        ChoosePredicate(choices);
    const FolderModel::Settings settings = ChooseSettings(choices);
    BeginStep("start '" + settings.dirPath + "' depth " + std::to_string(settings.depth) + " predicate "
              + std::to_string(predicateKind) + " filters " + std::to_string(settings.nameFilters.size()));
    std::function<bool(const QFileInfo&)> filter;
    if (settings.filter) {
        filter = [this, kind = predicateKind](const QFileInfo& info) {
            const std::string path = info.filePath().toStdString();
            trace.push_back("Asked " + path);
            return Accepts(kind, generation, path, static_cast<std::uintmax_t>(info.size()));
        };
    }
    const bool hasStarted =
        checker->StartWatching(QString::fromStdString(settings.dirPath), ToQStringList(settings.nameFilters),
                               filter, settings.depth);
    if (hasStarted != isIdle)
        return isIdle ? "the start was refused" : "the start was not refused";
    nextStartAppends = isIdle && settings.dirPath.empty();
    return model.Start(settings, Observe());
}

FolderModel::Settings CheckerRun::ChooseSettings(Choices& choices)
{
    static const std::array<std::vector<std::string>, 4> filters = {
        std::vector<std::string>(), {"*.txt"}, {"?.mp4", "M*"}, {"*3.mp4", "b.*", "*M.?XT"}};
    const std::string root = operations.Root().string();
    const std::array<std::string, 7> forms = {
        root, root, root + '/', playground.Path().toStdString() + "/outside/../root", "root", "./root/", ""};

    FolderModel::Settings settings;
    settings.dirPath = forms[choices.Below(forms.size())];
    settings.nameFilters = filters[choices.OneIn(2) ? 0 : choices.Below(filters.size())];
    settings.depth = choices.Below(4);
    if (predicateKind != 0) {
        settings.filter = [this, kind = predicateKind](const std::string& path) {
            return Accepts(kind, generation, path, SizeOf(path));
        };
    }
    return settings;
}

void CheckerRun::ChoosePredicate(Choices& choices)
{
    predicateKind = choices.OneIn(2) ? 0 : choices.Below(predicateKinds);
}

void CheckerRun::BeginStep(const std::string& step)
{
    AddStep("* " + step);
    trace.clear();
}

FolderModel::Observation CheckerRun::Observe() const
{
    FolderModel::Observation observation;
    observation.trace = trace;
    for (const QFileInfo& info : checker->GetFileInfoList())
        observation.files.push_back({info.filePath().toStdString(), info.lastModified().toMSecsSinceEpoch()});
    return observation;
}

void CheckerRun::CreateChecker()
{
    AddStep("* a new checker");
    model = FolderModel();
    nextStartAppends = false;
    checker = std::make_unique<DirectoryChecker>();
    const auto add = [this](const char* signal, const QString& path) {
        ++signalsSeen;
        trace.push_back(signal + path.toStdString());
    };
    const auto connect = [&](auto signal, auto slot) { QObject::connect(checker.get(), signal, slot); };
    connect(&DirectoryChecker::WatchingStarted, [=] { add("WatchingStarted", QString()); });
    connect(&DirectoryChecker::WatchingStopped, [=] { add("WatchingStopped", QString()); });
    connect(&DirectoryChecker::PathChanged, [=](const QString& path) { add("PathChanged ", path); });
    connect(&DirectoryChecker::FileAdded, [=](const QFileInfo& info) { add("FileAdded ", info.filePath()); });
    connect(&DirectoryChecker::FileRemoved,
            [=](const QFileInfo& info) { add("FileRemoved ", info.filePath()); });
    connect(&DirectoryChecker::FileChanged,
            [=](const QFileInfo& info) { add("FileChanged ", info.filePath()); });
}

} // namespace Tests
