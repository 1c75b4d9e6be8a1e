#include "platform/plan/restore.h"

#include "platform/plan/plan_xml_p.h"

namespace TWB::Info::Plan {

Restore::Restore(int type)
    : Base(type)
{ }

bool Restore::equals(const Base& other) const
{
    const auto* o = dynamic_cast<const Restore*>(&other);
    return o && Base::equals(other) && m_restoreType == o->m_restoreType && m_pointInTime == o->m_pointInTime
        && m_useEncryption == o->m_useEncryption && m_encryptionPassword == o->m_encryptionPassword
        && m_deletePlan == o->m_deletePlan && m_storageInfo == o->m_storageInfo;
}

void Restore::writeFields(Xml::Writer& w) const
{
    Base::writeFields(w);
    w.begin("Restore");
    w.number("RestoreType", m_restoreType);
    w.dateTime("PointInTime", m_pointInTime);
    w.boolean("UseEncryption", m_useEncryption);
    w.text("EncryptionPassword", m_encryptionPassword);
    w.number("DeletePlan", m_deletePlan);
    w.begin("StorageInfo");
    w.boolean("UseS3Accelerated", m_storageInfo.useS3Accelerated());
    w.number("Type", m_storageInfo.type());
    w.end();
    w.end();
}

void Restore::readFields(Xml::Reader& r, const QDomElement& root)
{
    Base::readFields(r, root);
    const QDomElement e = Xml::Reader::child(root, "Restore");
    if (e.isNull())
        return;
    m_restoreType = RestoreType(r.number(e, "RestoreType", m_restoreType));
    m_pointInTime = r.dateTime(e, "PointInTime");
    m_useEncryption = r.boolean(e, "UseEncryption", m_useEncryption);
    m_encryptionPassword = r.text(e, "EncryptionPassword");
    m_deletePlan = DeleteType(r.number(e, "DeletePlan", m_deletePlan));
    const QDomElement storage = Xml::Reader::child(e, "StorageInfo");
    if (!storage.isNull()) {
        m_storageInfo.setUseS3Accelerated(r.boolean(storage, "UseS3Accelerated", m_storageInfo.useS3Accelerated()));
        m_storageInfo.setType(StorageInfo::Type(r.number(storage, "Type", m_storageInfo.type())));
    }
}

} // namespace TWB::Info::Plan
