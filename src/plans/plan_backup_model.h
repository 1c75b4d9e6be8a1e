#pragma once

#include "plans/plan_full_table_model.h"
#include "twbconsole_export.h"

namespace TWB::GUI {

/// The host's table of backup plans, registered as "TwbPlanBackupTableModel".
class TWBCONSOLE_EXPORT PlanBackupModel final : public PlanFullTableModel
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanBackupModel)
public:
    explicit PlanBackupModel(QObject* parent = nullptr);

    /// Shows the backup plans of the shared plan table. False when the registry has no table.
    bool init() override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
};

} // namespace TWB::GUI
