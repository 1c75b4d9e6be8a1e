#pragma once

#include "backup_wizard/backup_plan_edit_wizard.h"
#include "wizard/page_name.h"

class QCheckBox;

namespace TWB::GUI {

/// The backup plan's name, block-level backup for file plans, and whether the plan's configuration
/// is kept in the storage too.
class TWBCONSOLE_EXPORT BackupPlanEditWizard::PageName : public PlanWizardBase::PageName
{
    Q_OBJECT
    Q_DISABLE_COPY(PageName)
public:
    static const char* FieldUseFileDiffirentialBackup;
    static const char* FieldSaveOnCloud;

    explicit PageName(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;
    QString summary() override;

private:
    QCheckBox* blockLevel = nullptr; // owned by parent-child
    QCheckBox* saveOnCloud = nullptr; // owned by parent-child
};

} // namespace TWB::GUI
