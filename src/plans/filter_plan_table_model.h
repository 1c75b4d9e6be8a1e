#pragma once

#include "twbconsole_export.h"

#include <QCollator>
#include <QSortFilterProxyModel>

namespace TWB::GUI {

/// The plans of one kind (1 backup, 2 restore), sorted the way people read names: "Plan 9" before "Plan 10".
class TWBCONSOLE_EXPORT FilterPlanTableModel final : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_DISABLE_COPY(FilterPlanTableModel)
public:
    FilterPlanTableModel(int filterType, QObject* parent);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    /// The plan kind a row must have to pass, compared with the "SubType" column.
    int filterType;
    QCollator collator;
};

} // namespace TWB::GUI
