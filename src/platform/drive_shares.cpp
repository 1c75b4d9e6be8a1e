#include "platform/drive_shares.h"

#include <QFile>
#include <QSet>

namespace TWB::Info {

namespace {

QString lastPart(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

bool isUnder(const QString& path, const QString& folder)
{
    return path == folder || (path.startsWith(folder) && path.at(folder.size()) == QLatin1Char('/'));
}

// Mounts the user thinks of as a volume of their own: what desktops mount for removable media, and /mnt.
bool isUserMountPoint(const QString& point)
{
    return point.startsWith(QLatin1String("/media/")) || point.startsWith(QLatin1String("/run/media/"))
        || point.startsWith(QLatin1String("/mnt/"));
}

} // namespace

DriveShares DriveShares::Instance()
{
    return DriveShares(currentMounts());
}

QVector<DriveShares::Mount> DriveShares::currentMounts()
{
    QVector<Mount> mounts;
    // A table in the same form may stand in for the kernel's, so that tests can mount shares they lack.
    const QString table = qEnvironmentVariable("TWB_MOUNTS_FILE");
    QFile file(table.isEmpty() ? QStringLiteral("/proc/self/mounts") : table);
    if (!file.open(QIODevice::ReadOnly))
        return mounts;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < 3)
            continue;
        // The kernel writes blanks in mount points as \040.
        QString point = QString::fromUtf8(fields.at(1));
        point.replace(QLatin1String("\\040"), QLatin1String(" "));
        while (point.size() > 1 && point.endsWith(QLatin1Char('/')))
            point.chop(1);
        mounts.append({point, QString::fromUtf8(fields.at(2))});
    }
    return mounts;
}

DriveShares::DriveShares(QVector<Mount> mountList)
    : mounts(std::move(mountList))
{
    QSet<QString> seen;
    for (const Mount& mount : qAsConst(mounts)) {
        const bool network = isNetworkType(mount.type);
        if (mount.point == QLatin1String("/") || (!network && !isUserMountPoint(mount.point)))
            continue;
        const QString name = lastPart(mount.point);
        // A later mount over the same point hides the earlier one; a name taken twice could not be told apart.
        if (name.isEmpty() || seen.contains(mount.point))
            continue;
        seen.insert(mount.point);
        Volume volume;
        volume.name = name;
        volume.realPath = mount.point;
        if (network) {
            volume.kind = NetworkShare;
            volume.planPath = sharesRoot() + QLatin1Char('/') + name;
        } else {
            const bool optical = mount.type == QLatin1String("iso9660") || mount.type == QLatin1String("udf");
            volume.kind = optical ? OpticalDisc : Removable;
            volume.planPath = volumesRoot() + QLatin1Char('/') + name;
        }
        userVolumes.append(volume);
    }
}

bool DriveShares::isNetworkType(const QString& type)
{
    static const QSet<QString> networkTypes = {QStringLiteral("nfs"), QStringLiteral("nfs4"), QStringLiteral("cifs"),
        QStringLiteral("smb3"), QStringLiteral("smbfs"), QStringLiteral("fuse.sshfs"), QStringLiteral("sshfs"),
        QStringLiteral("9p"), QStringLiteral("afs"), QStringLiteral("ceph"), QStringLiteral("glusterfs"),
        QStringLiteral("fuse.glusterfs"), QStringLiteral("davfs"), QStringLiteral("fuse.davfs2"),
        QStringLiteral("ncpfs")};
    return networkTypes.contains(type);
}

QVector<DriveShares::Volume> DriveShares::volumes() const
{
    QVector<Volume> result;
    result.append({QStringLiteral("/"), volumesRoot() + QStringLiteral("/root"), QStringLiteral("/"), Drive});
    result += userVolumes;
    return result;
}

QString DriveShares::get_local_path(const QString& planPath, int) const
{
    const QString rootVolume = volumesRoot() + QStringLiteral("/root");
    if (isUnder(planPath, rootVolume))
        return planPath.size() == rootVolume.size() ? QStringLiteral("/") : planPath.mid(rootVolume.size());
    for (const Volume& volume : userVolumes) {
        if (isUnder(planPath, volume.planPath))
            return volume.realPath + planPath.mid(volume.planPath.size());
    }
    return planPath;
}

QString DriveShares::planPath(const QString& realPath) const
{
    const Volume* best = nullptr;
    for (const Volume& volume : userVolumes) {
        if (isUnder(realPath, volume.realPath) && (!best || volume.realPath.size() > best->realPath.size()))
            best = &volume;
    }
    if (best)
        return best->planPath + realPath.mid(best->realPath.size());
    const QString rootVolume = volumesRoot() + QStringLiteral("/root");
    return realPath == QLatin1String("/") ? rootVolume : rootVolume + realPath;
}

QString DriveShares::getSqlPathFromLocal(const QString& localPath) const
{
    // The catalog keeps local volumes under the root volume's whole path; only shares keep a root of their own.
    for (const Volume& volume : userVolumes) {
        if (volume.kind == NetworkShare && isUnder(localPath, volume.realPath))
            return volume.planPath + localPath.mid(volume.realPath.size());
    }
    const QString rootVolume = volumesRoot() + QStringLiteral("/root");
    return localPath == QLatin1String("/") ? rootVolume : rootVolume + localPath;
}

} // namespace TWB::Info
