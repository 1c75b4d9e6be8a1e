#pragma once

#include "storages/accounts/amazon_s3_compatible.h"

class QCheckBox;
class QComboBox;
class QLineEdit;

namespace TWB::GUI::Settings::Account {

/// The view of an account of the OpenStack Swift family: OpenStack itself and the providers that run it.
class TWBCONSOLE_EXPORT OpenStack : public Storages::Info
{
    Q_OBJECT
    Q_DISABLE_COPY(OpenStack)
public:
    class Add;
    class AdvancedStorage;

    explicit OpenStack(TWL::Cloud::Type type, QWidget* parent = nullptr);

    /// How a provider signs in: its usual authentication version, whether the user may pick another, and
    /// what it calls the secret.
    struct Traits
    {
        int authVersion;
        bool chooseVersion;
        bool secretIsApiKey;
    };
    /// The traits of each member with a form; false for a type without one (HP Helion among them).
    static bool traits(TWL::Cloud::Type type, Traits* traits);
    /// "Version 1 (TempAuth)" and so on, for the view and the form.
    static QString versionText(const QVariant& version);
};

/// The prefix, and whether the storage is reached through the provider's internal network.
class TWBCONSOLE_EXPORT OpenStack::AdvancedStorage : public Account::Advanced
{
    Q_OBJECT
    Q_DISABLE_COPY(AdvancedStorage)
public:
    AdvancedStorage(bool internalUrl, const QString& prefix, bool disabled, QWidget* add, QWidget* parent = nullptr);
    bool useInternalUrl() const;
    QCheckBox* internalBox() const { return internal; }

private:
    QCheckBox* internal; // owned as a child
};

/// The form of a Swift account: where to sign in (the identity URL, or the provider's location), the user and
/// the key, the tenant or project and domain where Keystone needs them, the region, and the container. A press
/// on the container list signs in and lists the containers, which is the account's check.
class TWBCONSOLE_EXPORT OpenStack::Add : public AmazonS3Compatible::Add
{
    Q_OBJECT
    Q_DISABLE_COPY(Add)
public:
    explicit Add(TWL::Cloud::Type type, QWidget* parent = nullptr);

    QVariantMap cloudConfig() override;
    Storages::AddContainer* addContainerDialog() override;

    QComboBox* locationBox() const { return location; }
    QComboBox* versionBox() const { return version; }
    QLineEdit* tenantEdit() const { return tenant; }
    QLineEdit* domainEdit() const { return domain; }
    QLineEdit* regionEdit() const { return region; }
    /// 1, 2 or 3.
    int authVersion() const;

public Q_SLOTS:
    void onSetItem(const QModelIndex& index) override;
    void onAdvancedClicked() override;

protected:
    QJsonObject document() const override;
    QJsonObject containerParams(Storages::AddContainer* dialog) const override;

private:
    void onVersionChanged();
    void onLocationChosen();
    void onEndpointEdited();

    QComboBox* location; // owned as a child
    QComboBox* version; // owned as a child
    QLineEdit* tenant; // owned as a child
    QLineEdit* domain; // owned as a child
    QLineEdit* region; // owned as a child
    bool internalUrl = false;
    bool chooseVersion = true;
};

} // namespace TWB::GUI::Settings::Account
