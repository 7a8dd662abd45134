#pragma once

#include "Examples/RecordingsFolder/Options.h"
#include "Examples/RecordingsFolder/StepRunner.h"

#include <QObject>

namespace RecordingsFolder {

class RecordingsWindow;

/// Plays a typical recording in the window, by itself and step by step.
class Tour : public QObject
{
    Q_OBJECT

public:
    /// @param recordingsWindow  outlives the tour
    /// @param commandLine       names the folder; a missing, an empty and a filled one are all right
    Tour(RecordingsWindow& recordingsWindow, const Options& commandLine);

    /// Plays it all, with one line on standard output a step; handles events meanwhile.
    /// @return the process's exit code: 0 when every signal came
    int Run();

    /// Gives the process a home and a trash of its own, so that the tour leaves nothing in the user's.
    ///
    /// Call it before there is a QApplication: the places are looked up once in a process.
    static void LeaveTheUsersHomeAlone(const QString& folder);

private:
    void OpenFolders();
    void CaptureThree();
    /// @param how  by which the watcher finds out, for the user
    void LetOtherProgramWork(const QString& how);
    void Poll();
    void TrashAndDelete();
    void Link();
    void SaveScreenshot();
    void Stop();

    void CaptureOne();
    void RunOtherProgram(const QString& order, const QString& path);
    QString NameOf(const QString& path) const;
    QString UnusedPath(const QString& baseName) const;

    RecordingsWindow& window;
    const Options options;
    StepRunner runner;
    QString lastCapture;
};

} // namespace RecordingsFolder
