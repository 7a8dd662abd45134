#include "Examples/RecordingsFolder/RecordingsOrder.h"

#include "Examples/RecordingsFolder/RecordingsModel.h"

namespace RecordingsFolder {

namespace {

/// The C locale has no rules of its own and compares numbers as text.
QLocale SortingLocale()
{
    return QLocale().language() == QLocale::C ? QLocale(QLocale::English) : QLocale();
}

} // namespace

RecordingsOrder::RecordingsOrder(QObject* parent) : QSortFilterProxyModel(parent), collator(SortingLocale())
{
    collator.setNumericMode(true);
    setSortRole(RecordingsModel::SortRole);
    setDynamicSortFilter(true);
}

bool RecordingsOrder::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (left.column() != RecordingsModel::NameColumn)
        return QSortFilterProxyModel::lessThan(left, right);
    const QString leftName = left.data(RecordingsModel::SortRole).toString();
    const QString rightName = right.data(RecordingsModel::SortRole).toString();
    return collator.compare(leftName, rightName) < 0;
}

} // namespace RecordingsFolder
