#pragma once

#include "wizard/page_base.h"

class QCheckBox;
class QTextEdit;

namespace TWB::GUI {

/// The last page: the plan as the visited pages describe it, and "Run plan now".
/// Each wizard derives its own summary page, whose validatePage saves the plan.
class TWBCONSOLE_EXPORT PlanWizardBase::PageSummary : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageSummary)
public:
    static const char* FieldRunNow;

    explicit PageSummary(QWidget* parent = nullptr);

    void initializePage() override;
    bool isComplete() const override;
    int nextId() const override;
    /// The base never finishes: saving is the deriving wizard's.
    bool validatePage() override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

    /// The summary text as shown.
    QString summaryHtml() const;

Q_SIGNALS:
    /// Hides "Run plan now" where a plan cannot run at once.
    void setVisibleRunNow(bool visible);

protected:
    /// The summary rows of every visited page, in visiting order.
    QString visitedSummary() const;
    /// Fills `plan` from the visited pages and saves it through the service, waiting for the result.
    /// Without the service it says so and keeps the wizard open. True once the plan is saved.
    bool savePlan(TWB::Info::Plan::Base* plan, bool runNow);

    QTextEdit* summaryView = nullptr; // owned by parent-child
    QCheckBox* runNow = nullptr; // owned by parent-child
};

} // namespace TWB::GUI
