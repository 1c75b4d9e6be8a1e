#pragma once

#include "backup_wizard/backup_plan_edit_wizard.h"
#include "platform/cloud/cloud_type.h"
#include "platform/plan/backup.h"
#include "wizard/page_base.h"

#include <QDateTime>
#include <QSet>
#include <QStringList>
#include <QUuid>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;

namespace TWB::GUI {

class AttentionFrame;
class CheckBox;

/// Compression and encryption of a backup plan, and the options only some back-ends have: storage
/// class or access tier, server side encryption and S3 Transfer Acceleration. Those depend on the
/// storage chosen on the first page, so they are rebuilt each time the page is entered.
class TWBCONSOLE_EXPORT BackupPlanEditWizard::PageCompressionEndEncryption : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageCompressionEndEncryption)
public:
    // The names are odd, but saved wizards and other pages know them as they are.
    static const char* FieldUseCompression;
    static const char* FieldUseEncryption;
    static const char* FieldEncryptionType;
    static const char* FieldEncryptionPassword;
    static const char* FieldEncryptionConfirmPassword;
    static const char* FieldUseSSE;
    static const char* FieldUseS3Acceleration;
    /// Not a registered field: the storage class is the combo box's current data.
    static const char* FieldStorageClass;

    /// Untranslated names of Backup::Encyption::Type, by value; the combo box offers the first three.
    static const QStringList EncryptionType;
    /// Back-ends that take Amazon's storage classes and server side encryption.
    static const QSet<TWL::Cloud::Type> AmazonTypes;

    explicit PageCompressionEndEncryption(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    bool validatePage() override;
    void initializePage() override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

Q_SIGNALS:
    void setVisibleSSE(bool visible);
    void setVisibleS3Acceleration(bool visible);
    void setVisibleStorageClass(bool visible);
    void setAttentionVisible(bool visible);

public Q_SLOTS:
    void onDataChanged();

protected:
    void addStorageClassToComboBox(
        const QString& text, TWB::Info::Plan::Backup::StorageInfo::AmazonS3StorageClass storageClass);
    void addStorageClassToComboBox(
        const QString& text, TWB::Info::Plan::Backup::StorageInfo::AzureBlobStorageClass storageClass);
    void setAmazonS3StorageClassInfo();
    void setAzureStorageClassInfo();
    /// "AzureAccountType" of the account's additional settings, or empty when anything is missing.
    QString azureAccountType(const QUuid& id) const;

private:
    int cloudType() const;
    QString password() const;
    bool encryptionOn() const;
    /// Adds the item and selects it when it is the class the plan holds.
    void addStorageClassItem(const QString& text, int storageClass, int stored, const QString& toolTip);
    /// The text of the algorithm the combo box shows.
    QString encryptionTypeText() const;

    QCheckBox* compression; // owned by parent-child
    QCheckBox* encryption; // owned by parent-child
    QComboBox* encryptionType; // owned by parent-child
    QLineEdit* passwordEdit; // owned by parent-child
    QLineEdit* confirmEdit; // owned by parent-child
    QCheckBox* sse; // owned by parent-child
    CheckBox* acceleration; // owned by parent-child
    QLabel* storageClassLabel; // owned by parent-child
    QComboBox* storageClass; // owned by parent-child
    QLabel* storageClassDescription; // owned by parent-child
    AttentionFrame* previewFrame; // owned by parent-child

    TWB::Info::Plan::Backup::StorageInfo::AmazonS3StorageClass storedAmazonClass
        = TWB::Info::Plan::Backup::StorageInfo::Standard;
    TWB::Info::Plan::Backup::StorageInfo::AzureBlobStorageClass storedAzureTier
        = TWB::Info::Plan::Backup::StorageInfo::AzureDefault;
    QString passwordOnEntry;
    bool passwordUnchanged = false;
    bool isFilePlan = true;
    /// True while one of the password questions is on the screen: events keep flowing under a sheet.
    bool messageOpen = false;
    QDateTime reBackupModifiedSince;
};

} // namespace TWB::GUI
