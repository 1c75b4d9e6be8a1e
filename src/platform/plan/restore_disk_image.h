#pragma once

#include "platform/plan/disk_info.h"
#include "platform/plan/restore.h"
#include "platform/plan/restore_disk_configuration.h"

#include <QSharedPointer>

namespace TWB::Info::Plan {

/// A restore of a disk image to a disk, a virtual disk file or a virtual machine.
class TWBPLATFORM_EXPORT RestoreDiskImage final : public Restore
{
public:
    enum DiskImageRestoreType : int { PhysicalDisk = 0, VirtualDisk = 1, VirtualMachine = 2 };

    /// The file format of a virtual disk.
    class TWBPLATFORM_EXPORT DiskImageFileFormat final
    {
    public:
        enum Type : quint8 { VHDX = 0, VHD = 1, VMDK = 2, VDI = 3, RAW = 4 };

        Type type() const { return m_type; }
        void setType(Type type) { m_type = type; }
        QString displayName() const { return m_displayName; }
        void setDisplayName(const QString& name) { m_displayName = name; }
        static QString Type2String(Type type);

        bool operator==(const DiskImageFileFormat& o) const
        {
            return m_type == o.m_type && m_displayName == o.m_displayName;
        }
        bool operator!=(const DiskImageFileFormat& o) const { return !(*this == o); }

    private:
        Type m_type = VHDX;
        QString m_displayName;
    };

    RestoreDiskImage();

    const char* className() const override { return "RestoreDiskImage"; }

    QString destination() const { return m_destination; }
    void setDestination(const QString& destination) { m_destination = destination; }
    QString hostName() const { return m_hostName; }
    void setHostName(const QString& name) { m_hostName = name; }
    QSharedPointer<TWB::Info::DiskInfo> diskInfo() const { return m_diskInfo; }
    void setDiskInfo(QSharedPointer<TWB::Info::DiskInfo> info) { m_diskInfo = info; }
    QSharedPointer<TWB::Info::RestoreDiskConfiguration> restoreDiskConfiguration() const { return m_configuration; }
    void setRestoreDiskConfiguration(QSharedPointer<TWB::Info::RestoreDiskConfiguration> configuration)
    {
        m_configuration = configuration;
    }
    DiskImageFileFormat& diskImageFileFormat() { return m_fileFormat; }
    const DiskImageFileFormat& diskImageFileFormat() const { return m_fileFormat; }
    DiskImageRestoreType diskImageRestoreType() const { return m_restoreTarget; }
    void setDiskImageRestoreType(DiskImageRestoreType type) { m_restoreTarget = type; }

    bool equals(const Base& other) const override;

protected:
    bool acceptsType(int type) const override { return type == TypeDiskImage; }
    void writeFields(Xml::Writer& writer) const override;
    void readFields(Xml::Reader& reader, const QDomElement& root) override;

private:
    QString m_destination;
    QString m_hostName;
    QSharedPointer<TWB::Info::DiskInfo> m_diskInfo;
    QSharedPointer<TWB::Info::RestoreDiskConfiguration> m_configuration;
    DiskImageFileFormat m_fileFormat;
    DiskImageRestoreType m_restoreTarget = PhysicalDisk;
};

} // namespace TWB::Info::Plan
