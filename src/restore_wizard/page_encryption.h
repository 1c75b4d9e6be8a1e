#pragma once

#include "restore_wizard/restore_plan_edit_wizard.h"
#include "wizard/page_base.h"

#include <QPointer>
#include <QStringList>

class QLabel;
class QLineEdit;

namespace TWB::Common::Communication {
class ICommand;
}

namespace TWB::GUI {

class AttentionFrame;
class ProgressWheel;

/// The password of an encrypted backup. On entry the service tells whether a password of the
/// user's protects the backups behind the restore items; Next then has the service open them with
/// the password given, and only a password that opens them lets the wizard go on.
class TWBCONSOLE_EXPORT RestorePlanEditWizard::PageEncryption final : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageEncryption)
public:
    static const char* FieldEncryptionPassword;

    /// What the page knows of the backup.
    enum class State { Asking, Plain, Encrypted, Unknown };
    Q_ENUM(State)

    explicit PageEncryption(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    bool validatePage() override;
    void initializePage() override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

    State state() const { return current; }
    /// True while the service opens the backup with the password.
    bool isChecking() const { return checking; }

public Q_SLOTS:
    void onCheckResult();

private:
    /// The items the source page holds now, or those of the plan the wizard was opened with.
    QStringList restoreItems() const;
    void send(const QString& password);
    void setState(State state, const QString& text);
    void setChecking(bool on);
    QString password() const;

    QLabel* status; // owned by parent-child
    ProgressWheel* wheel; // owned by parent-child
    QLabel* passwordLabel; // owned by parent-child
    QLineEdit* passwordEdit; // owned by parent-child
    AttentionFrame* refusal; // owned by parent-child
    QPointer<TWB::Common::Communication::ICommand> pending; // the one request whose reply counts
    QStringList planItems;
    QString acceptedPassword;
    State current = State::Asking;
    bool passwordKnown = false;
    bool checking = false;
};

} // namespace TWB::GUI
