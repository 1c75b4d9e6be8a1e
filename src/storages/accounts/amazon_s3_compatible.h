#pragma once

#include "storages/account_advanced.h"
#include "storages/storages_add.h"
#include "storages/storages_add_container.h"
#include "storages/storages_info.h"

#include <QSet>
#include <QValidator>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLineEdit;
class QToolButton;

namespace TWB::GUI::Settings::Account {

/// The view of an account of the S3 family.
class TWBCONSOLE_EXPORT AmazonS3Compatible : public Storages::Info
{
    Q_OBJECT
    Q_DISABLE_COPY(AmazonS3Compatible)
public:
    class Add;
    class AdvancedStorage;
    class AddContainer;
    class Validator;

    AmazonS3Compatible(TWL::Cloud::Type type, bool showEndpoint, QWidget* parent = nullptr);

    /// Whether the form of a type shows its endpoint, its signature and regions for new buckets.
    struct Traits
    {
        bool showEndpoint;
        bool showSignature;
        bool showRegion;
    };
    /// The traits of each member of the family; false for a type outside it.
    static bool traits(TWL::Cloud::Type type, Traits* traits);
};

/// Bucket names: letters, digits, "-", "." and "_", beginning with a letter or digit, never two dots in a row.
class TWBCONSOLE_EXPORT AmazonS3Compatible::Validator : public QValidator
{
    Q_OBJECT
    Q_DISABLE_COPY(Validator)
public:
    explicit Validator(QObject* parent = nullptr);
    State validate(QString& input, int& pos) const override;
};

/// The prefix, TLS and, where the service offers a choice, the signature version.
class TWBCONSOLE_EXPORT AmazonS3Compatible::AdvancedStorage : public Account::AdvancedStorage
{
    Q_OBJECT
    Q_DISABLE_COPY(AdvancedStorage)
public:
    AdvancedStorage(bool useSsl, const QString& prefix, bool disabled, QWidget* add, QWidget* parent = nullptr);
    AdvancedStorage(
        bool useSsl, const QString& prefix, bool disabled, QWidget* add, int signature, QWidget* parent = nullptr);
    /// 0 for AWS4, 1 for AWS2; 1 without the choice.
    int authType() const;
    QComboBox* signatureBox() const { return signature; }

private:
    QComboBox* signature = nullptr; // owned as a child
};

/// A new bucket: its name, and its region where the service has several.
class TWBCONSOLE_EXPORT AmazonS3Compatible::AddContainer : public Storages::AddContainer
{
    Q_OBJECT
    Q_DISABLE_COPY(AddContainer)
public:
    AddContainer(const QSet<QString>& existing, bool showRegion, TWL::Cloud::Type type, QWidget* parent = nullptr);
    QString location() const;
    QComboBox* regionBox() const { return region; }

public Q_SLOTS:
    void onDataChanged() override;

private:
    const QSet<QString> existing;
    QComboBox* region = nullptr; // owned as a child
};

/// The form of every S3-family account: keys, endpoint where the service needs one, and the bucket. A press
/// on the bucket list checks the keys by listing the buckets.
class TWBCONSOLE_EXPORT AmazonS3Compatible::Add : public Storages::Add
{
    Q_OBJECT
    Q_DISABLE_COPY(Add)
public:
    Add(TWL::Cloud::Type type, bool showEndpoint, bool showSignature, QWidget* parent = nullptr);

    bool canRequestPrefixes() const override;
    void lockWidgetsAfterError(bool lock) override;
    void lockWidgetsAfterSslOperation(bool lock) override;
    bool loadContainersFinished(TWL::Cloud::Operation::ListContainers* operation) override;
    QVariantMap cloudConfig() override;
    virtual void saveConfig();
    virtual Storages::AddContainer* addContainerDialog();

    QLineEdit* displayNameEdit() const { return displayName; }
    QLineEdit* accessKeyEdit() const { return accessKey; }
    QLineEdit* secretKeyEdit() const { return secretKey; }
    QLineEdit* endpointEdit() const { return endpoint; }
    QComboBox* bucketBox() const { return bucket; }
    QToolButton* addBucketButton() const { return addBucket; }
    bool isListLoaded() const { return listLoaded; }

public Q_SLOTS:
    void onAccept() override;
    void onSetItem(const QModelIndex& index) override;
    void onAdvancedClicked() override;
    void onDataChanged();
    void onCredsReset();
    void onEditingFinished();
    void onAddContainerClicked();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// The saved document of this form.
    virtual QJsonObject document() const;
    /// What createContainer() is given for the container the dialog names.
    virtual QJsonObject containerParams(Storages::AddContainer* dialog) const;
    /// Gives a row of the form another label, for back-ends that call their keys otherwise.
    void setRowLabel(QWidget* field, const QString& text);

    QFormLayout* formLayout; // owned by the dialog's layout
    QLineEdit* displayName; // owned as a child
    QLineEdit* accessKey; // owned as a child
    QLineEdit* secretKey; // owned as a child
    QLineEdit* endpoint; // owned as a child
    QComboBox* bucket; // owned as a child
    QToolButton* addBucket; // owned as a child
    QString pendingContainer;
    QStringList containers;
    bool useSsl = true;
    bool listLoaded = false;
    int signature = 0;
    const bool showSignature;
    const bool showEndpoint;
};

/// Amazon S3 itself: the form adds the Glacier archive option of older accounts and keeps the bucket's
/// lifecycle rules in step with it.
class TWBCONSOLE_EXPORT AmazonS3 : public AmazonS3Compatible
{
    Q_OBJECT
    Q_DISABLE_COPY(AmazonS3)
public:
    class Add;
    explicit AmazonS3(QWidget* parent = nullptr);
};

class TWBCONSOLE_EXPORT AmazonS3::Add : public AmazonS3Compatible::Add
{
    Q_OBJECT
    Q_DISABLE_COPY(Add)
public:
    explicit Add(QWidget* parent = nullptr);
    void saveConfig() override;
    QCheckBox* archiveBox() const { return archive; }

public Q_SLOTS:
    void onAccept() override;
    void onSetItem(const QModelIndex& index) override;

private:
    /// Brings the bucket's lifecycle rules for this prefix in line with the Glacier option, then saves.
    void loadLifecyclePolicy();
    void onLifecyclePolicyEditError(const QString& text);

    QCheckBox* archive; // owned as a child
    bool initialArchive = false;
    QString initialPrefix;
};

} // namespace TWB::GUI::Settings::Account
