#include "plans/plan_restore_model.h"

namespace TWB::GUI {

namespace {
constexpr int Kind = 2;
}

PlanRestoreModel::PlanRestoreModel(QObject* parent)
    : PlanFullTableModel(parent)
{ }

bool PlanRestoreModel::init()
{
    return initSource(Kind);
}

int PlanRestoreModel::columnCount(const QModelIndex& parent) const
{
    // Column 15 comes last and stays empty: no header, no data.
    return parent.isValid() ? 0 : PlanFullTableModel::columnCount(parent) + 1;
}

QVariant PlanRestoreModel::data(const QModelIndex& index, int role) const
{
    return kindData(index, role, Kind);
}

} // namespace TWB::GUI
