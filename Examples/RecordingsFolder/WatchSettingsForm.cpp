#include "Examples/RecordingsFolder/WatchSettingsForm.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QToolButton>

namespace RecordingsFolder {

namespace {

/// "*.mp4; *.png" as a list. Separated by semicolons, since file names often contain spaces.
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

} // namespace

WatchSettingsForm::WatchSettingsForm(QAction* browse, QWidget* parent)
    : QWidget(parent), folderBox(new QLineEdit), filterBox(new QLineEdit), depthBox(new QSpinBox),
      modeBox(new QComboBox), intervalBox(new QSpinBox)
{
    folderBox->setPlaceholderText(tr("No folder selected"));
    auto* browseButton = new QToolButton;
    browseButton->setDefaultAction(browse);
    browseButton->setFocusPolicy(Qt::StrongFocus);
    filterBox->setText(QStringLiteral("*.mp4; *.mov; *.mkv; *.webm; *.png"));
    filterBox->setPlaceholderText(tr("All files"));
    filterBox->setToolTip(tr("Wildcards for file names, separated by semicolons: *.mp4; *.png"));
    filterBox->setClearButtonEnabled(true);
    depthBox->setRange(0, 99);
    depthBox->setToolTip(tr("Number of subfolder levels to include"));
    modeBox->addItem(tr("System notifications"), int(WatchMode::Notices));
    modeBox->addItem(tr("Polling"), int(WatchMode::Polling));
    modeBox->setToolTip(tr("Polling also detects replaced files, changes in network folders, and a folder "
                           "that is created later"));
    intervalBox->setRange(50, 600000);
    intervalBox->setSingleStep(100);
    intervalBox->setSuffix(tr(" ms"));
    intervalBox->setValue(1000);
    intervalBox->setEnabled(false);
    intervalBox->setToolTip(tr("Time between two polls"));

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins({});
    const auto addRow = [rows] {
        auto* row = new QHBoxLayout;
        rows->addLayout(row);
        return row;
    };
    const auto add = [](QHBoxLayout* row, QWidget* box, const QString& label, int stretch) {
        row->addWidget(LabelFor(box, label));
        row->addWidget(box, stretch);
    };
    auto* where = addRow();
    add(where, folderBox, tr("F&older:"), 1);
    where->addWidget(browseButton);
    auto* which = addRow();
    add(which, filterBox, tr("Fil&ter:"), 1);
    add(which, depthBox, tr("&Depth:"), 0);
    auto* how = addRow();
    add(how, modeBox, tr("&Watch by:"), 0);
    add(how, intervalBox, tr("Inter&val:"), 0);
    how->addStretch(1);

    changeTimer.setSingleShot(true);
    changeTimer.setInterval(300);
    connect(&changeTimer, &QTimer::timeout, this, &WatchSettingsForm::Changed);
    connect(filterBox, &QLineEdit::textChanged, &changeTimer, qOverload<>(&QTimer::start));
    connect(depthBox, qOverload<int>(&QSpinBox::valueChanged), &changeTimer, qOverload<>(&QTimer::start));
    connect(modeBox, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] {
        intervalBox->setEnabled(Settings().mode == WatchMode::Polling);
        changeTimer.stop();
        Q_EMIT Changed();
    });
    connect(intervalBox, qOverload<int>(&QSpinBox::valueChanged), this, &WatchSettingsForm::IntervalChanged);
    connect(folderBox, &QLineEdit::editingFinished, this, &WatchSettingsForm::OnFolderEdited);
}

void WatchSettingsForm::SetFolder(const QString& path)
{
    folder = path;
    folderBox->setText(folder);
}

void WatchSettingsForm::SetMode(WatchMode mode)
{
    modeBox->setCurrentIndex(modeBox->findData(int(mode)));
}

void WatchSettingsForm::SetInterval(int milliseconds)
{
    intervalBox->setValue(milliseconds);
}

WatchSettings WatchSettingsForm::Settings() const
{
    return {folder, NameFilters(filterBox->text()), unsigned(depthBox->value()),
            WatchMode(modeBox->currentData().toInt())};
}

void WatchSettingsForm::OnFolderEdited()
{
    // The signal also comes when the field loses the focus unedited. Opening the folder again could show an
    // alert.
    if (!folderBox->isModified())
        return;
    folderBox->setModified(false);
    Q_EMIT FolderEntered(folderBox->text());
}

} // namespace RecordingsFolder
