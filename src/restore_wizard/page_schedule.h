#pragma once

#include "restore_wizard/restore_plan_edit_wizard.h"
#include "wizard/page_schedule.h"

namespace TWB::GUI {

/// When a kept restore plan runs; only its place in the walk differs from the shared page.
class TWBCONSOLE_EXPORT RestorePlanEditWizard::PageSchedule : public PlanWizardBase::PageSchedule
{
    Q_OBJECT
    Q_DISABLE_COPY(PageSchedule)
public:
    explicit PageSchedule(QWidget* parent = nullptr);

    int nextId() const override;
};

} // namespace TWB::GUI
