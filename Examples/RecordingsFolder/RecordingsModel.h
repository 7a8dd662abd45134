#pragma once

#include "Examples/RecordingsFolder/WatchEvent.h"

#include <QAbstractTableModel>
#include <QCollator>
#include <QDateTime>
#include <QImage>
#include <QSortFilterProxyModel>
#include <QVector>

namespace RecordingsFolder {

/// The recordings in the folder, as a table of names with thumbnails, times and sizes.
///
/// Call Reset() when a watch starts, and Apply() for each of its events.
class RecordingsModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        NameColumn,
        TimeColumn,
        SizeColumn,
        ColumnCount
    };
    enum Role
    {
        SortRole = Qt::UserRole, ///< QString, qint64 or QDateTime, by the column
        PathRole                 ///< the absolute path, in every column
    };

    explicit RecordingsModel(QObject* parent = nullptr);

    /// Replaces all recordings by these files. Their names are shown relative to the folder.
    void Reset(const QString& newFolder, const QList<QFileInfo>& files);
    /// Adds, updates or removes the event's file. Events without a file change nothing.
    void Apply(const WatchEvent& event);
    /// Does nothing if the recording has been removed meanwhile.
    void SetThumbnail(const QString& path, const QImage& image);

    QModelIndex IndexOf(const QString& path) const;
    qint64 TotalSize() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /// This recording is new or has changed, so an older thumbnail is out of date.
    void ThumbnailNeeded(const QString& path);

private:
    struct Recording
    {
        QString path;
        QString name;
        qint64 size;
        QDateTime time;
        QImage thumbnail;
    };

    Recording FromFile(const QFileInfo& file) const;
    int LowerBound(const QString& path) const;
    bool HasPathAt(int row, const QString& path) const;
    void AddOrUpdate(const QFileInfo& file);
    void Remove(const QString& path);
    QString DisplayText(const Recording& recording, int column) const;
    QVariant SortValue(const Recording& recording, int column) const;

    QString folder;
    QVector<Recording> recordings; ///< sorted by path, for binary search
};

/// Sorts the recordings by the column that the user chose: names in natural order ("Recording 2" before
/// "Recording 10"), sizes and times by value.
class RecordingsSortModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit RecordingsSortModel(QObject* parent = nullptr);

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    QCollator collator;
};

} // namespace RecordingsFolder
