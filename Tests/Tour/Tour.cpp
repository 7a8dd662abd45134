#include "Tests/Tour/Tour.h"

#include "Examples/RecordingsFolder/RecordingsWindow.h"
#include "Examples/RecordingsFolder/WatchSettingsForm.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>
#include <QProcess>
#include <QTextStream>

namespace RecordingsTour {

using RecordingsFolder::FileActions;
using RecordingsFolder::FolderFollower;
using RecordingsFolder::RecordingsWindow;
using RecordingsFolder::WatchEvent;
using RecordingsFolder::WatchMode;

namespace {

/// On the same disk as the folder, since files cannot be moved to a trash on another one. Beside a missing
/// folder and not in it, as the first steps need it missing.
QString HomeOfTour(const QString& folder)
{
    const QFileInfo info(folder);
    const QString parent = info.isDir() ? info.absoluteFilePath() : info.absolutePath();
    return parent + QStringLiteral("/.home of the tour");
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
    RunOtherProgramThrice(QStringLiteral("by notices"));
    Poll();
    TrashAndDelete();
    CreateLink();
    SaveScreenshot();
    Stop();
    if (runner.HasFailed())
        return 1;
    QTextStream(stdout)
        << QStringLiteral("All signals were emitted. The recordings are in %1").arg(options.folder) << '\n';
    return 0;
}

void Tour::UseHomeBeside(const QString& folder)
{
    const QString path = HomeOfTour(folder);
    // A missing home is on no disk, so it has no trash.
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
    runner.Step(QStringLiteral("open a file instead of a folder"), [&] {
        runner.ExpectMessage();
        window.OpenFolder(noFolder);
        return QVector<StepRunner::Event>();
    });
    const bool missing = !QFileInfo::exists(options.folder);
    runner.Step(missing ? QStringLiteral("open a missing folder") : QStringLiteral("open the folder"), [&] {
        window.OpenFolder(options.folder);
        return QVector<StepRunner::Event>{{QStringLiteral("WatchingStarted"), {}}};
    });
    runner.Step(missing ? QStringLiteral("prepare it, which creates it") : QStringLiteral("prepare it"), [&] {
        QVector<StepRunner::Event> expected;
        if (window.Prepare() && missing)
            expected = {{QStringLiteral("WatchingStopped"), {}}, {QStringLiteral("WatchingStarted"), {}}};
        return expected;
    });
}

void Tour::CaptureThree()
{
    const bool wasEmpty = window.Follower().Files().isEmpty();
    CaptureOne();
    if (wasEmpty) {
        runner.Step(QStringLiteral("watch again, as the folder was empty"), [] {
            return QVector<StepRunner::Event>{{QStringLiteral("WatchingStopped"), {}},
                                              {QStringLiteral("WatchingStarted"), {}}};
        });
    }
    CaptureOne();
    CaptureOne();
}

void Tour::RunOtherProgramThrice(const QString& mode)
{
    const QString path = UnusedPath(QStringLiteral("By another program"));
    const auto step = [&](const QString& title, const QString& operation, const QString& signal) {
        runner.Step(title, [&] {
            RunOtherProgram(operation, path);
            return QVector<StepRunner::Event>{{signal, NameOf(path)}};
        });
    };
    step(QStringLiteral("another program adds a file, seen %1").arg(mode), QStringLiteral("add"),
         QStringLiteral("FileAdded"));
    step(QStringLiteral("it changes the file, seen %1").arg(mode), QStringLiteral("change"),
         QStringLiteral("FileChanged"));
    step(QStringLiteral("it deletes the file, seen %1").arg(mode), QStringLiteral("delete"),
         QStringLiteral("FileRemoved"));
}

void Tour::Poll()
{
    runner.Step(QStringLiteral("switch to polling"), [&] {
        window.Settings().SetInterval(200);
        window.Settings().SetMode(WatchMode::Polling);
        return QVector<StepRunner::Event>{{QStringLiteral("WatchingStopped"), {}},
                                          {QStringLiteral("PathChanged"), options.folder},
                                          {QStringLiteral("WatchingStarted"), {}}};
    });
    RunOtherProgramThrice(QStringLiteral("by polling"));
    runner.Step(QStringLiteral("switch back to notices"), [&] {
        window.Settings().SetInterval(1000);
        window.Settings().SetMode(WatchMode::Notices);
        return QVector<StepRunner::Event>{{QStringLiteral("WatchingStopped"), {}},
                                          {QStringLiteral("WatchingStarted"), {}}};
    });
}

void Tour::TrashAndDelete()
{
    const QString kept = lastCapture;
    CaptureOne();
    runner.Step(QStringLiteral("move it to the trash"), [&] {
        window.Select(lastCapture);
        window.MoveSelectedToTrash();
        return QVector<StepRunner::Event>{{QStringLiteral("OnFileMovedToTrash"), NameOf(lastCapture)},
                                          {QStringLiteral("FileRemoved"), NameOf(lastCapture)}};
    });
    CaptureOne();
    runner.Step(QStringLiteral("delete it permanently"), [&] {
        runner.ExpectMessage();
        window.Select(lastCapture);
        window.DeleteSelected();
        return QVector<StepRunner::Event>{{QStringLiteral("OnFileRemoved"), NameOf(lastCapture)},
                                          {QStringLiteral("FileRemoved"), NameOf(lastCapture)}};
    });
    lastCapture = kept;
}

void Tour::CreateLink()
{
    runner.Step(QStringLiteral("create a temporary link to it"), [&] {
        runner.ExpectMessage();
        window.Select(lastCapture);
        window.CreateLink();
        if (QFileInfo(window.Links().value(0)).symLinkTarget() != lastCapture)
            runner.Fail(QStringLiteral("there is no link to %1").arg(lastCapture));
        return QVector<StepRunner::Event>();
    });
}

void Tour::SaveScreenshot()
{
    if (options.screenshot.isEmpty())
        return;
    runner.Step(QStringLiteral("save a screenshot"), [&] {
        if (!runner.WaitUntil([&] { return window.Thumbnails().IsIdle(); }))
            runner.Fail(QStringLiteral("the thumbnails were not ready in time"));
        else if (!window.grab().save(options.screenshot))
            runner.Fail(QStringLiteral("%1 could not be written").arg(options.screenshot));
        runner.Note(options.screenshot);
        return QVector<StepRunner::Event>();
    });
}

void Tour::Stop()
{
    runner.Step(QStringLiteral("stop"), [&] {
        window.Follower().Stop();
        return QVector<StepRunner::Event>{{QStringLiteral("WatchingStopped"), {}}};
    });
}

void Tour::CaptureOne()
{
    runner.Step(QStringLiteral("capture"), [&] {
        lastCapture = window.Capture();
        return QVector<StepRunner::Event>{{QStringLiteral("FileAdded"), NameOf(lastCapture)}};
    });
}

/// Runs the event loop meanwhile, so that signals are handled at once.
void Tour::RunOtherProgram(const QString& operation, const QString& path)
{
    const QString program =
        options.otherProgram.isEmpty() ? QCoreApplication::applicationFilePath() : options.otherProgram;
    QProcess process;
    process.start(program, {QStringLiteral("--as-other-program"), operation, path});
    if (!runner.WaitUntil([&] { return process.state() == QProcess::NotRunning; })) {
        process.kill();
        process.waitForFinished();
        runner.Fail(QStringLiteral("%1 did not end in time").arg(program));
    } else if (process.error() == QProcess::FailedToStart || process.exitCode() != 0) {
        runner.Fail(QStringLiteral("%1 could not %2 %3").arg(program, operation, path));
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

} // namespace RecordingsTour
