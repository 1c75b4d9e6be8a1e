#include "settings/email_settings_page.h"

#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

using namespace TWB::Common::Communication;

namespace {

const QStringList securityKeys = {QStringLiteral("none"), QStringLiteral("starttls"), QStringLiteral("tls")};

} // namespace

EmailSettingsPage::EmailSettingsPage(QWidget* parent)
    : ServiceSettingsPage(
        {QStringLiteral("GetNoticeSettings"), QStringLiteral("SetNoticeSettings"), QStringLiteral("settings")}, parent)
{
    setWindowTitle(tr("Notifications"));

    auto* server = new QGroupBox(tr("Email notifications"), controls);
    host = new QLineEdit(server);
    host->setPlaceholderText(tr("smtp.example.com; empty sends no email"));
    port = new QSpinBox(server);
    port->setRange(0, 65535);
    port->setSpecialValueText(tr("Default"));
    port->setKeyboardTracking(false);
    security = new QComboBox(server);
    security->addItems({tr("None"), tr("STARTTLS"), tr("SSL/TLS")});
    user = new QLineEdit(server);
    password = new QLineEdit(server);
    password->setEchoMode(QLineEdit::Password);
    from = new QLineEdit(server);
    from->setPlaceholderText(tr("the user name when it is an address"));
    recipients = new QLineEdit(server);
    auto* separators = new QLabel(
        QStringLiteral("<small>%1</small>").arg(tr("To notify to multiple emails use ; or , as a separator")), server);
    testButton = new QPushButton(tr("Send test email"), server);
    testStatus = new QLabel(server);
    testStatus->setWordWrap(true);
    auto* test = new QHBoxLayout;
    test->addWidget(testButton);
    test->addWidget(testStatus, 1);

    auto* form = new QFormLayout(server);
    form->addRow(tr("SMTP server:"), host);
    form->addRow(tr("Port:"), port);
    form->addRow(tr("Security:"), security);
    form->addRow(tr("User name:"), user);
    form->addRow(tr("Password:"), password);
    form->addRow(tr("From:"), from);
    form->addRow(tr("Send to:"), recipients);
    form->addRow(QString(), separators);
    form->addRow(test);

    desktop = new QCheckBox(tr("Show a desktop notice when a plan fails or a missed plan starts late"), controls);
    auto* inner = new QVBoxLayout(controls);
    inner->setContentsMargins(0, 0, 0, 0);
    inner->addWidget(server);
    inner->addWidget(desktop);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(controls);
    layout->addWidget(errorLabel);
    layout->addStretch(1);

    // Names for those who drive the page, tests and accessibility tools alike.
    const QList<QPair<QWidget*, const char*>> names = {{host, "host"}, {port, "port"}, {security, "security"},
        {user, "user"}, {password, "password"}, {from, "from"}, {recipients, "recipients"}, {testButton, "testButton"},
        {testStatus, "testStatus"}, {desktop, "desktop"}, {errorLabel, "errorLabel"}};
    for (const auto& [widget, name] : names)
        widget->setObjectName(QLatin1String(name));
    for (QLineEdit* edit : {host, user, password, from, recipients})
        connect(edit, &QLineEdit::editingFinished, this, &EmailSettingsPage::save);
    connect(port, qOverload<int>(&QSpinBox::valueChanged), this, &EmailSettingsPage::save);
    connect(security, qOverload<int>(&QComboBox::currentIndexChanged), this, &EmailSettingsPage::save);
    connect(desktop, &QCheckBox::toggled, this, &EmailSettingsPage::save);
    connect(testButton, &QPushButton::clicked, this, &EmailSettingsPage::sendTestEmail);
}

EmailSettingsPage::~EmailSettingsPage()
{
    // The field that has the focus loses it while QWidget deletes the children, after this object's
    // own members are gone: its editingFinished must not reach save() then.
    for (QLineEdit* edit : {host, user, password, from, recipients})
        edit->disconnect(this);
}

QJsonObject EmailSettingsPage::values() const
{
    QJsonObject values {{QStringLiteral("Host"), host->text().trimmed()},
        {QStringLiteral("Port"), port->value() > 0 ? QString::number(port->value()) : QString()},
        {QStringLiteral("Security"), securityKeys.value(security->currentIndex())},
        {QStringLiteral("User"), user->text().trimmed()}, {QStringLiteral("From"), from->text().trimmed()},
        {QStringLiteral("To"), recipients->text().trimmed()},
        {QStringLiteral("DesktopNotifications"), desktop->isChecked() ? "true" : "false"}};
    // An empty field keeps the stored password: the service never tells it, so the field starts empty.
    if (!password->text().isEmpty())
        values.insert(QStringLiteral("Password"), password->text());
    return values;
}

void EmailSettingsPage::fill(const QJsonObject& settings)
{
    auto text = [&settings](const char* key) { return settings.value(QLatin1String(key)).toString(); };
    host->setText(text("Host"));
    port->setValue(text("Port").toInt());
    security->setCurrentIndex(qMax(0, securityKeys.indexOf(text("Security"))));
    user->setText(text("User"));
    password->clear();
    password->setPlaceholderText(
        settings.value(QStringLiteral("PasswordSet")).toBool() ? tr("(saved; type to change)") : QString());
    from->setText(text("From"));
    recipients->setText(text("To"));
    desktop->setChecked(text("DesktopNotifications") != QLatin1String("false"));
    lastSent = values();
}

void EmailSettingsPage::save()
{
    // Nothing is sent before the stored values were shown: the controls' own defaults would overwrite them.
    if (!canSave())
        return;
    const QJsonObject settings = values();
    if (settings == lastSent)
        return;
    if (sendValues(settings, settings.contains(QStringLiteral("Password"))))
        lastSent = settings;
}

void EmailSettingsPage::onSaveRefused()
{
    // What was refused stays in the fields for the user to put right, and is sent again then.
    lastSent = QJsonObject();
}

void EmailSettingsPage::onSaved(const QVariant& passwordSent)
{
    if (passwordSent.toBool()) {
        password->clear();
        password->setPlaceholderText(tr("(saved; type to change)"));
        lastSent.remove(QStringLiteral("Password"));
    }
}

void EmailSettingsPage::sendTestEmail()
{
    save();
    try {
        ICommand* command = newCommand(QStringLiteral("SendTestEmail"), this, &EmailSettingsPage::onTestResult);
        setCommandParams(*command, {{QStringLiteral("profile"), currentProfile()}});
        // The server may take its time to answer, or not at all: the service gives up after a minute.
        command->setTimeout(90 * 1000);
        sendOwned(*command);
        testButton->setEnabled(false);
        testStatus->setText(tr("Sending..."));
    } catch (const QString& text) {
        testStatus->setText(text);
        Q_EMIT testFinished(false, text);
    }
}

void EmailSettingsPage::onTestResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    command->deleteLater();
    testButton->setEnabled(true);
    QString text;
    bool ok = false;
    try {
        const QJsonObject data = replyData(*command);
        text = tr("The test email was sent to %1.").arg(data.value(QStringLiteral("to")).toString());
        ok = true;
    } catch (const QString& failure) {
        logCommandFailure(*command, failure);
        text = failure;
    }
    testStatus->setStyleSheet(ok ? QString() : QStringLiteral("color: #c0392b"));
    testStatus->setText(text);
    Q_EMIT testFinished(ok, text);
}

QString EmailSettingsPage::failureText(const QString& reason) const
{
    return tr("The notification settings could not be read or saved: %1").arg(reason);
}

} // namespace TWB::GUI::Settings
