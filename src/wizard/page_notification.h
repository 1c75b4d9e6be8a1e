#pragma once

#include "wizard/page_base.h"

class QCheckBox;
class QLineEdit;
class QRadioButton;
class QWidget;

namespace TWB::GUI {

/// When the plan's result is mailed: never, when the plan fails, or always.
class TWBCONSOLE_EXPORT PlanWizardBase::PageNotification : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageNotification)
public:
    static const char* FieldUseEnabled;
    static const char* FieldBackupFails;
    static const char* FieldAllCase;

    explicit PageNotification(QWidget* parent = nullptr);

    int nextId() const override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

protected:
    bool enabled() const;
    /// The controls that the enable box switches; subclasses add theirs to its layout.
    QWidget* options; // owned as a child
    QCheckBox* useEnabled; // owned as a child
    QRadioButton* backupFails; // owned as a child
    QRadioButton* allCase; // owned as a child
};

/// The notification page of the standalone edition: the addresses, the sender's name, the subject and
/// the detailed report, checked with the product's mail service before the wizard goes on.
class TWBCONSOLE_EXPORT PlanWizardBase::PageNotificationStandalone : public PlanWizardBase::PageNotification
{
    Q_OBJECT
    Q_DISABLE_COPY(PageNotificationStandalone)
public:
    static const char* FieldEmail;
    static const char* FieldUserName;
    static const char* FieldEmailSubject;
    static const char* FieldGenDetailedReport;

    explicit PageNotificationStandalone(QWidget* parent = nullptr);

    void initializePage() override;
    bool isComplete() const override;
    bool validatePage() override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

private:
    QLineEdit* email; // owned as a child
    QLineEdit* userName; // owned as a child
    QLineEdit* subject; // owned as a child
    QCheckBox* detailedReport; // owned as a child
};

} // namespace TWB::GUI
