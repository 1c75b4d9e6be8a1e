#include "restore_wizard/page_summary.h"

#include "platform/plan/restore_file.h"
#include "restore_wizard/page_name.h"

#include <QVariant>

namespace TWB::GUI {

RestorePlanEditWizard::PageSummary::PageSummary(QWidget* parent)
    : PlanWizardBase::PageSummary(parent)
{ }

void RestorePlanEditWizard::PageSummary::initializePage()
{
    PlanWizardBase::PageSummary::initializePage();
    // A run-once plan runs anyway: there is nothing to choose.
    setVisibleRunNow(!field(QLatin1String(PageName::FieldRestoreOnce)).toBool());
}

bool RestorePlanEditWizard::PageSummary::validatePage()
{
    // A fresh plan, never the one loaded: what no visited page writes keeps the new object's default.
    TWB::Info::Plan::RestoreFile plan;
    const bool once = field(QLatin1String(PageName::FieldRestoreOnce)).toBool();
    return savePlan(&plan, once || field(QLatin1String(FieldRunNow)).toBool());
}

} // namespace TWB::GUI
