#pragma once

#include "Tests/Tour/Options.h"
#include "Tests/Tour/StepRunner.h"

#include <QObject>

namespace RecordingsFolder {
class RecordingsWindow;
}

namespace RecordingsTour {

/// Plays a typical recording in the window, without a user.
class Tour : public QObject
{
    Q_OBJECT

public:
    /// @param recordingsWindow  must outlive the tour
    /// @param commandLine       its folder may be missing, empty or filled
    Tour(RecordingsFolder::RecordingsWindow& recordingsWindow, const Options& commandLine);

    /// Plays all steps, and prints a line for each. Runs the event loop meanwhile.
    /// @return the process's exit code: 0 if all signals were emitted
    int Run();

    /// Gives the process a home and a trash of its own, so that the tour leaves nothing in the user's.
    ///
    /// Call it before the QApplication is created: GLib reads the paths once a process.
    static void UseHomeBeside(const QString& folder);

private:
    void OpenFolders();
    void CaptureThree();
    /// @param mode  for the user: "by notices" or "by polling"
    void RunOtherProgramThrice(const QString& mode);
    void Poll();
    void TrashAndDelete();
    void CreateLink();
    void SaveScreenshot();
    void Stop();

    void CaptureOne();
    void RunOtherProgram(const QString& operation, const QString& path);
    QString NameOf(const QString& path) const;
    QString UnusedPath(const QString& baseName) const;

    RecordingsFolder::RecordingsWindow& window;
    const Options options;
    StepRunner runner;
    QString lastCapture;
};

} // namespace RecordingsTour
