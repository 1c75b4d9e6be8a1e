#include "storages/accounts/azure.h"

#include "platform/cloud/container_params.h"
#include "platform/cloud/endpoint_helper.h"
#include "platform/cloud/info.h"
#include "platform/crypt/local_password.h"
#include "platform/logging/twl_debug.h"

#include <QComboBox>
#include <QJsonObject>
#include <QLineEdit>
#include <QToolButton>

namespace TWB::GUI::Settings::Account {

Azure::Azure(QWidget* parent)
    : Info(TWL::Cloud::AzureBlob, parent)
{
    addField(tr("Storage account:"), QStringLiteral("UserName"));
    addField(tr("Endpoint:"), QStringLiteral("Endpoint"));
    addField(tr("Container:"), QStringLiteral("ContainerName"));
    addField(tr("Prefix:"), QStringLiteral("BackupPrefix"));
    addField(tr("Use SSL:"), QStringLiteral("UseSsl"), &Info::trueFalseDelegate);
}

Azure::Add::Add(QWidget* parent)
    : AmazonS3Compatible::Add(TWL::Cloud::AzureBlob, true, false, parent)
{
    setRowLabel(accessKey, tr("Storage account:"));
    setRowLabel(secretKey, tr("Access key:"));
    setRowLabel(bucket, tr("Container:"));
    addBucket->setToolTip(tr("Add new container"));
    endpoint->setText(TWL::Cloud::Info::AzureBlob().defaultEndpoint().toString());
    endpoint->setToolTip(tr("Azure's own unless the account is on Azure Stack or an emulator"));
}

QVariantMap Azure::Add::cloudConfig()
{
    QVariantMap config = Storages::Add::cloudConfig();
    config.insert(QStringLiteral("Username"), accessKey->text().trimmed());
    config.insert(QStringLiteral("Password"), secretKey->text().trimmed());
    config.insert(QStringLiteral("UseSsl"), useSsl);
    config.insert(QStringLiteral("Endpoint"), TWL::Utitlity::EndpointHelper::toPair(endpoint->text().trimmed()).first);
    config.insert(QStringLiteral("ContainerName"), bucket->currentText());
    config.insert(QStringLiteral("Type"), QString());
    return config;
}

QJsonObject Azure::Add::document() const
{
    return {
        {QStringLiteral("UserName"), accessKey->text().trimmed()},
        {QStringLiteral("Password"), SHARED::cryptNS::encrypt_local_password(secretKey->text().trimmed())},
        {QStringLiteral("Type"), QString()},
        {QStringLiteral("ContainerName"), bucket->currentText()},
        {QStringLiteral("UseSsl"), useSsl},
        {QStringLiteral("Endpoint"), TWL::Utitlity::EndpointHelper::toPair(endpoint->text().trimmed()).first},
    };
}

Storages::AddContainer* Azure::Add::addContainerDialog()
{
    auto dialog = AmazonS3Compatible::Add::addContainerDialog();
    dialog->setWindowTitle(tr("Add New Container"));
    dialog->setNote(tr("Container names are 3 to 63 lower-case letters, digits and hyphens."));
    return dialog;
}

QJsonObject Azure::Add::containerParams(Storages::AddContainer* dialog) const
{
    // New containers are private: backups are read through the account's key only.
    return TWL::Cloud::ContainerParams::AzureBlob(dialog->name(), QStringLiteral("private")).json();
}

void Azure::Add::onSetItem(const QModelIndex& index)
{
    displayName->setText(index.sibling(index.row(), 0).data().toString());
    const QJsonObject details = index.sibling(index.row(), 8).data().toJsonObject();
    accessKey->setText(details.value(QStringLiteral("UserName")).toString());
    useSsl = details.value(QStringLiteral("UseSsl")).toBool(true);
    if (!details.value(QStringLiteral("Endpoint")).toString().isEmpty())
        endpoint->setText(TWL::Utitlity::EndpointHelper::toEndpointWithScheme(
            details.value(QStringLiteral("Endpoint")).toString(), useSsl));
    const QString stored = details.value(QStringLiteral("Password")).toString();
    const QString secret = SHARED::cryptNS::decrypt_local_password(stored);
    secretKey->setText(secret);
    if (secret.isEmpty() && !stored.isEmpty()) {
        TWL::TwlDebug("TWB").error() << "Can't decrypt secret Key in account load. ID:" << id.toString();
        setErrorMessage(tr("Can't decrypt secret Key in account load."), true);
    }
    loadContainers();
    pendingContainer = details.value(QStringLiteral("ContainerName")).toString();
}

} // namespace TWB::GUI::Settings::Account
