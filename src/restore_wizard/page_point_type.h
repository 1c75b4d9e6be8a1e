#pragma once

#include "restore_wizard/restore_plan_edit_wizard.h"
#include "wizard/page_base.h"

class QCheckBox;
class QDateTimeEdit;

namespace TWB::GUI {

class CheckBox;
class RadioButton;

/// Which versions a restore brings back, the latest or those at a point in time, and the options
/// that belong to the moment of the run: sync before run, S3 Transfer Acceleration and whether
/// archived Glacier files are skipped.
class TWBCONSOLE_EXPORT RestorePlanEditWizard::PagePointType final : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PagePointType)
public:
    // Saved wizards and other pages know these names as they are, the trailing semicolon included.
    static const char* FieldUseLatestVersion;
    static const char* FieldUsePointInTime;
    static const char* FieldPointInTimeValue;
    static const char* FieldUseSincBeforRun;
    static const char* FieldUseS3Acceleration;
    static const char* FieldUseGlacier;

    explicit PagePointType(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    bool validatePage() override;
    void initializePage() override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

Q_SIGNALS:
    void setGlacierVisible(bool visible);
    void setVisibleS3Acceleration(bool visible);

private:
    /// Whether the wizard's storage is Amazon S3 or Amazon S3 China.
    bool amazonStorage() const;

    RadioButton* latest; // owned by parent-child
    RadioButton* pointInTime; // owned by parent-child
    QDateTimeEdit* pointInTimeValue; // owned by parent-child
    QCheckBox* syncBeforeRun; // owned by parent-child
    QCheckBox* acceleration; // owned by parent-child
    CheckBox* skipGlacier; // owned by parent-child
};

} // namespace TWB::GUI
