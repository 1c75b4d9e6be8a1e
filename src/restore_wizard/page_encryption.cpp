#include "restore_wizard/page_encryption.h"

#include "frame/license_restrictions.h"
#include "platform/cloud/cloud_type.h"
#include "platform/communication/command_calls.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/restore_file.h"
#include "widgets/attention_frame.h"
#include "widgets/progress_wheel.h"

#include <QGridLayout>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QWizard>

namespace TWB::GUI {

using TWB::Common::Communication::ICommand;
using TWB::Info::Plan::Restore;

const char* RestorePlanEditWizard::PageEncryption::FieldEncryptionPassword = "Field_RestoreEncryptionPassword";

namespace {

const int sourcePage = 2;

} // namespace

RestorePlanEditWizard::PageEncryption::PageEncryption(QWidget* parent)
    : PageBase(tr("Encryption"), parent)
    , status(new QLabel(this))
    , wheel(new ProgressWheel(this))
    , passwordLabel(new QLabel(tr("Password:"), this))
    , passwordEdit(new QLineEdit(this))
    , refusal(new AttentionFrame(tr("The password does not open the backup. Check the password and try again."), this))
{
    setSubTitle(tr("Specify the password of an encrypted backup"));
    status->setObjectName(QStringLiteral("status"));
    status->setWordWrap(true);
    passwordEdit->setObjectName(QStringLiteral("password"));
    passwordEdit->setEchoMode(QLineEdit::Password);
    passwordEdit->setMinimumWidth(200);
    refusal->setObjectName(QStringLiteral("refusal"));
    refusal->hide();
    wheel->hide();
    connect(passwordEdit, &QLineEdit::textChanged, this, [this] {
        refusal->hide();
        Q_EMIT completeChanged();
    });

    auto* statusRow = new QHBoxLayout;
    statusRow->addWidget(wheel);
    statusRow->addWidget(status, 1);
    auto* grid = new QGridLayout;
    grid->addWidget(passwordLabel, 0, 0);
    grid->addWidget(passwordEdit, 0, 1);
    grid->setColumnStretch(2, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(statusRow);
    layout->addSpacing(10);
    layout->addLayout(grid);
    layout->addWidget(refusal);
    layout->addStretch(1);

    registerField(QLatin1String(FieldEncryptionPassword), passwordEdit);
    setState(State::Asking, QString());
}

int RestorePlanEditWizard::PageEncryption::nextId() const
{
    const int close = License::LicenseRestrictions::isNotificationsAvailable() ? 5 : 6;
    if (!field(QStringLiteral("Field_RestoreOnce")).toBool())
        return 4;
    const int cloudType = field(QStringLiteral("Field_CloudType")).toString().toInt(nullptr, 10);
    const bool glacier = !field(QStringLiteral("Field_TypeUseGlacier")).toBool()
        && (cloudType == TWL::Cloud::AmazonS3 || cloudType == TWL::Cloud::AmazonS3Chinese);
    return glacier ? 104 : close;
}

QString RestorePlanEditWizard::PageEncryption::password() const
{
    return field(QLatin1String(FieldEncryptionPassword)).toString();
}

bool RestorePlanEditWizard::PageEncryption::isComplete() const
{
    if (checking)
        return false;
    switch (current) {
    case State::Asking:
        return false;
    case State::Encrypted:
        // A password the service keeps opens the backup; one typed here replaces it.
        return passwordKnown || !password().isEmpty();
    case State::Plain:
    case State::Unknown:
        return true;
    }
    return true;
}

QStringList RestorePlanEditWizard::PageEncryption::restoreItems() const
{
    // The source page writes its ticks into any restore plan, which is how they are read here
    // without knowing that page's model.
    if (QWizard* owner = wizard()) {
        if (auto* source = qobject_cast<PageBase*>(owner->page(sourcePage))) {
            TWB::Info::Plan::RestoreFile probe;
            if (source->initPlan(&probe) && !probe.restoreItems().isEmpty())
                return probe.restoreItems();
        }
    }
    return planItems;
}

void RestorePlanEditWizard::PageEncryption::initializePage()
{
    PageBase::initializePage();
    acceptedPassword.clear();
    refusal->hide();
    send(QString());
}

void RestorePlanEditWizard::PageEncryption::send(const QString& password)
{
    try {
        ICommand* command = TWB::Common::Communication::newCommand(QStringLiteral("CheckRestorePassword"), this,
            &PageEncryption::onCheckResult, QStringLiteral("Commnunication manager is 0x00"),
            QStringLiteral("Commnunication command don't registrate"));
        QJsonObject params {{QStringLiteral("id"), field(QStringLiteral("Field_CloudId")).toString()},
            {QStringLiteral("items"), QJsonArray::fromStringList(restoreItems())}};
        if (!password.isEmpty())
            params.insert(QStringLiteral("password"), password);
        command->setRequest(QJsonDocument(QJsonObject {{QStringLiteral("params"), params}}));
        pending = command;
        if (password.isEmpty())
            setState(State::Asking, tr("Checking whether the backup is encrypted..."));
        else
            setChecking(true);
        command->exec();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        setState(State::Unknown, tr("Cannot check the backup's password now: %1").arg(text));
    }
}

void RestorePlanEditWizard::PageEncryption::onCheckResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    command->deleteLater();
    // A reply to a request made before the page was entered again no longer counts.
    if (command != pending)
        return;
    pending = nullptr;
    const QString given = command->request()
                              .object()
                              .value(QStringLiteral("params"))
                              .toObject()
                              .value(QStringLiteral("password"))
                              .toString();
    try {
        const QJsonObject data = TWB::Common::Communication::replyData(*command);
        if (given.isEmpty()) {
            passwordKnown = data.value(QStringLiteral("passwordKnown")).toBool();
            if (!data.value(QStringLiteral("encrypted")).toBool())
                setState(State::Plain, tr("The backup is not encrypted: no password is needed."));
            else if (passwordKnown)
                setState(State::Encrypted,
                    tr("The backup is encrypted, and its password is known. Enter a password only to use another "
                       "one."));
            else
                setState(State::Encrypted, tr("The backup is encrypted. Enter the password it was made with."));
            return;
        }
        setChecking(false);
        if (!data.value(QStringLiteral("valid")).toBool()) {
            refusal->show();
            passwordEdit->setFocus();
            passwordEdit->selectAll();
            return;
        }
        acceptedPassword = given;
        // Only a password that still stands in the edit lets the wizard go on.
        if (wizard() && wizard()->currentPage() == this && password() == given)
            wizard()->next();
    } catch (const QString& text) {
        TWB::Common::Communication::logCommandFailure(*command, text);
        setChecking(false);
        if (given.isEmpty()) {
            setState(State::Unknown, tr("Cannot check the backup's password now: %1").arg(text));
        } else {
            refusal->setMessage(tr("Cannot check the password: %1").arg(text));
            refusal->show();
        }
    }
}

void RestorePlanEditWizard::PageEncryption::setState(State state, const QString& text)
{
    current = state;
    status->setText(text);
    const bool asks = state == State::Encrypted || state == State::Unknown;
    passwordLabel->setVisible(asks);
    passwordEdit->setVisible(asks);
    wheel->setVisible(state == State::Asking);
    wheel->animate(state == State::Asking);
    Q_EMIT completeChanged();
}

void RestorePlanEditWizard::PageEncryption::setChecking(bool on)
{
    checking = on;
    passwordEdit->setEnabled(!on);
    wheel->setVisible(on);
    wheel->animate(on);
    if (on) {
        refusal->hide();
        status->setText(tr("Checking the password..."));
    } else {
        setState(current,
            passwordKnown
                ? tr("The backup is encrypted, and its password is known. Enter a password only to use another one.")
                : tr("The backup is encrypted. Enter the password it was made with."));
    }
    Q_EMIT completeChanged();
}

bool RestorePlanEditWizard::PageEncryption::validatePage()
{
    if (checking)
        return false;
    // Without a word from the service the run itself tells a wrong password.
    if (current != State::Encrypted || password().isEmpty() || password() == acceptedPassword)
        return true;
    refusal->setMessage(tr("The password does not open the backup. Check the password and try again."));
    send(password());
    return false;
}

QString RestorePlanEditWizard::PageEncryption::summary()
{
    QString text;
    if (current == State::Plain)
        text = tr("The backup is not encrypted");
    else if (!password().isEmpty())
        text = tr("Password given");
    else if (current == State::Encrypted)
        text = tr("The password the service keeps");
    else
        return QString();
    return QStringLiteral("<tr><td>%1</td><td>%2</td></tr>").arg(tr("Encryption:"), text);
}

bool RestorePlanEditWizard::PageEncryption::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* restore = dynamic_cast<Restore*>(plan);
    if (!restore)
        return false;
    // A password left from an edited plan means nothing for a backup that has none.
    const QString given = current == State::Plain ? QString() : password();
    restore->setUseEncryption(!given.isEmpty());
    restore->setEncryptionPassword(given);
    return true;
}

bool RestorePlanEditWizard::PageEncryption::fromPlan(TWB::Info::Plan::Base* plan)
{
    const auto* restore = dynamic_cast<const Restore*>(plan);
    if (!restore)
        return false;
    if (const auto* files = dynamic_cast<const TWB::Info::Plan::RestoreFile*>(plan))
        planItems = files->restoreItems();
    setField(
        QLatin1String(FieldEncryptionPassword), restore->useEncryption() ? restore->encryptionPassword() : QString());
    return true;
}

} // namespace TWB::GUI
