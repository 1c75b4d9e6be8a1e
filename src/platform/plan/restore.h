#pragma once

#include "platform/plan/base.h"
#include "platform/plan/storage_info.h"

#include <QDateTime>

namespace TWB::Info::Plan {

/// What restore plans have in common: which version, the backup's password, and the plan's fate.
class TWBPLATFORM_EXPORT Restore : public Base
{
public:
    enum RestoreType : int { LatestVersion = 0, PointInTime = 1 };
    /// What becomes of the plan after its run.
    enum DeleteType : int { KeepPlan = 0, DeleteAfterRun = 1 };

    /// How archived data is brought back before it is restored.
    class TWBPLATFORM_EXPORT StorageInfo final : public Plan::StorageInfo
    {
    public:
        /// NoGlacier skips archived objects; the others bring them back at that retrieval tier first.
        enum Type : int { NoGlacier = 0, RetrievalStandard = 1, RetrievalBulk = 2, RetrievalExpedited = 3 };

        Type type() const { return m_type; }
        void setType(Type type) { m_type = type; }

        bool operator==(const StorageInfo& o) const { return sameAs(o) && m_type == o.m_type; }
        bool operator!=(const StorageInfo& o) const { return !(*this == o); }

    private:
        Type m_type = NoGlacier;
    };

    int subtype() const override { return KindRestore; }

    RestoreType restoreType() const { return m_restoreType; }
    void setRestoreType(RestoreType type) { m_restoreType = type; }
    QDateTime pointInTime() const { return m_pointInTime; }
    void setPointInTime(const QDateTime& time) { m_pointInTime = time; }
    bool useEncryption() const { return m_useEncryption; }
    void setUseEncryption(bool use) { m_useEncryption = use; }
    QString encryptionPassword() const { return m_encryptionPassword; }
    void setEncryptionPassword(const QString& password) { m_encryptionPassword = password; }
    DeleteType deletePlan() const { return m_deletePlan; }
    void setDeletePlan(DeleteType type) { m_deletePlan = type; }
    StorageInfo& storageInfo() { return m_storageInfo; }
    const StorageInfo& storageInfo() const { return m_storageInfo; }

    bool equals(const Base& other) const override;

protected:
    explicit Restore(int type);

    void writeFields(Xml::Writer& writer) const override;
    void readFields(Xml::Reader& reader, const QDomElement& root) override;

private:
    RestoreType m_restoreType = LatestVersion;
    QDateTime m_pointInTime;
    bool m_useEncryption = false;
    QString m_encryptionPassword;
    DeleteType m_deletePlan = KeepPlan;
    StorageInfo m_storageInfo;
};

} // namespace TWB::Info::Plan
