#pragma once

#include "twbconsole_export.h"

#include <QIcon>
#include <QObject>
#include <QSize>
#include <QString>

namespace TWB::GUI {

/// The console's numbered icons, drawn from the SVG artwork in the resources. Each icon carries
/// pixmaps for a device pixel ratio of 1 and of 2 at the size asked for, so it stays sharp on both.
class TWBCONSOLE_EXPORT IconManager final
{
    Q_GADGET
public:
    enum Type : int {
        Add = 8,
        Remove = 9,
        Edit = 10,
        Warning = 11,
        RightArrow = 12,
        // Plans, by what their last run left or by a run under way.
        BackupPlan = 29,
        BackupPlanFail = 30,
        BackupPlanRunning = 31,
        BackupPlanWarning = 32,
        BackupPlanSuccess = 33,
        RestorePlan = 34,
        RestorePlanFail = 35,
        RestorePlanRunning = 36,
        RestorePlanWarning = 37,
        RestorePlanSuccess = 38,
        // Files in the history of runs.
        FileUploaded = 39,
        FileDeleted = 42,
        FilePurged = 44,
    };
    Q_ENUM(Type)

    /// Logical edge lengths: 16, 24, 32 and 48 pixels.
    enum Size : int { Small = 0, Medium = 1, Large = 2, Huge = 3 };
    Q_ENUM(Size)

    /// Storage back-ends; the numbers are those the storage list maps its cloud types to.
    enum Storage : int {
        AmazonS3 = 0,
        AzureBlob = 1,
        GoogleStorage = 2,
        Openstack = 3,
        OracleCloud = 4,
        Rackspace = 5,
        SoftLayer = 6,
        HPCloud = 7,
        HPHelion = 8,
        FileSystem = 9,
        Sftp = 12,
        S3Compatible = 13,
        AmazonS3Chinese = 14,
        CenturyLink = 15,
        Cloudian = 16,
        DreamObjects = 17,
        Scality = 18,
        ThinkOn = 19,
        Verizon = 20,
        Wasabi = 21,
        BackBlaze = 22,
        Minio = 24,
        AlibabaCloud = 25,
    };
    Q_ENUM(Storage)

    /// The icon of a Type number; an empty icon for a number without artwork.
    static QIcon icon(int type, int size = Small);
    /// The icon of a Storage number; an empty icon for a number without artwork.
    static QIcon storage(int storage, int size = Small);

    /// Logical size of a Size value; an unknown value counts as Small.
    static QSize iconSize(int size);
    /// Resource path of the artwork behind a Type or Storage number, or an empty string.
    static QString path(int type);
    static QString storagePath(int storage);

private:
    static QIcon render(const QString& path, int size);
};

} // namespace TWB::GUI
