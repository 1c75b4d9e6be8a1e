#include "plans/filter_plan_table_model.h"

#include <QLocale>

namespace TWB::GUI {

namespace {

constexpr int SubTypeColumn = 2;

// Qt's collator compares code points in the C locale and drops numeric mode there, which would put
// "Plan 10" before "Plan 9" on machines that run with LANG=C. English order is the nearest to what
// those users expect.
QLocale collationLocale()
{
    const QLocale locale;
    return locale.language() == QLocale::C ? QLocale(QLocale::English) : locale;
}

} // namespace

FilterPlanTableModel::FilterPlanTableModel(int filterType, QObject* parent)
    : QSortFilterProxyModel(parent)
    , filterType(filterType)
    , collator(collationLocale())
{
    collator.setNumericMode(true);
    setDynamicSortFilter(true);
}

bool FilterPlanTableModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const QModelIndex kind = sourceModel()->index(sourceRow, SubTypeColumn, sourceParent);
    return sourceModel()->data(kind, Qt::DisplayRole).toInt() == filterType;
}

bool FilterPlanTableModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const QString leftText = sourceModel()->data(left, Qt::DisplayRole).toString();
    const QString rightText = sourceModel()->data(right, Qt::DisplayRole).toString();
    return collator.compare(leftText, rightText) < 0;
}

} // namespace TWB::GUI
