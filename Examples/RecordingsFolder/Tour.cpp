#include "Examples/RecordingsFolder/Tour.h"

#include "Examples/RecordingsFolder/RecordingsWindow.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>
#include <QProcess>
#include <QTextStream>

namespace RecordingsFolder {

namespace {

/// On the folder's own disk, since a trash only takes what can be moved there. Beside a folder that is
/// missing and not in it: the first steps want to find it missing.
QString HomeOfTheTour(const QString& folder)
{
    const QFileInfo info(folder);
    const QString place = info.isDir() ? info.absoluteFilePath() : info.absolutePath();
    return place + QStringLiteral("/.home of the tour");
}

} // namespace

Tour::Tour(RecordingsWindow& recordingsWindow, const Options& commandLine)
    : window(recordingsWindow), options(commandLine), runner(commandLine.stepLimit)
{
    connect(&window.Follower(), &FolderFollower::Noticed, this, [this](const WatchEvent& event) {
        const bool aboutFile = !event.file.filePath().isEmpty();
        runner.Record(SignalName(event.kind), aboutFile ? NameOf(event.file.absoluteFilePath()) : event.path);
    });
    connect(&window.Files(), &FileActions::Notified, this,
            [this](const QString& notification, const QString& path) {
                runner.Record(notification, NameOf(path));
            });
}

int Tour::Run()
{
    OpenFolders();
    CaptureThree();
    LetOtherProgramWork(tr("by notices"));
    Poll();
    TrashAndDelete();
    Link();
    SaveScreenshot();
    Stop();
    if (runner.HasFailed())
        return 1;
    QTextStream(stdout) << tr("Every signal came. The recordings are in %1").arg(options.folder) << '\n';
    return 0;
}

void Tour::LeaveTheUsersHomeAlone(const QString& folder)
{
    const QString path = HomeOfTheTour(folder);
    // A home that does not exist has no disk, and then no trash.
    QDir().mkpath(path);
    const QByteArray home = QFile::encodeName(path);
    qputenv("HOME", home);
    qputenv("XDG_DATA_HOME", home + "/data");
    qputenv("XDG_CONFIG_HOME", home + "/config");
    qputenv("XDG_CACHE_HOME", home + "/cache");
}

void Tour::OpenFolders()
{
    const QString noFolder = QCoreApplication::applicationFilePath();
    runner.Step(tr("open something that is no folder"), [&] {
        runner.ExpectMessage();
        window.OpenFolder(noFolder);
        return QVector<StepRunner::Happening>();
    });
    const bool missing = !QFileInfo::exists(options.folder);
    runner.Step(missing ? tr("open a folder that is missing") : tr("open the folder"), [&] {
        window.OpenFolder(options.folder);
        return QVector<StepRunner::Happening>{{QStringLiteral("WatchingStarted"), {}}};
    });
    runner.Step(missing ? tr("prepare it, which makes it") : tr("prepare it"), [&] {
        QVector<StepRunner::Happening> awaited;
        if (window.Prepare() && missing)
            awaited = {{QStringLiteral("WatchingStopped"), {}}, {QStringLiteral("WatchingStarted"), {}}};
        return awaited;
    });
}

void Tour::CaptureThree()
{
    const bool wasEmpty = window.Follower().Files().isEmpty();
    CaptureOne();
    if (wasEmpty) {
        runner.Step(tr("watch again, for what came into an empty folder"), [] {
            return QVector<StepRunner::Happening>{{QStringLiteral("WatchingStopped"), {}},
                                                  {QStringLiteral("WatchingStarted"), {}}};
        });
    }
    CaptureOne();
    CaptureOne();
}

void Tour::LetOtherProgramWork(const QString& how)
{
    const QString path = UnusedPath(tr("By another program"));
    const auto step = [&](const QString& title, const QString& order, const QString& signal) {
        runner.Step(title, [&] {
            RunOtherProgram(order, path);
            return QVector<StepRunner::Happening>{{signal, NameOf(path)}};
        });
    };
    step(tr("another program adds a file, seen %1").arg(how), QStringLiteral("add"),
         QStringLiteral("FileAdded"));
    step(tr("it changes the file, seen %1").arg(how), QStringLiteral("change"),
         QStringLiteral("FileChanged"));
    step(tr("it deletes the file, seen %1").arg(how), QStringLiteral("delete"),
         QStringLiteral("FileRemoved"));
}

void Tour::Poll()
{
    runner.Step(tr("switch to polling"), [&] {
        window.SetInterval(200);
        window.SetWay(WatchSettings::Way::Polling);
        return QVector<StepRunner::Happening>{{QStringLiteral("WatchingStopped"), {}},
                                              {QStringLiteral("PathChanged"), options.folder},
                                              {QStringLiteral("WatchingStarted"), {}}};
    });
    LetOtherProgramWork(tr("by polling"));
    runner.Step(tr("switch back to notices"), [&] {
        window.SetWay(WatchSettings::Way::Notices);
        return QVector<StepRunner::Happening>{{QStringLiteral("WatchingStopped"), {}},
                                              {QStringLiteral("WatchingStarted"), {}}};
    });
}

void Tour::TrashAndDelete()
{
    const QString kept = lastCapture;
    CaptureOne();
    runner.Step(tr("move it to the trash"), [&] {
        window.Select(lastCapture);
        window.MoveSelectedToTrash();
        return QVector<StepRunner::Happening>{{QStringLiteral("OnFileMovedToTrash"), NameOf(lastCapture)},
                                              {QStringLiteral("FileRemoved"), NameOf(lastCapture)}};
    });
    CaptureOne();
    runner.Step(tr("delete it for good"), [&] {
        runner.ExpectMessage();
        window.Select(lastCapture);
        window.DeleteSelected();
        return QVector<StepRunner::Happening>{{QStringLiteral("OnFileRemoved"), NameOf(lastCapture)},
                                              {QStringLiteral("FileRemoved"), NameOf(lastCapture)}};
    });
    lastCapture = kept;
}

void Tour::Link()
{
    runner.Step(tr("link it under a temporary name"), [&] {
        runner.ExpectMessage();
        window.Select(lastCapture);
        window.OpenLink();
        if (QFileInfo(window.Links().value(0)).symLinkTarget() != lastCapture)
            runner.Fail(tr("there is no link to %1").arg(lastCapture));
        return QVector<StepRunner::Happening>();
    });
}

void Tour::SaveScreenshot()
{
    if (options.screenshot.isEmpty())
        return;
    runner.Step(tr("save a screenshot"), [&] {
        if (!runner.WaitUntil([&] { return window.Thumbnails().IsIdle(); }))
            runner.Fail(tr("the thumbnails were not ready in time"));
        else if (!window.grab().save(options.screenshot))
            runner.Fail(tr("%1 could not be written").arg(options.screenshot));
        runner.Note(options.screenshot);
        return QVector<StepRunner::Happening>();
    });
}

void Tour::Stop()
{
    runner.Step(tr("stop"), [&] {
        window.Follower().Stop();
        return QVector<StepRunner::Happening>{{QStringLiteral("WatchingStopped"), {}}};
    });
}

void Tour::CaptureOne()
{
    runner.Step(tr("capture"), [&] {
        lastCapture = window.Capture();
        return QVector<StepRunner::Happening>{{QStringLiteral("FileAdded"), NameOf(lastCapture)}};
    });
}

/// Events are handled while the other program runs, so that no signal waits for its end.
void Tour::RunOtherProgram(const QString& order, const QString& path)
{
    const QString program =
        options.otherProgram.isEmpty() ? QCoreApplication::applicationFilePath() : options.otherProgram;
    QProcess process;
    process.start(program, {QStringLiteral("--as-other-program"), order, path});
    if (!runner.WaitUntil([&] { return process.state() == QProcess::NotRunning; })) {
        process.kill();
        process.waitForFinished();
        runner.Fail(tr("%1 did not end in time").arg(program));
    } else if (process.error() == QProcess::FailedToStart || process.exitCode() != 0) {
        runner.Fail(tr("%1 could not %2 %3").arg(program, order, path));
    }
}

QString Tour::NameOf(const QString& path) const
{
    return QDir(options.folder).relativeFilePath(path);
}

QString Tour::UnusedPath(const QString& baseName) const
{
    const QDir dir(options.folder);
    QString name = baseName + QStringLiteral(".png");
    for (int number = 2; dir.exists(name); ++number)
        name = QStringLiteral("%1 %2.png").arg(baseName).arg(number);
    return dir.absoluteFilePath(name);
}

} // namespace RecordingsFolder
