#include "Examples/RecordingsFolder/RecordingsWindow.h"

#include "Examples/RecordingsFolder/LogPane.h"
#include "Examples/RecordingsFolder/RecordingsView.h"
#include "Examples/RecordingsFolder/WatchSettingsForm.h"
#include "Lib/Util/FS/DirectoryUtils.h"
#include "Util/AlertBox.h"

#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QProgressBar>
#include <QSplitter>
#include <QStatusBar>
#include <QToolButton>
#include <QUrl>

namespace RecordingsFolder {

using Zendra::Util::AlertBox;

namespace {

QLabel* LabelFor(QWidget* box, const QString& text)
{
    auto* label = new QLabel(text);
    label->setBuddy(box);
    return label;
}

/// Shortens the list, or the alert might be taller than the screen.
QString FirstFew(const QStringList& lines)
{
    constexpr int most = 10;
    QStringList shown = lines.mid(0, most);
    if (lines.size() > most)
        shown.append(QStringLiteral("…"));
    return shown.join(QLatin1Char('\n'));
}

} // namespace

RecordingsWindow::RecordingsWindow() : thumbnails(RecordingsView::ThumbnailSize(), devicePixelRatioF())
{
    MakeActions();
    settings = new WatchSettingsForm(chooseAction);

    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    auto* splitter = new QSplitter(Qt::Vertical);
    column->addWidget(settings);
    column->addWidget(MakeButtons());
    column->addWidget(splitter, 1);
    splitter->addWidget(MakeList());
    splitter->addWidget(MakeLog());
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({300, 160});
    splitter->setChildrenCollapsible(false);
    setCentralWidget(page);
    MakeStatusBar();

    ConnectParts();
    setWindowTitle(tr("Recordings"));
    resize(900, 680);
    view->setFocus();
    EnableActions();
    ShowWhyEmpty();
}

RecordingsWindow::~RecordingsWindow()
{
    // The view is destroyed after the model and would still call it.
    view->setModel(nullptr);
    for (const QString& link : qAsConst(links))
        QFile::remove(link);
}

bool RecordingsWindow::OpenFolder(const QString& path)
{
    const QString wanted = path.isEmpty() ? path : QDir::cleanPath(QDir().absoluteFilePath(path));
    if (QFileInfo::exists(wanted) && !Zendra::LW::CheckPathAndAnnoyUserIfInvalid(wanted, this)) {
        settings->SetFolder(Folder());
        return false;
    }
    settings->SetFolder(wanted);
    setWindowTitle(tr("%1 - Recordings").arg(QDir::toNativeSeparators(wanted)));
    Watch();
    return true;
}

bool RecordingsWindow::Prepare()
{
    // A DirectoryWatcher never sees a folder that was missing at its start, so watching has to start again.
    const bool wasMissing = !QFileInfo::exists(Folder());
    if (!Zendra::LW::PrepareFolder(Folder(), this))
        return false;
    if (wasMissing)
        Watch();
    return true;
}

QString RecordingsWindow::Capture()
{
    if (Folder().isEmpty())
        ChooseFolder();
    if (Folder().isEmpty() || !Prepare())
        return {};

    QBuffer png;
    png.open(QIODevice::WriteOnly);
    grab().save(&png, "PNG");
    const RecordingWriter::Result result = writer.Write(Folder(), png.data());
    if (!result.error.isEmpty())
        Warn(result.error);
    return result.path;
}

void RecordingsWindow::Select(const QString& path)
{
    const QModelIndex row = sortModel.mapFromSource(model.IndexOf(path));
    view->setCurrentIndex(row);
    view->scrollTo(row);
}

void RecordingsWindow::RevealSelected()
{
    const QStringList failed = fileActions.Reveal(view->SelectedPaths());
    if (!failed.isEmpty())
        WarnOfFailure(tr("The file browser could not show:"), failed);
}

void RecordingsWindow::MoveSelectedToTrash()
{
    const QStringList failed = fileActions.MoveToTrash(view->SelectedPaths());
    if (!failed.isEmpty())
        WarnOfFailure(tr("Could not move to the trash:"), failed);
}

void RecordingsWindow::DeleteSelected()
{
    const QStringList paths = view->SelectedPaths();
    const QString question = paths.size() == 1
                                 ? tr("Delete %1? This cannot be undone.").arg(Quoted(NameOf(paths.first())))
                                 : tr("Delete these %n recordings? This cannot be undone.", nullptr,
                                      static_cast<int>(paths.size()));
    if (paths.isEmpty() || !Ask(question))
        return;
    const QStringList failed = fileActions.Delete(paths);
    if (!failed.isEmpty())
        WarnOfFailure(tr("Could not delete:"), failed);
}

void RecordingsWindow::CreateLink()
{
    const QString path = view->SelectedPaths().value(0);
    if (path.isEmpty())
        return;
    const QString link = MakeTemporaryLink(path);
    if (link.isEmpty()) {
        WarnOfFailure(tr("Could not create a link to:"), {path});
        return;
    }
    links.append(link);
    log->Write(tr("Link %1 -> %2").arg(link, Quoted(NameOf(path))));
    AlertBox box(AlertBox::Level::Information, tr("Temporary Link"),
                 tr("The link to %1 is:\n%2\nIt will be removed when this window is closed. Open it now?")
                     .arg(Quoted(NameOf(path)), link),
                 QMessageBox::Open | QMessageBox::Close, this, Qt::Dialog);
    if (box.Exec() == QMessageBox::Open)
        QDesktopServices::openUrl(QUrl::fromLocalFile(link));
}

QAction* RecordingsWindow::MakeAction(const QString& text, const QString& help,
                                      const QList<QKeySequence>& keys)
{
    auto* action = new QAction(text, this);
    // The text of the buttons. By default it has no mnemonic.
    action->setIconText(text);
    action->setStatusTip(help);
    action->setShortcuts(keys);
    QString toolTip = help;
    if (!keys.isEmpty())
        toolTip += QStringLiteral(" (%1)").arg(keys.first().toString(QKeySequence::NativeText));
    action->setToolTip(toolTip);
    return action;
}

void RecordingsWindow::MakeActions()
{
    chooseAction = MakeAction(tr("&Browse…"), tr("Choose the folder to show"), {QKeySequence::Open});
    captureAction = MakeAction(tr("&Capture"), tr("Save a picture of this window as the next recording"),
                               {QKeySequence::New});
    auto* revealAction =
        MakeAction(tr("R&eveal"), tr("Show the selected recordings in the file browser"), {tr("Ctrl+R")});
    auto* trashAction = MakeAction(tr("Move to Tra&sh"), tr("Move the selected recordings to the trash"),
                                   {QKeySequence::Delete});
    auto* deleteAction =
        MakeAction(tr("De&lete…"), tr("Permanently delete the selected recordings"), {tr("Shift+Del")});
    linkAction = MakeAction(tr("Create Lin&k…"), tr("Create a temporary link to the selected recording"),
                            {tr("Ctrl+L")});
    auto* quitAction = MakeAction(tr("&Quit"), tr("Close the window"), {QKeySequence::Quit});
    selectionActions = {revealAction, trashAction, deleteAction, linkAction};

    // In text fields these keys delete text.
    for (QAction* action : {trashAction, deleteAction})
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);

    connect(chooseAction, &QAction::triggered, this, &RecordingsWindow::ChooseFolder);
    connect(captureAction, &QAction::triggered, this, &RecordingsWindow::Capture);
    connect(revealAction, &QAction::triggered, this, &RecordingsWindow::RevealSelected);
    connect(trashAction, &QAction::triggered, this, &RecordingsWindow::MoveSelectedToTrash);
    connect(deleteAction, &QAction::triggered, this, &RecordingsWindow::DeleteSelected);
    connect(linkAction, &QAction::triggered, this, &RecordingsWindow::CreateLink);
    connect(quitAction, &QAction::triggered, this, &QWidget::close);

    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->addActions({chooseAction, captureAction});
    file->addSeparator();
    file->addAction(quitAction);
    menuBar()->addMenu(tr("&Recording"))->addActions(selectionActions);
}

QWidget* RecordingsWindow::MakeButtons()
{
    auto* buttons = new QWidget;
    auto* row = new QHBoxLayout(buttons);
    row->setContentsMargins({});
    const QList<QAction*> actions = QList<QAction*>{captureAction} + selectionActions;
    for (QAction* action : actions) {
        auto* button = new QToolButton;
        button->setDefaultAction(action);
        button->setFocusPolicy(Qt::StrongFocus);
        button->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
        row->addWidget(button);
    }
    row->addStretch(1);
    return buttons;
}

QWidget* RecordingsWindow::MakeList()
{
    sortModel.setSourceModel(&model);
    view = new RecordingsView;
    view->setModel(&sortModel);
    view->setAccessibleName(tr("Recordings"));
    // The newest first: users look for what they have just recorded.
    view->sortByColumn(RecordingsModel::TimeColumn, Qt::DescendingOrder);
    view->header()->setSectionResizeMode(RecordingsModel::NameColumn, QHeaderView::Stretch);
    view->header()->resizeSection(RecordingsModel::SizeColumn, fontMetrics().averageCharWidth() * 14);
    view->header()->resizeSection(RecordingsModel::TimeColumn, fontMetrics().averageCharWidth() * 26);
    view->addActions(selectionActions);
    view->setContextMenuPolicy(Qt::ActionsContextMenu);

    auto* part = new QWidget;
    auto* column = new QVBoxLayout(part);
    column->setContentsMargins({});
    column->addWidget(LabelFor(view, tr("Recordi&ngs:")));
    column->addWidget(view);
    return part;
}

QWidget* RecordingsWindow::MakeLog()
{
    log = new LogPane;
    log->setAccessibleName(tr("Signals"));

    auto* part = new QWidget;
    auto* column = new QVBoxLayout(part);
    column->setContentsMargins({});
    column->addWidget(LabelFor(log, tr("Si&gnals:")));
    column->addWidget(log);
    return part;
}

void RecordingsWindow::MakeStatusBar()
{
    countLabel = new QLabel;
    progress = new QProgressBar;
    progress->setFormat(tr("Thumbnails: %v of %m"));
    progress->setAccessibleName(tr("Thumbnails"));
    progress->hide();
    statusBar()->addPermanentWidget(progress);
    statusBar()->addPermanentWidget(countLabel);
}

void RecordingsWindow::ConnectParts()
{
    connect(&follower, &FolderFollower::Noticed, this, &RecordingsWindow::OnWatchEvent);
    connect(&fileActions, &FileActions::Notified, this,
            [this](const QString& notification, const QString& path) {
                log->Write(notification + QLatin1Char(' ') + Quoted(NameOf(path)));
            });
    connect(&model, &RecordingsModel::ThumbnailNeeded, &thumbnails, &ThumbnailLoader::Load);
    connect(&thumbnails, &ThumbnailLoader::Loaded, &model, &RecordingsModel::SetThumbnail);
    connect(&thumbnails, &ThumbnailLoader::Progressed, this, &RecordingsWindow::ShowProgress);
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &RecordingsWindow::EnableActions);
    connect(&model, &QAbstractItemModel::modelReset, this, &RecordingsWindow::EnableActions);
    connect(view, &QAbstractItemView::activated, this, [](const QModelIndex& index) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(index.data(RecordingsModel::PathRole).toString()));
    });

    connect(settings, &WatchSettingsForm::FolderEntered, this, &RecordingsWindow::OpenFolder);
    connect(settings, &WatchSettingsForm::Changed, this, &RecordingsWindow::Watch);
    connect(settings, &WatchSettingsForm::IntervalChanged, &follower, &FolderFollower::SetInterval);
}

void RecordingsWindow::ChooseFolder()
{
    const QString chosen =
        QFileDialog::getExistingDirectory(this, tr("Choose a Folder of Recordings"), Folder());
    if (!chosen.isEmpty())
        OpenFolder(chosen);
}

void RecordingsWindow::Watch()
{
    thumbnails.DropAll();
    follower.Follow(settings->Settings());
    if (Folder().isEmpty())
        model.Reset({}, {});
    ShowCount();
    ShowWhyEmpty();
}

void RecordingsWindow::OnWatchEvent(const WatchEvent& event)
{
    QString line = SignalName(event.kind);
    switch (event.kind) {
    case WatchEvent::Kind::FileAdded:
    case WatchEvent::Kind::FileChanged:
    case WatchEvent::Kind::FileRemoved:
        line += QLatin1Char(' ') + Quoted(NameOf(event.file.absoluteFilePath()));
        break;
    case WatchEvent::Kind::PathChanged:
        line += QLatin1Char(' ') + Quoted(event.path);
        break;
    case WatchEvent::Kind::WatchingStarted:
        model.Reset(Folder(), follower.Files());
        break;
    case WatchEvent::Kind::WatchingStopped:
        break;
    }
    log->Write(line);
    model.Apply(event);
    ShowCount();
    ShowWhyEmpty();
}

void RecordingsWindow::ShowProgress(int done, int wanted)
{
    progress->setVisible(wanted > 0);
    progress->setMaximum(wanted);
    progress->setValue(done);
}

void RecordingsWindow::ShowCount()
{
    const int count = model.rowCount();
    countLabel->setText(tr("%1, %2").arg(count == 1 ? tr("1 recording") : tr("%n recordings", nullptr, count),
                                         QLocale().formattedDataSize(model.TotalSize())));
}

void RecordingsWindow::ShowWhyEmpty()
{
    if (model.rowCount() > 0) {
        view->SetEmptyText({});
        return;
    }
    const QStringList& filters = follower.Settings().nameFilters;
    const QString keys = captureAction->shortcut().toString(QKeySequence::NativeText);
    if (Folder().isEmpty())
        view->SetEmptyText(tr("Choose a folder to see its recordings here."));
    else if (!QFileInfo::exists(Folder()))
        view->SetEmptyText(tr("This folder does not exist yet. Capture (%1) creates it.").arg(keys));
    else if (filters.isEmpty())
        view->SetEmptyText(tr("This folder is empty. Capture (%1) creates the first recording.").arg(keys));
    else
        view->SetEmptyText(tr("No file here matches the filter %1. Capture (%2) creates a recording.")
                               .arg(filters.join(QStringLiteral("; ")), keys));
}

void RecordingsWindow::EnableActions()
{
    const auto selected = view->SelectedPaths().size();
    for (QAction* action : qAsConst(selectionActions))
        action->setEnabled(selected > 0);
    linkAction->setEnabled(selected == 1);
}

void RecordingsWindow::Warn(const QString& text)
{
    AlertBox(AlertBox::Level::Warning, windowTitle(), text, QMessageBox::Ok, this, Qt::Dialog).Exec();
}

void RecordingsWindow::WarnOfFailure(const QString& text, const QStringList& paths)
{
    Warn(text + QLatin1Char('\n') + FirstFew(paths));
}

bool RecordingsWindow::Ask(const QString& question)
{
    AlertBox box(AlertBox::Level::Question, windowTitle(), question, QMessageBox::Yes | QMessageBox::Cancel,
                 this, Qt::Dialog);
    return box.Exec() == QMessageBox::Yes;
}

QString RecordingsWindow::NameOf(const QString& path) const
{
    return QDir(Folder()).relativeFilePath(path);
}

} // namespace RecordingsFolder
