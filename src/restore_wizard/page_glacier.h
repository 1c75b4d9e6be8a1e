#pragma once

#include "restore_wizard/restore_plan_edit_wizard.h"
#include "wizard/page_base.h"

class QComboBox;
class QLabel;

namespace TWB::GUI {

/// How files archived in Amazon S3 Glacier are brought back before they are restored: the
/// retrieval tier, which trades the wait against Amazon's fee.
class TWBCONSOLE_EXPORT RestorePlanEditWizard::PageGlacier final : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageGlacier)
public:
    /// The tier's index in the combo box.
    static const char* FieldRetrievalType;

    explicit PageGlacier(QWidget* parent = nullptr);

    int nextId() const override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

private:
    void describe();

    QComboBox* tier; // owned by parent-child
    QLabel* description; // owned by parent-child
};

} // namespace TWB::GUI
