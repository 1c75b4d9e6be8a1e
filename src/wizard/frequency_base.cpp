#include "wizard/frequency_base.h"

#include "platform/plan/backup.h"
#include "wizard/page_base.h"

namespace TWB::GUI {

FrequencyBase::FrequencyBase(Type type, PlanWizardBase::PageBase* page, QWidget* parent)
    : QWidget(parent)
    , m_type(type)
    , m_page(page)
{ }

TWB::Info::Plan::Schedule& FrequencyBase::schedule(TWB::Info::Plan::Base* plan) const
{
    if (m_type == Full && plan->subtype() == TWB::Info::Plan::Base::KindBackup)
        return static_cast<TWB::Info::Plan::Backup*>(plan)->forceFullSchedule();
    return plan->schedule();
}

} // namespace TWB::GUI
