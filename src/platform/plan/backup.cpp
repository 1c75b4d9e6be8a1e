#include "platform/plan/backup.h"

#include "platform/plan/plan_xml_p.h"

#include <limits>

namespace TWB::Info::Plan {

Action::~Action() = default;
StorageInfo::~StorageInfo() = default;

bool Backup::RetentionPolicy::operator==(const RetentionPolicy& o) const
{
    return m_type == o.m_type && m_useDeleteOlder == o.m_useDeleteOlder && m_deleteFileAge == o.m_deleteFileAge
        && m_useKeepVersion == o.m_useKeepVersion && m_keepVersion == o.m_keepVersion
        && m_useKeepLastVersion == o.m_useKeepLastVersion && m_useDeleteLocaly == o.m_useDeleteLocaly
        && m_deleteLocalyAfter == o.m_deleteLocalyAfter && m_useBackupDate == o.m_useBackupDate;
}

Backup::Backup(int type)
    : Base(type)
{ }

bool Backup::equals(const Base& other) const
{
    const auto* o = dynamic_cast<const Backup*>(&other);
    return o && Base::equals(other) && m_actions == o->m_actions && m_encryption == o->m_encryption
        && m_retention == o->m_retention && m_storageInfo == o->m_storageInfo
        && m_forceFullSchedule == o->m_forceFullSchedule && m_useCompression == o->m_useCompression
        && m_useDifferentialUpload == o->m_useDifferentialUpload
        && m_differentialBlockSize == o->m_differentialBlockSize
        && m_forceFullDiffSizeConditionEnable == o->m_forceFullDiffSizeConditionEnable
        && m_forceFullDiffSizeCondition == o->m_forceFullDiffSizeCondition && m_disableSnapshot == o->m_disableSnapshot
        && m_savePlanInCloud == o->m_savePlanInCloud;
}

namespace {

void writeAction(Xml::Writer& w, const char* name, const Action& action)
{
    w.begin(name);
    w.boolean("Enabled", action.isEnabled());
    w.text("Program", action.program());
    w.text("Arguments", action.arguments());
}

void readAction(Xml::Reader& r, const QDomElement& e, Action& action)
{
    action.setEnabled(r.boolean(e, "Enabled", action.isEnabled()));
    action.setProgram(r.text(e, "Program"));
    action.setArguments(r.text(e, "Arguments"));
}

} // namespace

void Backup::writeFields(Xml::Writer& w) const
{
    Base::writeFields(w);
    w.begin("Backup");
    w.boolean("UseCompression", m_useCompression);
    w.boolean("UseDifferentialUpload", m_useDifferentialUpload);
    w.unsignedNumber("DifferentialBlockSize", m_differentialBlockSize);
    w.boolean("ForceFullDiffSizeConditionEnabled", m_forceFullDiffSizeConditionEnable);
    w.number("ForceFullDiffSizeCondition", m_forceFullDiffSizeCondition);
    w.boolean("DisableSnapshot", m_disableSnapshot);
    w.boolean("SavePlanInCloud", m_savePlanInCloud);
    w.schedule("ForceFullSchedule", m_forceFullSchedule);

    w.begin("Encryption");
    w.boolean("Enabled", m_encryption.isEnabled());
    w.number("Algorithm", m_encryption.encryptionType());
    w.text("Password", m_encryption.password());
    w.end();

    w.begin("Retention");
    w.number("Type", m_retention.type());
    w.boolean("UseDeleteOlder", m_retention.useDeleteOlder());
    w.number("DeleteOlderAge", m_retention.deleteFileAge().age);
    w.number("DeleteOlderUnit", m_retention.deleteFileAge().unit);
    w.boolean("UseKeepVersions", m_retention.useKeepVersion());
    w.number("KeepVersions", m_retention.keepVersion());
    w.boolean("UseKeepLastVersion", m_retention.useKeepLastVersion());
    w.boolean("UseDeleteLocallyDeleted", m_retention.useDeleteLocaly());
    w.number("DeleteLocallyDeletedAfterDays", m_retention.deleteLocalyAfter());
    w.boolean("UseBackupDate", m_retention.useBackupDate());
    w.end();

    w.begin("StorageInfo");
    w.boolean("UseS3Accelerated", m_storageInfo.useS3Accelerated());
    w.boolean("UseSSE", m_storageInfo.useSSE());
    w.number("AmazonS3StorageClass", m_storageInfo.storageClassAmazonS3());
    w.number("AzureBlobStorageClass", m_storageInfo.storageClassAzureBlob());
    w.end();

    w.begin("Actions");
    writeAction(w, "Pre", m_actions.pre());
    w.boolean("TerminateOnFailure", m_actions.pre().terminateOnFailure());
    w.end();
    writeAction(w, "Post", m_actions.post());
    w.boolean("RunOnBackupFailure", m_actions.post().runOnBackupFailure());
    w.end();
    w.end();
    w.end();
}

void Backup::readFields(Xml::Reader& r, const QDomElement& root)
{
    Base::readFields(r, root);
    const QDomElement e = Xml::Reader::child(root, "Backup");
    if (e.isNull())
        return;
    m_useCompression = r.boolean(e, "UseCompression", m_useCompression);
    m_useDifferentialUpload = r.boolean(e, "UseDifferentialUpload", m_useDifferentialUpload);
    m_differentialBlockSize = r.unsignedNumber(e, "DifferentialBlockSize", m_differentialBlockSize);
    m_forceFullDiffSizeConditionEnable
        = r.boolean(e, "ForceFullDiffSizeConditionEnabled", m_forceFullDiffSizeConditionEnable);
    m_forceFullDiffSizeCondition = static_cast<unsigned short>(r.number(
        e, "ForceFullDiffSizeCondition", m_forceFullDiffSizeCondition, 0, std::numeric_limits<unsigned short>::max()));
    m_disableSnapshot = r.boolean(e, "DisableSnapshot", m_disableSnapshot);
    m_savePlanInCloud = r.boolean(e, "SavePlanInCloud", m_savePlanInCloud);
    r.schedule(e, "ForceFullSchedule", m_forceFullSchedule);

    const QDomElement encryption = Xml::Reader::child(e, "Encryption");
    if (!encryption.isNull()) {
        m_encryption.setEnabled(r.boolean(encryption, "Enabled", m_encryption.isEnabled()));
        m_encryption.setEncryptionType(
            Encyption::Type(r.number(encryption, "Algorithm", m_encryption.encryptionType())));
        m_encryption.setPassword(r.text(encryption, "Password"));
    }

    const QDomElement retention = Xml::Reader::child(e, "Retention");
    if (!retention.isNull()) {
        RetentionPolicy& p = m_retention;
        p.setType(RetentionPolicy::Type(r.number(retention, "Type", p.type())));
        p.setUseDeleteOlder(r.boolean(retention, "UseDeleteOlder", p.useDeleteOlder()));
        RetentionPolicy::FileAge age = p.deleteFileAge();
        age.age = int(r.number(retention, "DeleteOlderAge", age.age));
        age.unit = RetentionPolicy::FileAge::Unit(r.number(retention, "DeleteOlderUnit", age.unit));
        p.setDeleteFileAge(age);
        p.setUseKeepVersion(r.boolean(retention, "UseKeepVersions", p.useKeepVersion()));
        p.setKeepVersion(int(r.number(retention, "KeepVersions", p.keepVersion())));
        p.setUseKeepLastVersion(r.boolean(retention, "UseKeepLastVersion", p.useKeepLastVersion()));
        p.setUseDeleteLocaly(r.boolean(retention, "UseDeleteLocallyDeleted", p.useDeleteLocaly()));
        p.setDeleteLocalyAfter(int(r.number(retention, "DeleteLocallyDeletedAfterDays", p.deleteLocalyAfter())));
        p.setUseBackupDate(r.boolean(retention, "UseBackupDate", p.useBackupDate()));
    }

    const QDomElement storage = Xml::Reader::child(e, "StorageInfo");
    if (!storage.isNull()) {
        m_storageInfo.setUseS3Accelerated(r.boolean(storage, "UseS3Accelerated", m_storageInfo.useS3Accelerated()));
        m_storageInfo.setUseSSE(r.boolean(storage, "UseSSE", m_storageInfo.useSSE()));
        m_storageInfo.setStorageClassAmazonS3(StorageInfo::AmazonS3StorageClass(
            r.number(storage, "AmazonS3StorageClass", m_storageInfo.storageClassAmazonS3())));
        m_storageInfo.setStorageClassAzureBlob(StorageInfo::AzureBlobStorageClass(
            r.number(storage, "AzureBlobStorageClass", m_storageInfo.storageClassAzureBlob())));
    }

    const QDomElement actions = Xml::Reader::child(e, "Actions");
    if (!actions.isNull()) {
        const QDomElement pre = Xml::Reader::child(actions, "Pre");
        if (!pre.isNull()) {
            readAction(r, pre, m_actions.pre());
            m_actions.pre().setTerminateOnFailure(
                r.boolean(pre, "TerminateOnFailure", m_actions.pre().terminateOnFailure()));
        }
        const QDomElement post = Xml::Reader::child(actions, "Post");
        if (!post.isNull()) {
            readAction(r, post, m_actions.post());
            m_actions.post().setRunOnBackupFailure(
                r.boolean(post, "RunOnBackupFailure", m_actions.post().runOnBackupFailure()));
        }
    }
}

} // namespace TWB::Info::Plan
