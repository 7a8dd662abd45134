#include "Tests/Support/CheckerRun.h"

#include "Lib/Util/FS/DirectoryChecker.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <array>
#include <exception>
#include <system_error>

using Zendra::LW::DirectoryChecker;

namespace Tests {
namespace {

constexpr std::size_t historyLimit = 60;
constexpr unsigned int predicateKinds = 4;

/// The predicates, on no more than a path and a size, so that the model can do without QFileInfo.
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

std::filesystem::path ToPath(const QString& path)
{
    return path.toStdString();
}

QStringList ToQt(const std::vector<std::string>& texts)
{
    QStringList list;
    for (const std::string& text : texts)
        list.append(QString::fromStdString(text));
    return list;
}

} // namespace

CheckerRun::CheckerRun() : current(playground.Path()), operations(ToPath(playground.Path()))
{
    Renew();
}

CheckerRun::~CheckerRun() = default;

std::string CheckerRun::Play(Choices& choices, int operationCount)
{
    std::string complaint;
    while (complaint.empty() && operationsDone < operationCount && !choices.AreUsedUp()) {
        for (unsigned int left = 1 + choices.Below(4); left > 0; --left) {
            history.push_back(operations.Perform(choices));
            ++operationsDone;
        }
        ++generation;
        try {
            complaint = TakeStep(choices);
        } catch (const std::exception& exception) {
            complaint = exception.what();
        }
    }
    if (complaint.empty())
        return {};

    std::string text = "after these steps:";
    const std::size_t first = history.size() > historyLimit ? history.size() - historyLimit : 0;
    for (std::size_t i = first; i < history.size(); ++i)
        text += "\n    " + history[i];
    text += "\n  " + complaint;
    const std::string prefix = playground.Path().toStdString() + '/';
    for (auto at = text.find(prefix); at != std::string::npos; at = text.find(prefix, at))
        text.erase(at, prefix.size());
    return text;
}

std::string CheckerRun::TakeStep(Choices& choices)
{
    const unsigned int step = choices.Below(32);
    const bool isIdle = checker->GetWatchedDirPath().isEmpty();
    if (step == 0 || (isIdle && !addsToFilesOfBefore && step < 24))
        return Start(choices);

    switch (step) {
    case 1: {
        Begin("stop");
        checker->StopWatching();
        return model.Stop(Observed());
    }
    case 2: {
        const std::string path = operations.ChooseFolder(choices).string();
        Begin("folder changed " + path);
        checker->OnDirectoryChanged(QString::fromStdString(path));
        return model.OnDirectoryChanged(path, Observed());
    }
    case 3: {
        const std::string path = operations.ChooseFile(choices).string();
        Begin("file changed " + path);
        checker->OnFileChanged(QString::fromStdString(path));
        return model.OnFileChanged(path, Observed());
    }
    default: {
        Begin("check");
        ++passesDone;
        checker->CheckFolder();
        return model.CheckFolder(Observed());
    }
    }
}

/// Starts anew most of the time, and now and then while it is watching already.
std::string CheckerRun::Start(Choices& choices)
{
    if (addsToFilesOfBefore) {
        // A list that was added to is out of order, and what follows from that is not defined.
        Renew();
    } else if (!choices.OneIn(4)) {
        Begin("stop");
        checker->StopWatching();
        const std::string complaint = model.Stop(Observed());
        if (!complaint.empty())
            return complaint;
    }

    const bool isIdle = checker->GetWatchedDirPath().isEmpty();
    // The old start's predicate stays in use when the new one is refused.
    if (isIdle)
        ChoosePredicate(choices);
    const FolderModel::Settings settings = ChooseSettings(choices);
    Begin("start " + settings.dirPath + " depth " + std::to_string(settings.depth) + " predicate "
          + std::to_string(predicateKind) + " filters " + std::to_string(settings.nameFilters.size()));
    std::function<bool(const QFileInfo&)> filter;
    if (settings.filter) {
        filter = [this, kind = predicateKind](const QFileInfo& info) {
            const std::string path = info.filePath().toStdString();
            trace.push_back("Asked " + path);
            return Accepts(kind, generation, path, static_cast<std::uintmax_t>(info.size()));
        };
    }
    const bool hasStarted = checker->StartWatching(QString::fromStdString(settings.dirPath),
                                                   ToQt(settings.nameFilters), filter, settings.depth);
    if (hasStarted != isIdle)
        return isIdle ? "the start was refused" : "the start was not refused";
    addsToFilesOfBefore = isIdle && settings.dirPath.empty();
    return model.Start(settings, Observed());
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

void CheckerRun::Begin(const std::string& step)
{
    history.push_back("* " + step);
    trace.clear();
}

FolderModel::Observation CheckerRun::Observed() const
{
    FolderModel::Observation observation;
    observation.trace = trace;
    for (const QFileInfo& info : checker->GetFileInfoList())
        observation.files.push_back({info.filePath().toStdString(), info.lastModified().toMSecsSinceEpoch()});
    return observation;
}

void CheckerRun::Renew()
{
    history.push_back("* a new checker");
    model = FolderModel();
    addsToFilesOfBefore = false;
    checker = std::make_unique<DirectoryChecker>();
    const auto note = [this](const char* signal, const QString& path) {
        ++signalsSeen;
        trace.push_back(signal + path.toStdString());
    };
    const auto connect = [&](auto signal, auto slot) { QObject::connect(checker.get(), signal, slot); };
    connect(&DirectoryChecker::WatchingStarted, [=] { note("WatchingStarted", QString()); });
    connect(&DirectoryChecker::WatchingStopped, [=] { note("WatchingStopped", QString()); });
    connect(&DirectoryChecker::PathChanged, [=](const QString& path) { note("PathChanged ", path); });
    connect(&DirectoryChecker::FileAdded,
            [=](const QFileInfo& info) { note("FileAdded ", info.filePath()); });
    connect(&DirectoryChecker::FileRemoved,
            [=](const QFileInfo& info) { note("FileRemoved ", info.filePath()); });
    connect(&DirectoryChecker::FileChanged,
            [=](const QFileInfo& info) { note("FileChanged ", info.filePath()); });
}

} // namespace Tests
