#include "Examples/RecordingsFolder/RecordingsView.h"

#include "Examples/RecordingsFolder/RecordingsModel.h"

#include <QHeaderView>
#include <QPainter>

#include <algorithm>

namespace RecordingsFolder {

RecordingsView::RecordingsView(QWidget* parent) : QTreeView(parent)
{
    setRootIsDecorated(false);
    // With this, only the first row is measured, and thousands of rows show up at once.
    setUniformRowHeights(true);
    setIconSize(ThumbnailSize());
    setSelectionMode(ExtendedSelection);
    setAllColumnsShowFocus(true);
    setSortingEnabled(true);
    setTextElideMode(Qt::ElideMiddle);
    setTabKeyNavigation(false);
    header()->setStretchLastSection(false);
}

void RecordingsView::SetEmptyText(const QString& text)
{
    emptyText = text;
    setAccessibleDescription(text);
    viewport()->update();
}

QStringList RecordingsView::SelectedPaths() const
{
    QModelIndexList rows = selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(),
              [](const auto& left, const auto& right) { return left.row() < right.row(); });
    QStringList paths;
    for (const QModelIndex& row : qAsConst(rows))
        paths.append(row.data(RecordingsModel::PathRole).toString());
    return paths;
}

void RecordingsView::paintEvent(QPaintEvent* event)
{
    QTreeView::paintEvent(event);
    if (emptyText.isEmpty() || model()->rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Text));
    const QRect room = viewport()->rect().marginsRemoved({24, 24, 24, 24});
    painter.drawText(room, int(Qt::AlignCenter) | int(Qt::TextWordWrap), emptyText);
}

} // namespace RecordingsFolder
