#include "Examples/RecordingsFolder/RecordingsModel.h"

#include <QDir>
#include <QLocale>

#include <algorithm>

namespace RecordingsFolder {

namespace {

/// In the C locale, numbers would be compared as text.
QLocale SortingLocale()
{
    return QLocale().language() == QLocale::C ? QLocale(QLocale::English) : QLocale();
}

} // namespace

RecordingsModel::RecordingsModel(QObject* parent) : QAbstractTableModel(parent)
{
}

void RecordingsModel::Reset(const QString& newFolder, const QList<QFileInfo>& files)
{
    beginResetModel();
    folder = newFolder;
    const QVector<Recording> old = std::exchange(recordings, {});
    recordings.reserve(files.size());
    for (const QFileInfo& file : files)
        recordings.append(FromFile(file));
    const auto byPath = [](const Recording& left, const Recording& right) { return left.path < right.path; };
    std::sort(recordings.begin(), recordings.end(), byPath);
    // When the same folder is watched again, thumbnails of unchanged files stay.
    for (Recording& recording : recordings) {
        const auto known = std::lower_bound(old.begin(), old.end(), recording, byPath);
        if (known != old.end() && known->path == recording.path && known->time == recording.time)
            recording.thumbnail = known->thumbnail;
    }
    endResetModel();

    for (const Recording& recording : qAsConst(recordings)) {
        if (recording.thumbnail.isNull())
            Q_EMIT ThumbnailNeeded(recording.path);
    }
}

void RecordingsModel::Apply(const WatchEvent& event)
{
    switch (event.kind) {
    case WatchEvent::Kind::FileAdded:
    case WatchEvent::Kind::FileChanged:
        AddOrUpdate(event.file);
        break;
    case WatchEvent::Kind::FileRemoved:
        Remove(event.file.absoluteFilePath());
        break;
    case WatchEvent::Kind::WatchingStarted:
    case WatchEvent::Kind::WatchingStopped:
    case WatchEvent::Kind::PathChanged:
        break;
    }
}

void RecordingsModel::SetThumbnail(const QString& path, const QImage& image)
{
    const int row = LowerBound(path);
    if (!HasPathAt(row, path))
        return;
    recordings[row].thumbnail = image;
    const QModelIndex changed = index(row, NameColumn);
    Q_EMIT dataChanged(changed, changed, {Qt::DecorationRole});
}

QModelIndex RecordingsModel::IndexOf(const QString& path) const
{
    const int row = LowerBound(path);
    return HasPathAt(row, path) ? index(row, NameColumn) : QModelIndex();
}

qint64 RecordingsModel::TotalSize() const
{
    qint64 sum = 0;
    for (const Recording& recording : recordings)
        sum += recording.size;
    return sum;
}

int RecordingsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(recordings.size());
}

int RecordingsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant RecordingsModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};

    const Recording& recording = recordings[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        return DisplayText(recording, index.column());
    case Qt::DecorationRole:
        return index.column() == NameColumn && !recording.thumbnail.isNull() ? QVariant(recording.thumbnail)
                                                                             : QVariant();
    case Qt::TextAlignmentRole:
        return index.column() == SizeColumn ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case Qt::ToolTipRole:
        // Without a tag it would count as plain text, and show the escapes.
        return QStringLiteral("<span>%1</span>").arg(recording.path.toHtmlEscaped());
    case SortRole:
        return SortValue(recording, index.column());
    case PathRole:
        return recording.path;
    default:
        return {};
    }
}

QVariant RecordingsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return section == SizeColumn ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                     : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    switch (section) {
    case NameColumn:
        return tr("Name");
    case SizeColumn:
        return tr("Size");
    case TimeColumn:
        return tr("Modified");
    default:
        return {};
    }
}

RecordingsModel::Recording RecordingsModel::FromFile(const QFileInfo& file) const
{
    const QString path = file.absoluteFilePath();
    return {path, QDir(folder).relativeFilePath(path), file.size(), file.lastModified(), {}};
}

int RecordingsModel::LowerBound(const QString& path) const
{
    const auto found =
        std::lower_bound(recordings.begin(), recordings.end(), path,
                         [](const Recording& left, const QString& right) { return left.path < right; });
    return static_cast<int>(found - recordings.begin());
}

bool RecordingsModel::HasPathAt(int row, const QString& path) const
{
    return row < recordings.size() && recordings[row].path == path;
}

void RecordingsModel::AddOrUpdate(const QFileInfo& file)
{
    Recording recording = FromFile(file);
    const QString path = recording.path;
    const int row = LowerBound(path);
    if (HasPathAt(row, path)) {
        // The old thumbnail stays until the new one is loaded, to avoid flicker.
        recording.thumbnail = recordings[row].thumbnail;
        recordings[row] = recording;
        Q_EMIT dataChanged(index(row, NameColumn), index(row, ColumnCount - 1));
    } else {
        beginInsertRows({}, row, row);
        recordings.insert(row, recording);
        endInsertRows();
    }
    Q_EMIT ThumbnailNeeded(path);
}

void RecordingsModel::Remove(const QString& path)
{
    const int row = LowerBound(path);
    if (!HasPathAt(row, path))
        return;
    beginRemoveRows({}, row, row);
    recordings.remove(row);
    endRemoveRows();
}

QString RecordingsModel::DisplayText(const Recording& recording, int column) const
{
    switch (column) {
    case NameColumn:
        return recording.name;
    case SizeColumn:
        return QLocale().formattedDataSize(recording.size);
    case TimeColumn:
        return QLocale().toString(recording.time, QLocale::ShortFormat);
    default:
        return {};
    }
}

QVariant RecordingsModel::SortValue(const Recording& recording, int column) const
{
    switch (column) {
    case SizeColumn:
        return recording.size;
    case TimeColumn:
        return recording.time;
    default:
        return recording.name;
    }
}

RecordingsSortModel::RecordingsSortModel(QObject* parent)
    : QSortFilterProxyModel(parent), collator(SortingLocale())
{
    collator.setNumericMode(true);
    setSortRole(RecordingsModel::SortRole);
    setDynamicSortFilter(true);
}

bool RecordingsSortModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (left.column() != RecordingsModel::NameColumn)
        return QSortFilterProxyModel::lessThan(left, right);
    const QString leftName = left.data(RecordingsModel::SortRole).toString();
    const QString rightName = right.data(RecordingsModel::SortRole).toString();
    return collator.compare(leftName, rightName) < 0;
}

} // namespace RecordingsFolder
