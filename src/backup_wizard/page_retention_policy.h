#pragma once

#include "backup_wizard/backup_plan_edit_wizard.h"
#include "wizard/page_base.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QRadioButton;
class QWidget;

namespace TWB::GUI {

/// How long old versions of files stay in the storage: by the product's defaults or by the plan's own rules.
class TWBCONSOLE_EXPORT BackupPlanEditWizard::PageRetentionPolicy : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageRetentionPolicy)
public:
    static const char* FieldUseDefault;
    static const char* FieldUseCustom;
    static const char* FieldUseDeleteOlder;
    static const char* FieldUseDeleteOlderAge;
    /// Index of the unit: 0 day, 1 week, 2 month.
    static const char* FieldUseDeleteOlderType;
    /// Index of the date the age counts from: 0 modification date, 1 backup date.
    static const char* FieldUseDeleteDateType;
    static const char* FieldUseDeleteOlderKeepLast;
    static const char* FieldUseKeepVersion;
    static const char* FieldUseKeepVersionNumber;
    static const char* FieldUseDeleteLocalyFiles;
    static const char* FieldUseDeleteLocalyFilesValue;

    explicit PageRetentionPolicy(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    bool validatePage() override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

public Q_SLOTS:
    /// Opens the product-wide default retention in a dialog of its own.
    void onLinkActivated(const QString& link);
    void onCustomPolicy(bool on);
    /// By backup date the last version always stays.
    void onDeleteOlderDateTypeChanged();

private:
    QRadioButton* useCustom; // owned by parent-child
    QCheckBox* deleteOlder; // owned by parent-child
    QWidget* deleteOlderBox; // owned by parent-child
    QComboBox* dateType; // owned by parent-child
    QCheckBox* keepLast; // owned by parent-child
    QCheckBox* keepVersion; // owned by parent-child
    QWidget* keepVersionBox; // owned by parent-child
};

} // namespace TWB::GUI
