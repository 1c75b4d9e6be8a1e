#include "platform/plan/backup_disk_image.h"

#include "platform/plan/plan_xml_p.h"
#include "platform/plan/shared_value_p.h"

namespace TWB::Info::Plan {

BackupDiskImage::BackupDiskImage()
    : Backup(TypeDiskImage)
{ }

bool BackupDiskImage::equals(const Base& other) const
{
    const auto* o = dynamic_cast<const BackupDiskImage*>(&other);
    return o && Backup::equals(other) && sameValue(m_diskInfo, o->m_diskInfo)
        && m_ignoreBadSectors == o->m_ignoreBadSectors && m_prefetchBlockCount == o->m_prefetchBlockCount;
}

void BackupDiskImage::writeFields(Xml::Writer& w) const
{
    Backup::writeFields(w);
    w.begin("DiskImage");
    w.diskInfo(m_diskInfo);
    w.boolean("IgnoreBadSectors", m_ignoreBadSectors);
    w.unsignedNumber("PrefetchBlockCount", m_prefetchBlockCount);
    w.end();
}

void BackupDiskImage::readFields(Xml::Reader& r, const QDomElement& root)
{
    Backup::readFields(r, root);
    const QDomElement e = Xml::Reader::child(root, "DiskImage");
    if (e.isNull())
        return;
    m_diskInfo = r.diskInfo(e);
    m_ignoreBadSectors = r.boolean(e, "IgnoreBadSectors", m_ignoreBadSectors);
    m_prefetchBlockCount = r.unsignedNumber(e, "PrefetchBlockCount", m_prefetchBlockCount);
}

} // namespace TWB::Info::Plan
