#pragma once

#include "platform/twbplatform_export.h"

#include <QList>
#include <QString>

namespace TWB::Info {

/// Where each backed-up partition goes when a disk image is restored.
class TWBPLATFORM_EXPORT RestoreDiskConfiguration final
{
public:
    struct Mapping
    {
        QString sourcePartition;
        QString targetPartition;
        unsigned long long size = 0;
        bool operator==(const Mapping& o) const
        {
            return sourcePartition == o.sourcePartition && targetPartition == o.targetPartition && size == o.size;
        }
    };

    QString targetDisk;
    QList<Mapping> mappings;

    bool operator==(const RestoreDiskConfiguration& o) const
    {
        return targetDisk == o.targetDisk && mappings == o.mappings;
    }
    bool operator!=(const RestoreDiskConfiguration& o) const { return !(*this == o); }
};

} // namespace TWB::Info
