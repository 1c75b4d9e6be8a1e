#pragma once

#include "platform/twbplatform_export.h"

#include <QList>
#include <QString>

namespace TWB::Info {

/// The disks and partitions a disk image plan covers.
class TWBPLATFORM_EXPORT DiskInfo final
{
public:
    struct Partition
    {
        QString id;
        QString mountPoint;
        QString fileSystem;
        unsigned long long size = 0;
        bool selected = false;
        bool operator==(const Partition& o) const
        {
            return id == o.id && mountPoint == o.mountPoint && fileSystem == o.fileSystem && size == o.size
                && selected == o.selected;
        }
    };
    struct Disk
    {
        QString id;
        QString model;
        unsigned long long size = 0;
        QList<Partition> partitions;
        bool operator==(const Disk& o) const
        {
            return id == o.id && model == o.model && size == o.size && partitions == o.partitions;
        }
    };

    QList<Disk> disks;

    bool operator==(const DiskInfo& o) const { return disks == o.disks; }
    bool operator!=(const DiskInfo& o) const { return !(*this == o); }
};

} // namespace TWB::Info
