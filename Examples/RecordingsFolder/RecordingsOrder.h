#pragma once

#include <QCollator>
#include <QSortFilterProxyModel>

namespace RecordingsFolder {

/// Puts the recordings in the order of the column that the user chose: names as people count
/// ("Recording 2" before "Recording 10"), sizes and times by value.
class RecordingsOrder : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit RecordingsOrder(QObject* parent = nullptr);

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    QCollator collator;
};

} // namespace RecordingsFolder
