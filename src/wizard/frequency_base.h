#pragma once

#include "wizard/plan_wizard_base.h"

#include <QWidget>

namespace TWB::Info::Plan {
class Base;
class Schedule;
} // namespace TWB::Info::Plan

namespace TWB::GUI {

/// One way a schedule repeats. Its fields are registered on the page that holds it; a page that
/// holds a second set, for the forced full schedule, uses the type Full to keep the names apart.
class TWBCONSOLE_EXPORT FrequencyBase : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY(FrequencyBase)
public:
    enum Type { Normal = 0, Full = 1 };

    FrequencyBase(Type type, PlanWizardBase::PageBase* page, QWidget* parent = nullptr);

    virtual QString summary() = 0;
    virtual bool initPlan(TWB::Info::Plan::Base* plan) = 0;
    virtual bool fromPlan(TWB::Info::Plan::Base* plan) = 0;
    virtual bool validate() = 0;

    Type type() const { return m_type; }
    /// The schedule this widget works on: the plan's own, or the forced full schedule of a backup plan.
    TWB::Info::Plan::Schedule& schedule(TWB::Info::Plan::Base* plan) const;

Q_SIGNALS:
    void changed();

protected:
    const Type m_type;
    PlanWizardBase::PageBase* m_page; // not owned: the page holds this widget
};

} // namespace TWB::GUI
