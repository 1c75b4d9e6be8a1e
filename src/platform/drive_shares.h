#pragma once

#include "platform/twbplatform_export.h"

#include <QString>
#include <QVector>

namespace TWB::Info {

/// The volumes and network shares of this machine, and the path forms plans and the catalog use for them.
///
/// A plan names a path as "/TWB_VOLUMES/root/..." on the root file system, "/TWB_VOLUMES/<volume>/..." on a
/// local volume mounted apart (a USB stick, a disc), and "/TWB_SHARES/<share>/..." on a network file system;
/// a volume or share is known by the last part of its mount point. Plain absolute paths stay valid too.
class TWBPLATFORM_EXPORT DriveShares final
{
public:
    struct Mount
    {
        QString point;
        QString type;
    };

    /// Kinds of volume, numbered as the file listing's item types.
    enum Kind : int { NetworkShare = 0, Drive = 1, Removable = 2, OpticalDisc = 3 };

    struct Volume
    {
        QString name;
        QString planPath;
        QString realPath;
        int kind = Drive;
    };

    /// This moment's mounts, read from /proc/self/mounts, or from the file $TWB_MOUNTS_FILE names in the
    /// same form. Nothing is touched on disk, so a hung network mount cannot block the caller.
    static DriveShares Instance();
    /// The mount table alone, mount points without a trailing slash.
    static QVector<Mount> currentMounts();
    explicit DriveShares(QVector<Mount> mounts);

    /// The root file system first, then local volumes mounted apart for the user, then network shares.
    QVector<Volume> volumes() const;
    /// The path on this machine that a plan path names; a path of an absent volume or share stays as it is.
    QString get_local_path(const QString& planPath, int option = 0) const;
    /// The plan path of a real path: under the volume or share that holds it, else under the root volume.
    QString planPath(const QString& realPath) const;
    /// The path form the service's catalog keeps for a real path.
    QString getSqlPathFromLocal(const QString& localPath) const;

    static bool isNetworkType(const QString& type);
    static QString volumesRoot() { return QStringLiteral("/TWB_VOLUMES"); }
    static QString sharesRoot() { return QStringLiteral("/TWB_SHARES"); }

private:
    QVector<Mount> mounts;
    QVector<Volume> userVolumes; // every volume but the root file system
};

} // namespace TWB::Info
