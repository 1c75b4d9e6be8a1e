#pragma once

#include "restore_wizard/restore_plan_edit_wizard.h"
#include "wizard/page_base.h"

class QCheckBox;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace TWB::GUI {

class CheckBox;

/// Where restored files go, the original location or a folder the user picks, and what becomes of
/// files that are there already.
class TWBCONSOLE_EXPORT RestorePlanEditWizard::PageDestination final : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageDestination)
public:
    static const char* FieldUseOriginalLocation;
    static const char* FieldUseCustomLocation;
    static const char* FieldCustomLocationValue;
    static const char* FieldUseOverwriteExistingFiles;
    static const char* FieldRestoreOnlyNewFiles;

    explicit PageDestination(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    bool validatePage() override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

public Q_SLOTS:
    void onBrowseButtonClicked();

private:
    QRadioButton* original; // owned by parent-child
    QRadioButton* custom; // owned by parent-child
    QLineEdit* location; // owned by parent-child
    QPushButton* browse; // owned by parent-child
    QCheckBox* overwrite; // owned by parent-child
    CheckBox* onlyNew; // owned by parent-child
};

} // namespace TWB::GUI
