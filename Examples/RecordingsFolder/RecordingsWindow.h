#pragma once

#include "Examples/RecordingsFolder/FileActions.h"
#include "Examples/RecordingsFolder/FolderFollower.h"
#include "Examples/RecordingsFolder/RecordingWriter.h"
#include "Examples/RecordingsFolder/RecordingsModel.h"
#include "Examples/RecordingsFolder/ThumbnailLoader.h"

#include <QMainWindow>

class QAction;
class QLabel;
class QProgressBar;

namespace RecordingsFolder {

class LogPane;
class RecordingsView;
class WatchSettingsForm;

/// A window that shows the recordings in a folder, keeps the list up to date, and creates new recordings.
class RecordingsWindow : public QMainWindow
{
    Q_OBJECT

public:
    RecordingsWindow();
    /// Removes the links that CreateLink() created.
    ~RecordingsWindow() override;

    /// Shows another folder. It may be missing, as Prepare() can create it.
    /// @return false if it exists and is unusable; an alert has told the user why
    bool OpenFolder(const QString& path);
    /// Creates the folder if it is missing, and checks that it can be written to; shows an alert if not.
    bool Prepare();
    /// Writes a picture of the window as the next recording.
    /// @return the new file; empty when there is none, and an alert has told the user why
    QString Capture();
    void Select(const QString& path);

    // Operations on the selected recordings
    void RevealSelected();
    void MoveSelectedToTrash();
    /// Asks the user first.
    void DeleteSelected();
    /// Creates a temporary link to the selected recording, and offers to open it.
    void CreateLink();

    WatchSettingsForm& Settings() { return *settings; }
    FolderFollower& Follower() { return follower; }
    FileActions& Files() { return fileActions; }
    const ThumbnailLoader& Thumbnails() const { return thumbnails; }
    const QStringList& Links() const { return links; }

private:
    QAction* MakeAction(const QString& text, const QString& help, const QList<QKeySequence>& keys);
    void MakeActions();
    QWidget* MakeButtons();
    QWidget* MakeList();
    QWidget* MakeLog();
    void MakeStatusBar();
    void ConnectParts();

    void ChooseFolder();
    void Watch();
    void OnWatchEvent(const WatchEvent& event);
    void ShowProgress(int done, int wanted);
    void ShowCount();
    void ShowWhyEmpty();
    void EnableActions();
    void Warn(const QString& text);
    void WarnOfFailure(const QString& text, const QStringList& paths);
    bool Ask(const QString& question);
    /// The folder that is shown; empty when there is none.
    const QString& Folder() const { return follower.Settings().folder; }
    QString NameOf(const QString& path) const;

    FolderFollower follower;
    FileActions fileActions;
    RecordingWriter writer;
    RecordingsModel model;
    RecordingsSortModel sortModel;
    ThumbnailLoader thumbnails;
    QStringList links;

    QAction* chooseAction = nullptr;
    QAction* captureAction = nullptr;
    QAction* linkAction = nullptr;
    QList<QAction*> selectionActions; ///< those for the selected recordings, linkAction included

    WatchSettingsForm* settings = nullptr;
    RecordingsView* view = nullptr;
    LogPane* log = nullptr;
    QLabel* countLabel = nullptr;
    QProgressBar* progress = nullptr;
};

} // namespace RecordingsFolder
