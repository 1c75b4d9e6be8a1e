#pragma once

#include "wizard/page_base.h"

class QRadioButton;

namespace TWB::GUI {

class WarningFrame;

/// Commands run before a backup and after it: whether a failed pre-action stops the backup, and
/// whether the post-action runs after a failed backup too.
class TWBCONSOLE_EXPORT PageBackupActions : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageBackupActions)
public:
    static const char* FieldPreActionEnable;
    static const char* FieldPreActionProgram;
    static const char* FieldPreActionArguments;
    static const char* FieldPreActionTerminateOnFailure;
    static const char* FieldPostActionEnable;
    static const char* FieldPostActionProgram;
    static const char* FieldPostActionArguments;
    /// True: after every backup; false: only after a successful one.
    static const char* FieldPostActionRunAlways;

    explicit PageBackupActions(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    bool validatePage() override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

    /// Why a program cannot be run as an action, or an empty string: a bare name is looked up in PATH.
    static QString programError(const QString& program);

private:
    WarningFrame* error; // owned as a child
    QRadioButton* onSuccess; // owned as a child
    QRadioButton* always; // owned as a child
};

} // namespace TWB::GUI
