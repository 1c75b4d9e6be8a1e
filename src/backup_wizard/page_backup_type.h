#pragma once

#include "backup_wizard/backup_plan_edit_wizard.h"
#include "wizard/page_base.h"

class QRadioButton;

namespace TWB::GUI {

/// Chooses the kind of backup plan. Only file plans are made here, so the wizard leaves this page out;
/// the disk image and full file choices stay null and every use tests for that.
class TWBCONSOLE_EXPORT BackupPlanEditWizard::PageBackupType : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageBackupType)
public:
    explicit PageBackupType(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    bool validatePage() override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

private:
    QRadioButton* fileBackup = nullptr; // owned by parent-child
    QRadioButton* diskImageBackup = nullptr; // never made
    QRadioButton* fullFileBackup = nullptr; // never made
};

} // namespace TWB::GUI
