#pragma once

#include "Examples/RecordingsFolder/FolderFollower.h"

#include <QTimer>
#include <QWidget>

class QAction;
class QComboBox;
class QLineEdit;
class QSpinBox;

namespace RecordingsFolder {

/// The fields above the list: which folder to watch, which files, and how.
class WatchSettingsForm : public QWidget
{
    Q_OBJECT

public:
    /// @param browse  the action of the button beside the folder
    explicit WatchSettingsForm(QAction* browse, QWidget* parent = nullptr);

    /// Shows the folder that is watched, in place of one that the user is typing.
    void SetFolder(const QString& path);
    void SetMode(WatchMode mode);
    void SetInterval(int milliseconds);

    /// The folder is the last one set, not one that the user is typing.
    WatchSettings Settings() const;

Q_SIGNALS:
    /// The user has typed the path of another folder.
    void FolderEntered(const QString& path);
    /// Filter, depth or mode have changed. It waits a moment for more changes, as the user may still be
    /// typing.
    void Changed();
    /// The time between two polls has changed.
    void IntervalChanged(int milliseconds);

private:
    void OnFolderEdited();

    QLineEdit* const folderBox;
    QLineEdit* const filterBox;
    QSpinBox* const depthBox;
    QComboBox* const modeBox;
    QSpinBox* const intervalBox;
    QString folder;
    QTimer changeTimer;
};

} // namespace RecordingsFolder
