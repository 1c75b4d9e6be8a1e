#pragma once

#include "plans/plan_full_table_model.h"
#include "twbconsole_export.h"

namespace TWB::GUI {

/// The host's table of restore plans, registered as "TwbPlanRestoreTableModel".
class TWBCONSOLE_EXPORT PlanRestoreModel final : public PlanFullTableModel
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanRestoreModel)
public:
    explicit PlanRestoreModel(QObject* parent = nullptr);

    /// Shows the restore plans of the shared plan table. False when the registry has no table.
    bool init() override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
};

} // namespace TWB::GUI
