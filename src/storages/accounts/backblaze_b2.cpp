#include "storages/accounts/backblaze_b2.h"

#include "platform/cloud/container_params.h"
#include "platform/cloud/info.h"
#include "platform/crypt/local_password.h"
#include "platform/logging/twl_debug.h"

#include <QComboBox>
#include <QJsonObject>
#include <QLineEdit>

namespace TWB::GUI::Settings::Account {

BackblazeB2::BackblazeB2(QWidget* parent)
    : Info(TWL::Cloud::BackBlaze, parent)
{
    addField(tr("Key ID:"), QStringLiteral("AccountId"));
    addField(tr("Bucket:"), QStringLiteral("ContainerName"));
    addField(tr("Prefix:"), QStringLiteral("BackupPrefix"));
}

BackblazeB2::Add::Add(QWidget* parent)
    : AmazonS3Compatible::Add(TWL::Cloud::BackBlaze, false, false, parent)
{
    setRowLabel(accessKey, tr("Key ID:"));
    setRowLabel(secretKey, tr("Application key:"));
    // B2 has one address; the hidden endpoint only completes the form.
    endpoint->setText(TWL::Cloud::Info::BackBlaze().defaultEndpoint().toString());
}

QVariantMap BackblazeB2::Add::cloudConfig()
{
    QVariantMap config = Storages::Add::cloudConfig();
    config.insert(QStringLiteral("AccountId"), accessKey->text().trimmed());
    config.insert(QStringLiteral("ApplicationKey"), secretKey->text().trimmed());
    config.insert(QStringLiteral("ContainerName"), bucket->currentText());
    return config;
}

QJsonObject BackblazeB2::Add::document() const
{
    return {
        {QStringLiteral("AccountId"), accessKey->text().trimmed()},
        {QStringLiteral("ApplicationKey"), SHARED::cryptNS::encrypt_local_password(secretKey->text().trimmed())},
        {QStringLiteral("ContainerName"), bucket->currentText()},
        {QStringLiteral("ContainerId"), QString()},
    };
}

QJsonObject BackblazeB2::Add::containerParams(Storages::AddContainer* dialog) const
{
    return TWL::Cloud::ContainerParams::BackBlaze(dialog->name(), QStringLiteral("allPrivate")).json();
}

void BackblazeB2::Add::onSetItem(const QModelIndex& index)
{
    displayName->setText(index.sibling(index.row(), 0).data().toString());
    const QJsonObject details = index.sibling(index.row(), 8).data().toJsonObject();
    accessKey->setText(details.value(QStringLiteral("AccountId")).toString());
    const QString stored = details.value(QStringLiteral("ApplicationKey")).toString();
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
