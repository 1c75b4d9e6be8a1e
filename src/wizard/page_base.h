#pragma once

#include "wizard/plan_wizard_base.h"

#include <QWizardPage>

namespace TWB::Info::Plan {
class Base;
}

namespace TWB::GUI {

/// The contract between a wizard page and a plan object. A page publishes its input as wizard fields;
/// initPlan writes those fields into a plan, fromPlan fills them from a stored plan.
class TWBCONSOLE_EXPORT PlanWizardBase::PageBase : public QWizardPage
{
    Q_OBJECT
    Q_DISABLE_COPY(PageBase)
public:
    PageBase(const QString& title, QWidget* parent = nullptr);

    /// Finished table rows of the plan summary for this page, or an empty string.
    virtual QString summary() = 0;
    /// Writes the page's fields into the plan; false stops the save.
    virtual bool initPlan(TWB::Info::Plan::Base* plan) = 0;
    /// Sets the page's fields from a stored plan.
    virtual bool fromPlan(TWB::Info::Plan::Base* plan) = 0;

    void initializePage() override;
    /// Going back keeps what the user entered.
    void cleanupPage() override;

    /// The wizard's "PlanType": 1 backup, 2 restore.
    int planType() const;

    // Public, so that a wizard or another page can reach this page's fields.
    using QWizardPage::field;
    using QWizardPage::registerField;
    using QWizardPage::setField;

protected:
    QString pageTitle;
};

} // namespace TWB::GUI
