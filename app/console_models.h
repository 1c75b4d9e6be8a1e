#pragma once

#include "frame/shared_model_creator.h"
#include "history/history_get_by_file_model.h"
#include "history/history_get_by_plan_model.h"
#include "plans/plan_backup_model.h"
#include "plans/plan_restore_model.h"
#include "plans/plan_table_model.h"
#include "restore_wizard/storage_backup_full_model.h"
#include "restore_wizard/storage_backup_model.h"
#include "restore_wizard/storage_backup_table_model.h"
#include "storages/storage_connections_model.h"

namespace TWB::Host {

/// The shared models the console shows, one per name: registered with the library's registry and
/// loaded once. Keep it alive as long as the window.
class ConsoleModels final
{
public:
    ConsoleModels();
    ConsoleModels(const ConsoleModels&) = delete;
    ConsoleModels& operator=(const ConsoleModels&) = delete;

    /// Registers every creator, then starts each model's first load; the table of all plans first,
    /// since the backup and restore tables read it.
    void start();

    TWB::GUI::PlanTableModel* planTable();

private:
    TWB::GUI::SharedModelCreator<TWB::GUI::PlanTableModel> m_planTable;
    TWB::GUI::SharedModelCreator<TWB::GUI::PlanBackupModel> m_backupTable;
    TWB::GUI::SharedModelCreator<TWB::GUI::PlanRestoreModel> m_restoreTable;
    TWB::GUI::SharedModelCreator<TWB::GUI::StorageConnectionsModel> m_storages;
    TWB::GUI::SharedModelCreator<TWB::GUI::StorageBackupModel> m_storageTree;
    TWB::GUI::SharedModelCreator<TWB::GUI::StorageBackupFullModel> m_storageFullTree;
    TWB::GUI::SharedModelCreator<TWB::GUI::StorageBackupTableModel> m_storageTable;
    TWB::GUI::SharedModelCreator<TWB::GUI::HistoryGetByPlanModel> m_historyByPlan;
    TWB::GUI::SharedModelCreator<TWB::GUI::HistoryGetByFileModel> m_historyByFile;
};

} // namespace TWB::Host
