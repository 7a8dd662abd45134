#pragma once

#include "Examples/RecordingsFolder/FileActions.h"
#include "Examples/RecordingsFolder/FolderFollower.h"
#include "Examples/RecordingsFolder/RecordingWriter.h"
#include "Examples/RecordingsFolder/RecordingsModel.h"
#include "Examples/RecordingsFolder/RecordingsOrder.h"
#include "Examples/RecordingsFolder/ThumbnailLoader.h"

#include <QMainWindow>
#include <QTimer>

class QAction;
class QBoxLayout;
class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QSpinBox;

namespace RecordingsFolder {

class LogPane;
class RecordingsView;

/// The window over a folder of recordings: shows them, follows what happens to them, makes new ones.
class RecordingsWindow : public QMainWindow
{
    Q_OBJECT

public:
    RecordingsWindow();
    /// Removes the links that OpenLink() made: nobody else would.
    ~RecordingsWindow() override;

    /// Shows another folder. One that exists and is unusable brings up an alert and is not taken; one that
    /// does not exist is taken, since Prepare() can make it.
    /// @return whether it was taken
    bool OpenFolder(const QString& path);
    /// Makes the folder if it is missing, and sees that it can be written to; alerts if not.
    bool Prepare();
    /// Writes a picture of the window as the next recording.
    /// @return the new file; empty when there is none, which the user has been told
    QString Capture();
    void Select(const QString& path);

    // The operations on what is selected.
    void RevealSelected();
    void MoveSelectedToTrash();
    /// Asks first.
    void DeleteSelected();
    /// Links the selected recording under a temporary name, and shows where.
    void OpenLink();

    void SetWay(WatchSettings::Way way);
    void SetInterval(int milliseconds);

    FolderFollower& Follower() { return follower; }
    FileActions& Files() { return fileActions; }
    const ThumbnailLoader& Thumbnails() const { return thumbnails; }
    const QStringList& Links() const { return links; }

private:
    void MakeActions();
    void MakeMenus();
    QWidget* MakeSettings();
    QWidget* MakeButtons();
    QWidget* MakeList();
    QWidget* MakeLog();
    void MakeStatus();
    void ConnectParts();

    void ChooseFolder();
    void Watch();
    void OnNoticed(const WatchEvent& event);
    void OnThumbnailProgress(int done, int wanted);
    void ShowCount();
    void ShowWhyEmpty();
    void EnableActions();
    void Tell(const QString& text);
    void TellFailed(const QString& text, const QStringList& paths);
    bool Ask(const QString& text);
    QString NameOf(const QString& path) const;

    FolderFollower follower;
    FileActions fileActions;
    RecordingWriter writer;
    RecordingsModel model;
    RecordingsOrder order;
    ThumbnailLoader thumbnails;
    QTimer settingsTimer; ///< lets the user finish typing before the watch starts again
    QString folder;       ///< the one that is shown; the box may hold one that is still being typed
    QStringList links;

    QLineEdit* folderBox = nullptr;
    QLineEdit* filterBox = nullptr;
    QSpinBox* depthBox = nullptr;
    QComboBox* wayBox = nullptr;
    QSpinBox* intervalBox = nullptr;
    RecordingsView* view = nullptr;
    LogPane* log = nullptr;
    QLabel* countLabel = nullptr;
    QProgressBar* progress = nullptr;

    QAction* chooseAction = nullptr;
    QAction* captureAction = nullptr;
    QAction* revealAction = nullptr;
    QAction* trashAction = nullptr;
    QAction* deleteAction = nullptr;
    QAction* linkAction = nullptr;
    QAction* quitAction = nullptr;
};

} // namespace RecordingsFolder
