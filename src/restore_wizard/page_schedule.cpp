#include "restore_wizard/page_schedule.h"

#include "frame/application.h"

namespace TWB::GUI {

RestorePlanEditWizard::PageSchedule::PageSchedule(QWidget* parent)
    : PlanWizardBase::PageSchedule(parent)
{ }

int RestorePlanEditWizard::PageSchedule::nextId() const
{
    // The managed edition sets archive retrieval centrally: its walk never reaches that page from here.
    if (!Application::isStandalon())
        return closeId();
    auto* owner = qobject_cast<RestorePlanEditWizard*>(wizard());
    if (owner && owner->glacierWanted())
        return 104;
    return closeId();
}

} // namespace TWB::GUI
