#pragma once

#include "backup_wizard/backup_plan_edit_wizard.h"
#include "wizard/page_summary.h"

namespace TWB::GUI {

/// The backup wizard's last page: Finish builds the plan from the visited pages and saves it.
class TWBCONSOLE_EXPORT BackupPlanEditWizard::PageSummary : public PlanWizardBase::PageSummary
{
    Q_OBJECT
    Q_DISABLE_COPY(PageSummary)
public:
    explicit PageSummary(QWidget* parent = nullptr);

    bool validatePage() override;
};

} // namespace TWB::GUI
