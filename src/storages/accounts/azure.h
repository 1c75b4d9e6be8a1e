#pragma once

#include "storages/accounts/amazon_s3_compatible.h"

namespace TWB::GUI::Settings::Account {

/// The view of an Azure Blob account.
class TWBCONSOLE_EXPORT Azure : public Storages::Info
{
    Q_OBJECT
    Q_DISABLE_COPY(Azure)
public:
    class Add;
    explicit Azure(QWidget* parent = nullptr);
};

/// An Azure storage account: its name, its access key and a container. The endpoint stays at Azure's
/// own unless the account lives on Azure Stack or an emulator. A press on the container list checks
/// the key, as for S3.
class TWBCONSOLE_EXPORT Azure::Add : public AmazonS3Compatible::Add
{
    Q_OBJECT
    Q_DISABLE_COPY(Add)
public:
    explicit Add(QWidget* parent = nullptr);
    QVariantMap cloudConfig() override;
    Storages::AddContainer* addContainerDialog() override;

public Q_SLOTS:
    void onSetItem(const QModelIndex& index) override;

protected:
    QJsonObject document() const override;
    QJsonObject containerParams(Storages::AddContainer* dialog) const override;
};

} // namespace TWB::GUI::Settings::Account
