#pragma once

#include "platform/plan/actions.h"
#include "platform/plan/base.h"
#include "platform/plan/storage_info.h"

namespace TWB::Info::Plan {

/// What backup plans have in common: compression, encryption, retention and the full-backup schedule.
class TWBPLATFORM_EXPORT Backup : public Base
{
public:
    /// Storage classes and tiers the plan asks of its back-end.
    class TWBPLATFORM_EXPORT StorageInfo final : public Plan::StorageInfo
    {
    public:
        enum AmazonS3StorageClass : int {
            Standard = 1,
            Glacier = 3,
            StandardIA = 4,
            OneZoneIA = 5,
            IntelligentTiering = 6,
            GlacierDeepArchive = 7,
            GlacierInstantRetrieval = 8,
        };
        enum AzureBlobStorageClass : int { AzureDefault = 0, AzureCool = 1, AzureArchive = 2 };

        bool useSSE() const { return m_useSSE; }
        void setUseSSE(bool use) { m_useSSE = use; }
        AmazonS3StorageClass storageClassAmazonS3() const { return m_amazon; }
        void setStorageClassAmazonS3(AmazonS3StorageClass storageClass) { m_amazon = storageClass; }
        AzureBlobStorageClass storageClassAzureBlob() const { return m_azure; }
        void setStorageClassAzureBlob(AzureBlobStorageClass storageClass) { m_azure = storageClass; }

        bool operator==(const StorageInfo& o) const
        {
            return sameAs(o) && m_useSSE == o.m_useSSE && m_amazon == o.m_amazon && m_azure == o.m_azure;
        }
        bool operator!=(const StorageInfo& o) const { return !(*this == o); }

    private:
        bool m_useSSE = false;
        AmazonS3StorageClass m_amazon = Standard;
        AzureBlobStorageClass m_azure = AzureDefault;
    };

    class TWBPLATFORM_EXPORT Encyption final
    {
    public:
        enum Type : int { AES128 = 0, AES192 = 1, AES256 = 2, DES64 = 3, DES112 = 4, TripleDES168 = 5 };

        bool isEnabled() const { return m_enabled; }
        void setEnabled(bool enabled) { m_enabled = enabled; }
        Type encryptionType() const { return m_type; }
        void setEncryptionType(Type type) { m_type = type; }
        QString password() const { return m_password; }
        void setPassword(const QString& password) { m_password = password; }

        bool operator==(const Encyption& o) const
        {
            return m_enabled == o.m_enabled && m_type == o.m_type && m_password == o.m_password;
        }
        bool operator!=(const Encyption& o) const { return !(*this == o); }

    private:
        bool m_enabled = false;
        Type m_type = AES256;
        QString m_password;
    };

    class TWBPLATFORM_EXPORT RetentionPolicy final
    {
    public:
        enum Type : int { Default = 0, Custom = 1 };

        /// An age in days, weeks or months.
        struct FileAge
        {
            enum Unit : int { Days = 0, Weeks = 1, Months = 2 };
            int age = 1;
            Unit unit = Months;
            bool operator==(const FileAge& o) const { return age == o.age && unit == o.unit; }
            bool operator!=(const FileAge& o) const { return !(*this == o); }
        };

        Type type() const { return m_type; }
        void setType(Type type) { m_type = type; }
        bool useDeleteOlder() const { return m_useDeleteOlder; }
        void setUseDeleteOlder(bool use) { m_useDeleteOlder = use; }
        FileAge deleteFileAge() const { return m_deleteFileAge; }
        void setDeleteFileAge(const FileAge& age) { m_deleteFileAge = age; }
        bool useKeepVersion() const { return m_useKeepVersion; }
        void setUseKeepVersion(bool use) { m_useKeepVersion = use; }
        int keepVersion() const { return m_keepVersion; }
        void setKeepVersion(int versions) { m_keepVersion = versions; }
        bool useKeepLastVersion() const { return m_useKeepLastVersion; }
        void setUseKeepLastVersion(bool use) { m_useKeepLastVersion = use; }
        bool useDeleteLocaly() const { return m_useDeleteLocaly; }
        void setUseDeleteLocaly(bool use) { m_useDeleteLocaly = use; }
        int deleteLocalyAfter() const { return m_deleteLocalyAfter; }
        void setDeleteLocalyAfter(int days) { m_deleteLocalyAfter = days; }
        bool useBackupDate() const { return m_useBackupDate; }
        void setUseBackupDate(bool use) { m_useBackupDate = use; }

        bool operator==(const RetentionPolicy& o) const;
        bool operator!=(const RetentionPolicy& o) const { return !(*this == o); }

    private:
        Type m_type = Default;
        bool m_useDeleteOlder = false;
        FileAge m_deleteFileAge;
        bool m_useKeepVersion = false;
        int m_keepVersion = 3;
        bool m_useKeepLastVersion = true;
        bool m_useDeleteLocaly = false;
        int m_deleteLocalyAfter = 30;
        bool m_useBackupDate = false;
    };

    int subtype() const override { return KindBackup; }

    Actions& actions() { return m_actions; }
    const Actions& actions() const { return m_actions; }
    Encyption& encryption() { return m_encryption; }
    const Encyption& encryption() const { return m_encryption; }
    RetentionPolicy& retentionPolicy() { return m_retention; }
    const RetentionPolicy& retentionPolicy() const { return m_retention; }
    StorageInfo& storageInfo() { return m_storageInfo; }
    const StorageInfo& storageInfo() const { return m_storageInfo; }
    Schedule& forceFullSchedule() { return m_forceFullSchedule; }
    const Schedule& forceFullSchedule() const { return m_forceFullSchedule; }

    bool useCompression() const { return m_useCompression; }
    void setUseCompression(bool use) { m_useCompression = use; }
    /// Block-level backup.
    bool useDifferentialUpload() const { return m_useDifferentialUpload; }
    void setUseDifferentialUpload(bool use) { m_useDifferentialUpload = use; }
    unsigned long long differentialBlockSize() const { return m_differentialBlockSize; }
    void setDifferentialBlockSize(unsigned long long size) { m_differentialBlockSize = size; }
    bool forceFullDiffSizeConditionEnable() const { return m_forceFullDiffSizeConditionEnable; }
    void setForceFullDiffSizeConditionEnable(bool enable) { m_forceFullDiffSizeConditionEnable = enable; }
    unsigned short forceFullDiffSizeCondition() const { return m_forceFullDiffSizeCondition; }
    void setForceFullDiffSizeCondition(unsigned short condition) { m_forceFullDiffSizeCondition = condition; }
    bool disableSnapshot() const { return m_disableSnapshot; }
    void setDisableSnapshot(bool disable) { m_disableSnapshot = disable; }
    /// Save the plan's configuration to the storage as well.
    bool savePlanInCloud() const { return m_savePlanInCloud; }
    void setSavePlanInCloud(bool save) { m_savePlanInCloud = save; }

    bool equals(const Base& other) const override;

protected:
    explicit Backup(int type);

    void writeFields(Xml::Writer& writer) const override;
    void readFields(Xml::Reader& reader, const QDomElement& root) override;

private:
    Actions m_actions;
    Encyption m_encryption;
    RetentionPolicy m_retention;
    StorageInfo m_storageInfo;
    Schedule m_forceFullSchedule;
    bool m_useCompression = true;
    bool m_useDifferentialUpload = false;
    unsigned long long m_differentialBlockSize = 1024 * 1024;
    bool m_forceFullDiffSizeConditionEnable = false;
    unsigned short m_forceFullDiffSizeCondition = 50;
    bool m_disableSnapshot = false;
    bool m_savePlanInCloud = false;
};

} // namespace TWB::Info::Plan
