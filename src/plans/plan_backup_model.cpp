#include "plans/plan_backup_model.h"

namespace TWB::GUI {

namespace {
constexpr int Kind = 1;
}

PlanBackupModel::PlanBackupModel(QObject* parent)
    : PlanFullTableModel(parent)
{ }

bool PlanBackupModel::init()
{
    return initSource(Kind);
}

int PlanBackupModel::columnCount(const QModelIndex& parent) const
{
    // Column 15 comes last and stays empty: no header, no data.
    return parent.isValid() ? 0 : PlanFullTableModel::columnCount(parent) + 1;
}

QVariant PlanBackupModel::data(const QModelIndex& index, int role) const
{
    return kindData(index, role, Kind);
}

} // namespace TWB::GUI
