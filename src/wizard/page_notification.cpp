#include "wizard/page_notification.h"

#include "frame/application.h"
#include "platform/plan/base.h"
#include "platform/settings/default_settings.h"
#include "platform/soap/email_addresses_confirmed.h"
#include "widgets/email_validator.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QRadioButton>
#include <QVBoxLayout>

namespace TWB::GUI {

const char* PlanWizardBase::PageNotification::FieldUseEnabled = "Field_NotificationUseEnabled";
const char* PlanWizardBase::PageNotification::FieldBackupFails = "Field_NotificationBackupFails";
const char* PlanWizardBase::PageNotification::FieldAllCase = "Field_NotificationAllCase";
const char* PlanWizardBase::PageNotificationStandalone::FieldEmail = "Field_NotificationEmail";
const char* PlanWizardBase::PageNotificationStandalone::FieldUserName = "Field_NotificationUserName";
const char* PlanWizardBase::PageNotificationStandalone::FieldEmailSubject = "Field_NotificationEmailSubject";
const char* PlanWizardBase::PageNotificationStandalone::FieldGenDetailedReport
    = "Field_NotificationNeedToGenerateDetailedReport";

PlanWizardBase::PageNotification::PageNotification(QWidget* parent)
    : PageBase(tr("Notification"), parent)
    , options(new QWidget(this))
    , useEnabled(new QCheckBox(tr("I want to receive a notification email when plan completes"), this))
    , backupFails(new QRadioButton(tr("When plan fails"), options))
    , allCase(new QRadioButton(tr("In all cases"), options))
{
    setSubTitle(tr("Specify notification options"));
    auto layout = new QVBoxLayout(this);
    layout->addWidget(useEnabled);
    auto inner = new QVBoxLayout(options);
    inner->setContentsMargins(20, 0, 0, 0);
    inner->addWidget(backupFails);
    inner->addWidget(allCase);
    layout->addWidget(options);
    layout->addStretch(1);
    backupFails->setChecked(true);
    options->setEnabled(false);
    registerField(QLatin1String(FieldUseEnabled), useEnabled);
    registerField(QLatin1String(FieldBackupFails), backupFails);
    registerField(QLatin1String(FieldAllCase), allCase);
    connect(useEnabled, &QCheckBox::toggled, this, [this](bool on) {
        options->setEnabled(on);
        Q_EMIT completeChanged();
    });
}

int PlanWizardBase::PageNotification::nextId() const
{
    return 6;
}

bool PlanWizardBase::PageNotification::enabled() const
{
    return field(QLatin1String(FieldUseEnabled)).toBool();
}

bool PlanWizardBase::PageNotification::initPlan(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return false;
    auto& notification = plan->notification();
    if (!enabled())
        notification.setType(TWB::Info::Plan::Notification::Never);
    else if (field(QLatin1String(FieldBackupFails)).toBool())
        notification.setType(TWB::Info::Plan::Notification::OnFailure);
    else if (field(QLatin1String(FieldAllCase)).toBool())
        notification.setType(TWB::Info::Plan::Notification::Always);
    return true;
}

bool PlanWizardBase::PageNotification::fromPlan(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return false;
    const int type = plan->notification().type();
    setField(QLatin1String(FieldUseEnabled), type != TWB::Info::Plan::Notification::Never);
    if (type == TWB::Info::Plan::Notification::OnFailure)
        setField(QLatin1String(FieldBackupFails), true);
    else if (type == TWB::Info::Plan::Notification::Always)
        setField(QLatin1String(FieldAllCase), true);
    return true;
}

QString PlanWizardBase::PageNotification::summary()
{
    const QString value = QStringLiteral("<tr><td></td><td>%1</td></tr>");
    QString rows = QStringLiteral("<tr><td>%1</td><td></td></tr>").arg(tr("Notification options:"));
    if (!enabled())
        rows += value.arg(tr("Never send email notification"));
    else if (field(QLatin1String(FieldBackupFails)).toBool())
        rows += value.arg(tr("When plan fails"));
    else
        rows += value.arg(tr("In all cases"));
    return rows;
}

PlanWizardBase::PageNotificationStandalone::PageNotificationStandalone(QWidget* parent)
    : PageNotification(parent)
    , email(new QLineEdit(options))
    , userName(new QLineEdit(options))
    , subject(new QLineEdit(options))
    , detailedReport(new QCheckBox(tr("Generate detailed report"), options))
{
    auto form = new QFormLayout;
    form->setContentsMargins(0, 8, 0, 0);
    form->addRow(tr("Email:"), email);
    auto separators = new QLabel(
        QStringLiteral("<small>%1</small>").arg(tr("To notify to multiple emails use ; or , as a separator")), options);
    form->addRow(QString(), separators);
    form->addRow(tr("User name:"), userName);
    form->addRow(tr("Email subject:"), subject);
    auto macros = new QLabel(QStringLiteral("<table><tr><td><small>%1</small></td></tr><tr><td><small>%COMPUTER_NAME%"
                                            "</small></td></tr><tr><td><small>%RESULT%</small></td></tr><tr><td><small>"
                                            "%PLAN_NAME%</small></td></tr></table>")
                                 .arg(tr("Available macroses:")),
        options);
    form->addRow(QString(), macros);
    form->addRow(QString(), detailedReport);
    static_cast<QVBoxLayout*>(options->layout())->addLayout(form);

    email->setText(Application::licenseMail());
    if (auto settings = DefaultSettings::instance()) {
        if (email->text().isEmpty())
            email->setText(settings->getNotifEmail());
        userName->setText(settings->getNotifUserName());
    }
    subject->setText(QStringLiteral("Tidewrack Backup %RESULT%"));
    registerField(QLatin1String(FieldEmail), email);
    registerField(QLatin1String(FieldUserName), userName);
    registerField(QLatin1String(FieldEmailSubject), subject);
    registerField(QLatin1String(FieldGenDetailedReport), detailedReport);
    for (QLineEdit* edit : {email, userName, subject})
        connect(edit, &QLineEdit::textEdited, this, &PageNotificationStandalone::completeChanged);
}

void PlanWizardBase::PageNotificationStandalone::initializePage()
{
    PageNotification::initializePage();
    // The detailed report lists the files of a file backup; other plans have no such list.
    const bool fileBackup = planType() != 1 || wizard()->property("Property_BackupPlanType").toInt() == 0;
    detailedReport->setVisible(fileBackup);
}

bool PlanWizardBase::PageNotificationStandalone::isComplete() const
{
    if (!enabled())
        return true;
    EmailValidator validator;
    const QStringList groups = field(QLatin1String(FieldEmail)).toString().split(QLatin1Char(';'));
    for (const QString& group : groups) {
        const QStringList parts = group.split(QLatin1Char(','));
        for (QString part : parts) {
            int position = 0;
            if (validator.validate(part, position) != QValidator::Acceptable)
                return false;
        }
    }
    return !field(QLatin1String(FieldEmailSubject)).toString().isEmpty()
        && !field(QLatin1String(FieldUserName)).toString().isEmpty();
}

bool PlanWizardBase::PageNotificationStandalone::validatePage()
{
    if (!enabled())
        return true;
    const QString address = field(QLatin1String(FieldEmail)).toString();
    const QString name = field(QLatin1String(FieldUserName)).toString();
    TWB::SOAP::EmailAddressesConfirmed confirmation;
    const bool allowed = confirmation.isAllowed(address, name);
    if (confirmation.responseStatus() != 200) {
        QMessageBox::information(this, tr("Information"),
            tr("Cannot reach %1 email service, check connection or disable notifications")
                .arg(Application::companyName()),
            QMessageBox::Ok);
        return false;
    }
    if (!allowed) {
        QMessageBox::information(this, tr("Information"),
            QStringLiteral("<table><tr><td>%1 %2</td></tr><tr><td>%3</td></tr><tr><td>%4</td></tr></table>")
                .arg(tr("Confirmation email is sent to:"), address.toHtmlEscaped(),
                    tr("Please check your email to confirm your registration."),
                    tr("You will not receive notification until you confirm your email address.")),
            QMessageBox::Ok);
    }
    if (auto settings = DefaultSettings::instance()) {
        settings->setNotifEmail(address);
        settings->setNotifUserName(name);
    }
    return true;
}

QString PlanWizardBase::PageNotificationStandalone::summary()
{
    QString rows = PageNotification::summary();
    if (!enabled())
        return rows;
    rows += QStringLiteral("<tr><td></td><td>%1 %2</td></tr>")
                .arg(tr("Send notification to"), field(QLatin1String(FieldEmail)).toString().toHtmlEscaped());
    if (field(QLatin1String(FieldGenDetailedReport)).toBool())
        rows += QStringLiteral("<tr><td></td><td>Generate detailed report</td></tr>");
    return rows;
}

bool PlanWizardBase::PageNotificationStandalone::initPlan(TWB::Info::Plan::Base* plan)
{
    if (!PageNotification::initPlan(plan))
        return false;
    if (!enabled())
        return true;
    plan->notification().setSubject(field(QLatin1String(FieldEmailSubject)).toString());
    plan->notification().setGenerateDetailedReport(field(QLatin1String(FieldGenDetailedReport)).toBool());
    return true;
}

bool PlanWizardBase::PageNotificationStandalone::fromPlan(TWB::Info::Plan::Base* plan)
{
    if (!PageNotification::fromPlan(plan))
        return false;
    if (!plan->notification().subject().isEmpty())
        setField(QLatin1String(FieldEmailSubject), plan->notification().subject());
    setField(QLatin1String(FieldGenDetailedReport), plan->notification().generateDetailedReport());
    return true;
}

} // namespace TWB::GUI
