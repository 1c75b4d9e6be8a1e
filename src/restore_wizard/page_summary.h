#pragma once

#include "restore_wizard/restore_plan_edit_wizard.h"
#include "wizard/page_summary.h"

namespace TWB::GUI {

/// The restore wizard's last page: Finish builds the plan from the visited pages, saves it, and runs a
/// run-once plan at once.
class TWBCONSOLE_EXPORT RestorePlanEditWizard::PageSummary : public PlanWizardBase::PageSummary
{
    Q_OBJECT
    Q_DISABLE_COPY(PageSummary)
public:
    explicit PageSummary(QWidget* parent = nullptr);

    void initializePage() override;
    bool validatePage() override;
};

} // namespace TWB::GUI
