#pragma once

#include "platform/plan/backup.h"
#include "platform/plan/disk_info.h"

#include <QSharedPointer>

namespace TWB::Info::Plan {

/// A block-level image of whole disks or partitions.
class TWBPLATFORM_EXPORT BackupDiskImage final : public Backup
{
public:
    BackupDiskImage();

    const char* className() const override { return "BackupDiskImage"; }

    QSharedPointer<TWB::Info::DiskInfo> diskInfo() const { return m_diskInfo; }
    void setDiskInfo(QSharedPointer<TWB::Info::DiskInfo> info) { m_diskInfo = info; }
    bool ignoreBadSectors() const { return m_ignoreBadSectors; }
    void setIgnoreBadSectors(bool ignore) { m_ignoreBadSectors = ignore; }
    unsigned long long prefetchBlockCount() const { return m_prefetchBlockCount; }
    void setPrefetchBlockCount(unsigned long long count) { m_prefetchBlockCount = count; }

    bool equals(const Base& other) const override;

protected:
    bool acceptsType(int type) const override { return type == TypeDiskImage; }
    void writeFields(Xml::Writer& writer) const override;
    void readFields(Xml::Reader& reader, const QDomElement& root) override;

private:
    QSharedPointer<TWB::Info::DiskInfo> m_diskInfo;
    bool m_ignoreBadSectors = false;
    unsigned long long m_prefetchBlockCount = 0;
};

} // namespace TWB::Info::Plan
