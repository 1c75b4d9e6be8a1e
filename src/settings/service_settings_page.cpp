#include "settings/service_settings_page.h"

#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"

#include <QLabel>

namespace TWB::GUI::Settings {

using namespace TWB::Common::Communication;

void ServiceSettingsPage::sendOwned(ICommand& command)
{
    QObject::connect(&command, &ICommand::complite, &command, &QObject::deleteLater);
    QObject::connect(&command, &ICommand::error, &command, &QObject::deleteLater);
    QObject::connect(&command, &ICommand::timeout, &command, &QObject::deleteLater);
    command.exec();
}

ServiceSettingsPage::ServiceSettingsPage(const Commands& commands, QWidget* parent)
    : QWidget(parent)
    , controls(new QWidget(this))
    , errorLabel(new QLabel(this))
    , m_commands(commands)
{
    controls->setEnabled(false);
    errorLabel->setWordWrap(true);
    errorLabel->setStyleSheet(QStringLiteral("color: #c0392b"));
    errorLabel->hide();
}

void ServiceSettingsPage::loadSettings()
{
    controls->setEnabled(false);
    try {
        ICommand* command = newCommand(m_commands.load, this, &ServiceSettingsPage::onLoadResult);
        setCommandParams(*command, {{QStringLiteral("profile"), currentProfile()}});
        sendOwned(*command);
    } catch (const QString& text) {
        showError(text);
    }
}

void ServiceSettingsPage::onLoadResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    command->deleteLater();
    QJsonObject values;
    try {
        values = replyData(*command).value(m_commands.key).toObject();
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        showError(text);
        return;
    }
    m_filling = true;
    fill(values);
    m_filling = false;
    errorLabel->hide();
    controls->setEnabled(true);
    Q_EMIT loaded();
}

bool ServiceSettingsPage::canSave() const
{
    return !m_filling && controls->isEnabled();
}

bool ServiceSettingsPage::sendValues(const QJsonObject& values, const QVariant& tag)
{
    try {
        ICommand* command = newCommand(m_commands.save, this, &ServiceSettingsPage::onSaveResult);
        setCommandParams(*command, {{QStringLiteral("profile"), currentProfile()}, {m_commands.key, values}});
        command->setProperty("tag", tag);
        sendOwned(*command);
        return true;
    } catch (const QString& text) {
        showError(text);
        return false;
    }
}

void ServiceSettingsPage::onSaveResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    command->deleteLater();
    try {
        replyData(*command);
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        onSaveRefused();
        showError(text);
        return;
    }
    onSaved(command->property("tag"));
    errorLabel->hide();
    Q_EMIT saved();
}

void ServiceSettingsPage::showError(const QString& text)
{
    errorLabel->setText(failureText(text));
    errorLabel->show();
    Q_EMIT error(text);
}

} // namespace TWB::GUI::Settings
