#include "app/console_models.h"

#include "frame/model_manager.h"
#include "frame/model_names.h"

namespace TWB::Host {

namespace ModelNames = TWB::GUI::ModelNames;

ConsoleModels::ConsoleModels()
    : m_planTable(ModelNames::PlanTable)
    , m_backupTable(ModelNames::PlanBackupTable)
    , m_restoreTable(ModelNames::PlanRestoreTable)
    , m_storages(ModelNames::StorageConnection)
    , m_storageTree(ModelNames::StorageBackup)
    , m_storageFullTree(ModelNames::StorageBackupFull)
    , m_storageTable(ModelNames::StorageBackupTable)
    , m_historyByPlan(ModelNames::HistoryGetByPlan)
    , m_historyByFile(ModelNames::HistoryGetByFile)
{ }

void ConsoleModels::start()
{
    auto manager = TWB::GUI::ModelManager::instance();
    if (!manager)
        return;
    // The storage trees take their top level from the storage list, and the table its tree, so each comes
    // after what it reads.
    const std::initializer_list<TWB::GUI::ModelCreator*> creators {&m_planTable, &m_backupTable, &m_restoreTable,
        &m_storages, &m_storageTree, &m_storageFullTree, &m_storageTable, &m_historyByPlan, &m_historyByFile};
    for (TWB::GUI::ModelCreator* creator : creators)
        manager->registrateCreator(*creator);
    for (TWB::GUI::ModelCreator* creator : creators) {
        if (TWB::GUI::BaseModel* model = creator->create())
            model->init();
    }
}

TWB::GUI::PlanTableModel* ConsoleModels::planTable()
{
    return static_cast<TWB::GUI::PlanTableModel*>(m_planTable.create());
}

} // namespace TWB::Host
