#pragma once

#include "restore_wizard/restore_plan_edit_wizard.h"
#include "wizard/page_base.h"

class QLabel;
class QLineEdit;

namespace TWB::GUI {

class RadioButton;

/// Run the restore once, or keep it as a plan under a name.
class TWBCONSOLE_EXPORT RestorePlanEditWizard::PageName : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageName)
public:
    static const char* FieldRestoreOnce;
    static const char* FieldSaveRestorePlan;

    explicit PageName(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;
    QString summary() override;

private:
    RadioButton* restoreOnce = nullptr; // owned by parent-child
    RadioButton* saveRestorePlan = nullptr; // owned by parent-child
    QLabel* nameLabel = nullptr; // owned by parent-child
    QLineEdit* nameEdit = nullptr; // owned by parent-child
};

} // namespace TWB::GUI
