#pragma once

#include "storages/accounts/amazon_s3_compatible.h"

namespace TWB::GUI::Settings::Account {

/// The view of a Backblaze B2 account.
class TWBCONSOLE_EXPORT BackblazeB2 : public Storages::Info
{
    Q_OBJECT
    Q_DISABLE_COPY(BackblazeB2)
public:
    class Add;
    explicit BackblazeB2(QWidget* parent = nullptr);
};

/// A Backblaze B2 account: the key's id, the application key and a bucket. A press on the bucket list
/// checks the key.
class TWBCONSOLE_EXPORT BackblazeB2::Add : public AmazonS3Compatible::Add
{
    Q_OBJECT
    Q_DISABLE_COPY(Add)
public:
    explicit Add(QWidget* parent = nullptr);
    QVariantMap cloudConfig() override;

public Q_SLOTS:
    void onSetItem(const QModelIndex& index) override;

protected:
    QJsonObject document() const override;
    QJsonObject containerParams(Storages::AddContainer* dialog) const override;
};

} // namespace TWB::GUI::Settings::Account
