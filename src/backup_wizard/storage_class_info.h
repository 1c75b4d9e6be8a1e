#pragma once

#include "twbconsole_export.h"

#include <QCoreApplication>
#include <QString>

namespace TWB::GUI {

/// Tool tips that tell what each cloud storage class or access tier is for, shown on the items of
/// the storage class combo box.
class TWBCONSOLE_EXPORT StorageClassInfo final
{
public:
    class TWBCONSOLE_EXPORT AmazonS3 final
    {
        Q_DECLARE_TR_FUNCTIONS(TWB::GUI::StorageClassInfo::AmazonS3)
    public:
        /// Rich text for a value of Backup::StorageInfo::AmazonS3StorageClass; empty for a class without
        /// one (Glacier Instant Retrieval) and for unknown values.
        static QString toolTip(int storageClass);
    };

    class TWBCONSOLE_EXPORT Azure final
    {
        Q_DECLARE_TR_FUNCTIONS(TWB::GUI::StorageClassInfo::Azure)
    public:
        /// Plans have no hot tier of their own (their default lands in hot unless the container says
        /// otherwise); this value asks for its tool tip. The others are those of AzureBlobStorageClass.
        enum Tier : int { Default = 0, Cool = 1, Archive = 2, Hot = 3 };

        static QString toolTip(int tier);
    };
};

} // namespace TWB::GUI
