#pragma once

#include "Examples/RecordingsFolder/WatchEvent.h"

#include <QAbstractTableModel>
#include <QDateTime>
#include <QImage>
#include <QVector>

namespace RecordingsFolder {

/// The recordings in the folder, as a table of names with thumbnails, times and sizes.
///
/// It only knows what it is told: Reset() at the start of a watch, Apply() for every event after it.
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

    /// Forgets everything and takes these files in; names are shown relative to the folder.
    void Reset(const QString& newFolder, const QList<QFileInfo>& files);
    /// Takes in, updates or drops the file that the event is about; other events change nothing.
    void Apply(const WatchEvent& event);
    /// Shown in place of an empty one; nothing happens when the recording is gone by now.
    void SetThumbnail(const QString& path, const QImage& image);

    QModelIndex IndexOf(const QString& path) const;
    qint64 TotalSize() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /// This recording has come or has changed, so an older thumbnail is out of date.
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
    bool Holds(int row, const QString& path) const;
    void Take(const QFileInfo& file);
    void Drop(const QString& path);
    QString DisplayText(const Recording& recording, int column) const;
    QVariant SortValue(const Recording& recording, int column) const;

    QString folder;
    QVector<Recording> recordings; ///< in the order of their paths, so that each is found by halving
};

} // namespace RecordingsFolder
