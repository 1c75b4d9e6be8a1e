#include "platform/plan/restore_disk_image.h"

#include "platform/plan/plan_xml_p.h"
#include "platform/plan/shared_value_p.h"

namespace TWB::Info::Plan {

QString RestoreDiskImage::DiskImageFileFormat::Type2String(Type type)
{
    switch (type) {
    case VHDX:
        return QStringLiteral("VHDX");
    case VHD:
        return QStringLiteral("VHD");
    case VMDK:
        return QStringLiteral("VMDK");
    case VDI:
        return QStringLiteral("VDI");
    case RAW:
        return QStringLiteral("RAW");
    }
    return QString();
}

RestoreDiskImage::RestoreDiskImage()
    : Restore(TypeDiskImage)
{ }

bool RestoreDiskImage::equals(const Base& other) const
{
    const auto* o = dynamic_cast<const RestoreDiskImage*>(&other);
    return o && Restore::equals(other) && m_destination == o->m_destination && m_hostName == o->m_hostName
        && sameValue(m_diskInfo, o->m_diskInfo) && sameValue(m_configuration, o->m_configuration)
        && m_fileFormat == o->m_fileFormat && m_restoreTarget == o->m_restoreTarget;
}

void RestoreDiskImage::writeFields(Xml::Writer& w) const
{
    Restore::writeFields(w);
    w.begin("DiskImage");
    w.text("Destination", m_destination);
    w.text("HostName", m_hostName);
    w.diskInfo(m_diskInfo);
    w.restoreDiskConfiguration(m_configuration);
    w.begin("FileFormat");
    w.number("Type", m_fileFormat.type());
    w.text("DisplayName", m_fileFormat.displayName());
    w.end();
    w.number("RestoreTarget", m_restoreTarget);
    w.end();
}

void RestoreDiskImage::readFields(Xml::Reader& r, const QDomElement& root)
{
    Restore::readFields(r, root);
    const QDomElement e = Xml::Reader::child(root, "DiskImage");
    if (e.isNull())
        return;
    m_destination = r.text(e, "Destination");
    m_hostName = r.text(e, "HostName");
    m_diskInfo = r.diskInfo(e);
    m_configuration = r.restoreDiskConfiguration(e);
    const QDomElement format = Xml::Reader::child(e, "FileFormat");
    if (!format.isNull()) {
        m_fileFormat.setType(DiskImageFileFormat::Type(r.number(format, "Type", m_fileFormat.type(), 0, 255)));
        m_fileFormat.setDisplayName(r.text(format, "DisplayName"));
    }
    m_restoreTarget = DiskImageRestoreType(r.number(e, "RestoreTarget", m_restoreTarget));
}

} // namespace TWB::Info::Plan
