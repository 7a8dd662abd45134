#include "Examples/RecordingsFolder/RecordingsWindow.h"

#include "Examples/RecordingsFolder/LinkFinder.h"
#include "Examples/RecordingsFolder/LogPane.h"
#include "Examples/RecordingsFolder/RecordingsView.h"
#include "Lib/Util/FS/DirectoryUtils.h"
#include "Util/AlertBox.h"

#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QProgressBar>
#include <QRegularExpression>
#include <QSpinBox>
#include <QSplitter>
#include <QStatusBar>
#include <QToolButton>
#include <QUrl>

namespace RecordingsFolder {

using Zendra::Util::AlertBox;

namespace {

/// "*.png; *.jpg" as the watchers take it. No blank parts two of them: blanks are usual in file names.
QStringList NameFilters(const QString& text)
{
    QStringList filters;
    const QStringList parts = text.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        if (!part.trimmed().isEmpty())
            filters.append(part.trimmed());
    }
    return filters;
}

QLabel* LabelFor(QWidget* box, const QString& text)
{
    auto* label = new QLabel(text);
    label->setBuddy(box);
    return label;
}

/// A long list would make an alert taller than the screen.
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
    MakeMenus();

    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    auto* splitter = new QSplitter(Qt::Vertical);
    column->addWidget(MakeSettings());
    column->addWidget(MakeButtons());
    column->addWidget(splitter, 1);
    splitter->addWidget(MakeList());
    splitter->addWidget(MakeLog());
    splitter->setStretchFactor(0, 1);
    splitter->setSizes({300, 160});
    splitter->setChildrenCollapsible(false);
    setCentralWidget(page);
    MakeStatus();

    ConnectParts();
    setWindowTitle(tr("Recordings"));
    resize(900, 680);
    view->setFocus();
    EnableActions();
    ShowWhyEmpty();
}

RecordingsWindow::~RecordingsWindow()
{
    // The view outlives the model by a moment, and would ask it.
    view->setModel(nullptr);
    for (const QString& link : qAsConst(links))
        QFile::remove(link);
}

bool RecordingsWindow::OpenFolder(const QString& path)
{
    const QString wanted = path.isEmpty() ? path : QDir::cleanPath(QDir().absoluteFilePath(path));
    if (QFileInfo::exists(wanted) && !Zendra::LW::CheckPathAndAnnoyUserIfInvalid(wanted, this)) {
        folderBox->setText(folder);
        return false;
    }
    folder = wanted;
    folderBox->setText(folder);
    setWindowTitle(tr("%1 - Recordings").arg(QDir::toNativeSeparators(folder)));
    Watch();
    return true;
}

bool RecordingsWindow::Prepare()
{
    // Nothing reports what happens in a folder that was missing when the watch began.
    const bool wasMissing = !QFileInfo::exists(folder);
    if (!Zendra::LW::PrepareFolder(folder, this))
        return false;
    if (wasMissing)
        Watch();
    return true;
}

QString RecordingsWindow::Capture()
{
    if (folder.isEmpty())
        ChooseFolder();
    if (folder.isEmpty() || !Prepare())
        return {};

    QBuffer png;
    png.open(QIODevice::WriteOnly);
    grab().save(&png, "PNG");
    const RecordingWriter::Result result = writer.Write(folder, png.data());
    if (!result.error.isEmpty())
        Tell(result.error);
    return result.path;
}

void RecordingsWindow::Select(const QString& path)
{
    const QModelIndex row = order.mapFromSource(model.IndexOf(path));
    view->setCurrentIndex(row);
    view->scrollTo(row);
}

void RecordingsWindow::RevealSelected()
{
    const QStringList failed = fileActions.Reveal(view->SelectedPaths());
    if (!failed.isEmpty())
        TellFailed(tr("No file browser could show:"), failed);
}

void RecordingsWindow::MoveSelectedToTrash()
{
    const QStringList failed = fileActions.MoveToTrash(view->SelectedPaths());
    if (!failed.isEmpty())
        TellFailed(tr("Could not be moved to the trash:"), failed);
}

void RecordingsWindow::DeleteSelected()
{
    const QStringList paths = view->SelectedPaths();
    const QString question =
        paths.size() == 1
            ? tr("Delete %1? There is no way to bring it back.").arg(Quoted(NameOf(paths.first())))
            : tr("Delete these %n recordings? There is no way to bring them back.", nullptr,
                 static_cast<int>(paths.size()));
    if (paths.isEmpty() || !Ask(question))
        return;
    const QStringList failed = fileActions.Delete(paths);
    if (!failed.isEmpty())
        TellFailed(tr("Could not be deleted:"), failed);
}

void RecordingsWindow::OpenLink()
{
    const QString path = view->SelectedPaths().value(0);
    if (path.isEmpty())
        return;
    const QString link = MakeTemporaryLink(path);
    if (link.isEmpty()) {
        TellFailed(tr("No link could be made to:"), {path});
        return;
    }
    links.append(link);
    log->Write(tr("Link %1 -> %2").arg(link, Quoted(NameOf(path))));
    AlertBox box(AlertBox::Level::Information, tr("A link"),
                 tr("The link to %1 is\n%2\nand stays until this window is closed. Open it?")
                     .arg(Quoted(NameOf(path)), link),
                 QMessageBox::Open | QMessageBox::Close, this, Qt::Dialog);
    if (box.Exec() == QMessageBox::Open)
        QDesktopServices::openUrl(QUrl::fromLocalFile(link));
}

void RecordingsWindow::SetWay(WatchSettings::Way way)
{
    wayBox->setCurrentIndex(wayBox->findData(int(way)));
}

void RecordingsWindow::SetInterval(int milliseconds)
{
    intervalBox->setValue(milliseconds);
}

void RecordingsWindow::MakeActions()
{
    const auto make = [this](const QString& text, const QString& help, const QList<QKeySequence>& keys) {
        auto* action = new QAction(text, this);
        // Buttons take this text, and without a letter of its own a button is out of the keyboard's quick
        // reach.
        action->setIconText(text);
        action->setStatusTip(help);
        action->setShortcuts(keys);
        QString toolTip = help;
        if (!keys.isEmpty())
            toolTip += QStringLiteral(" (%1)").arg(keys.first().toString(QKeySequence::NativeText));
        action->setToolTip(toolTip);
        return action;
    };
    chooseAction = make(tr("&Browse…"), tr("Choose the folder to show"), {QKeySequence::Open});
    captureAction =
        make(tr("&Capture"), tr("Save a picture of this window as the next recording"), {QKeySequence::New});
    revealAction =
        make(tr("R&eveal"), tr("Show the selected recordings in the file browser"), {tr("Ctrl+R")});
    trashAction =
        make(tr("Move to Tra&sh"), tr("Move the selected recordings to the trash"), {QKeySequence::Delete});
    deleteAction = make(tr("De&lete…"), tr("Delete the selected recordings for good"), {tr("Shift+Del")});
    linkAction =
        make(tr("Open a Lin&k…"), tr("Link the selected recording under a temporary name"), {tr("Ctrl+L")});
    quitAction = make(tr("&Quit"), tr("Close the window"), {QKeySequence::Quit});

    // In the boxes for text these keys delete text.
    for (QAction* action : {trashAction, deleteAction})
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);

    connect(chooseAction, &QAction::triggered, this, &RecordingsWindow::ChooseFolder);
    connect(captureAction, &QAction::triggered, this, &RecordingsWindow::Capture);
    connect(revealAction, &QAction::triggered, this, &RecordingsWindow::RevealSelected);
    connect(trashAction, &QAction::triggered, this, &RecordingsWindow::MoveSelectedToTrash);
    connect(deleteAction, &QAction::triggered, this, &RecordingsWindow::DeleteSelected);
    connect(linkAction, &QAction::triggered, this, &RecordingsWindow::OpenLink);
    connect(quitAction, &QAction::triggered, this, &QWidget::close);
}

void RecordingsWindow::MakeMenus()
{
    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->addAction(chooseAction);
    file->addAction(captureAction);
    file->addSeparator();
    file->addAction(quitAction);
    QMenu* recording = menuBar()->addMenu(tr("&Recording"));
    recording->addActions({revealAction, linkAction});
    recording->addSeparator();
    recording->addActions({trashAction, deleteAction});
}

QWidget* RecordingsWindow::MakeSettings()
{
    folderBox = new QLineEdit;
    folderBox->setPlaceholderText(tr("No folder is chosen"));
    auto* browse = new QToolButton;
    browse->setDefaultAction(chooseAction);
    browse->setFocusPolicy(Qt::StrongFocus);

    filterBox = new QLineEdit(QStringLiteral("*.png"));
    filterBox->setPlaceholderText(tr("every file"));
    filterBox->setToolTip(tr("Wildcards for file names, parted by semicolons: *.png; *.jpg"));
    filterBox->setClearButtonEnabled(true);
    depthBox = new QSpinBox;
    depthBox->setRange(0, 99);
    depthBox->setToolTip(tr("Levels of folders below this one to look into"));
    wayBox = new QComboBox;
    wayBox->addItem(tr("Notices of the system"), int(WatchSettings::Way::Notices));
    wayBox->addItem(tr("Polling"), int(WatchSettings::Way::Polling));
    wayBox->setToolTip(
        tr("Polling also sees replaced files, network folders and a folder that is made later"));
    intervalBox = new QSpinBox;
    intervalBox->setRange(50, 600000);
    intervalBox->setSingleStep(100);
    intervalBox->setSuffix(tr(" ms"));
    intervalBox->setValue(1000);
    intervalBox->setEnabled(false);
    intervalBox->setToolTip(tr("The time between two looks while polling"));

    auto* settings = new QWidget;
    auto* rows = new QVBoxLayout(settings);
    rows->setContentsMargins({});
    auto* first = new QHBoxLayout;
    first->addWidget(LabelFor(folderBox, tr("F&older:")));
    first->addWidget(folderBox, 1);
    first->addWidget(browse);
    rows->addLayout(first);
    auto* second = new QHBoxLayout;
    const auto add = [second](QWidget* box, const QString& label, int stretch) {
        second->addWidget(LabelFor(box, label));
        second->addWidget(box, stretch);
        second->addSpacing(12);
    };
    add(filterBox, tr("Fil&ter:"), 1);
    add(depthBox, tr("&Depth:"), 0);
    add(wayBox, tr("&Watch by:"), 0);
    add(intervalBox, tr("E&very:"), 0);
    rows->addLayout(second);
    return settings;
}

QWidget* RecordingsWindow::MakeButtons()
{
    auto* buttons = new QWidget;
    auto* row = new QHBoxLayout(buttons);
    row->setContentsMargins({});
    for (QAction* action : {captureAction, revealAction, trashAction, deleteAction, linkAction}) {
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
    order.setSourceModel(&model);
    view = new RecordingsView;
    view->setModel(&order);
    view->setAccessibleName(tr("Recordings"));
    // The newest on top, where the user looks for what was just recorded.
    view->sortByColumn(RecordingsModel::TimeColumn, Qt::DescendingOrder);
    view->header()->setSectionResizeMode(RecordingsModel::NameColumn, QHeaderView::Stretch);
    view->header()->resizeSection(RecordingsModel::SizeColumn, fontMetrics().averageCharWidth() * 14);
    view->header()->resizeSection(RecordingsModel::TimeColumn, fontMetrics().averageCharWidth() * 26);
    view->addActions({revealAction, linkAction, trashAction, deleteAction});
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

void RecordingsWindow::MakeStatus()
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
    connect(&follower, &FolderFollower::Noticed, this, &RecordingsWindow::OnNoticed);
    connect(&fileActions, &FileActions::Notified, this,
            [this](const QString& notification, const QString& path) {
                log->Write(notification + QLatin1Char(' ') + Quoted(NameOf(path)));
            });
    connect(&model, &RecordingsModel::ThumbnailNeeded, &thumbnails, &ThumbnailLoader::Load);
    connect(&thumbnails, &ThumbnailLoader::Loaded, &model, &RecordingsModel::SetThumbnail);
    connect(&thumbnails, &ThumbnailLoader::Progressed, this, &RecordingsWindow::OnThumbnailProgress);
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &RecordingsWindow::EnableActions);
    connect(&model, &QAbstractItemModel::modelReset, this, &RecordingsWindow::EnableActions);
    connect(view, &QAbstractItemView::activated, this, [](const QModelIndex& index) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(index.data(RecordingsModel::PathRole).toString()));
    });

    settingsTimer.setSingleShot(true);
    settingsTimer.setInterval(300);
    connect(&settingsTimer, &QTimer::timeout, this, &RecordingsWindow::Watch);
    const auto restartSoon = [this] { settingsTimer.start(); };
    connect(filterBox, &QLineEdit::textChanged, this, restartSoon);
    connect(depthBox, qOverload<int>(&QSpinBox::valueChanged), this, restartSoon);
    connect(wayBox, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] {
        intervalBox->setEnabled(wayBox->currentData() == int(WatchSettings::Way::Polling));
        Watch();
    });
    connect(intervalBox, qOverload<int>(&QSpinBox::valueChanged), &follower, &FolderFollower::SetInterval);
    connect(folderBox, &QLineEdit::editingFinished, this, [this] {
        // Also comes when the focus goes: an alert for a folder that was not touched would be in the way.
        if (folderBox->isModified()) {
            folderBox->setModified(false);
            OpenFolder(folderBox->text());
        }
    });
}

void RecordingsWindow::ChooseFolder()
{
    const QString chosen =
        QFileDialog::getExistingDirectory(this, tr("The folder of the recordings"), folder);
    if (!chosen.isEmpty())
        OpenFolder(chosen);
}

void RecordingsWindow::Watch()
{
    settingsTimer.stop();
    thumbnails.DropAll();
    follower.Follow({folder, NameFilters(filterBox->text()), unsigned(depthBox->value()),
                     WatchSettings::Way(wayBox->currentData().toInt())});
    if (folder.isEmpty())
        model.Reset({}, {});
    ShowCount();
    ShowWhyEmpty();
}

void RecordingsWindow::OnNoticed(const WatchEvent& event)
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
        model.Reset(folder, follower.Files());
        break;
    case WatchEvent::Kind::WatchingStopped:
        break;
    }
    log->Write(line);
    model.Apply(event);
    ShowCount();
    ShowWhyEmpty();
}

void RecordingsWindow::OnThumbnailProgress(int done, int wanted)
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
    if (folder.isEmpty())
        view->SetEmptyText(tr("Choose a folder to see its recordings here."));
    else if (!QFileInfo::exists(folder))
        view->SetEmptyText(tr("This folder does not exist yet. Capture (%1) makes it.").arg(keys));
    else if (filters.isEmpty())
        view->SetEmptyText(tr("This folder is empty. Capture (%1) makes the first recording.").arg(keys));
    else
        view->SetEmptyText(tr("No file here matches the filter %1. Capture (%2) makes a recording.")
                               .arg(filters.join(QStringLiteral("; ")), keys));
}

void RecordingsWindow::EnableActions()
{
    const auto selected = view->SelectedPaths().size();
    for (QAction* action : {revealAction, trashAction, deleteAction})
        action->setEnabled(selected > 0);
    linkAction->setEnabled(selected == 1);
}

void RecordingsWindow::Tell(const QString& text)
{
    AlertBox(AlertBox::Level::Warning, windowTitle(), text, QMessageBox::Ok, this, Qt::Dialog).Exec();
}

void RecordingsWindow::TellFailed(const QString& text, const QStringList& paths)
{
    Tell(text + QLatin1Char('\n') + FirstFew(paths));
}

bool RecordingsWindow::Ask(const QString& text)
{
    AlertBox box(AlertBox::Level::Question, windowTitle(), text, QMessageBox::Yes | QMessageBox::Cancel, this,
                 Qt::Dialog);
    return box.Exec() == QMessageBox::Yes;
}

QString RecordingsWindow::NameOf(const QString& path) const
{
    return QDir(folder).relativeFilePath(path);
}

} // namespace RecordingsFolder
