#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace TWB::Service {

/// The paths a plan names, the paths on this machine's disks, and the paths the catalog keeps.
///
/// A plan names a folder as the console's file tree showed it: "/TWB_VOLUMES/<volume>/..." for a
/// local volume ("root" is the root file system), "/TWB_SHARES/<share>/..." for a network file
/// system, known by the last part of its mount point, or a plain absolute path.
///
/// The catalog keeps every backed-up path under one of the two roots: below "/TWB_SHARES/<share>"
/// when it lay on a network share at backup time, else below "/TWB_VOLUMES/root" followed by the
/// whole path. Which shares a backup saw travels with its snapshot, so that the way back is exact.
class PlanPaths final
{
public:
    struct Mount
    {
        QString point;
        QString type;
        bool network = false;
    };

    /// This machine's mounts, read anew from /proc/self/mounts.
    static QList<Mount> currentMounts();
    static bool isNetworkType(const QString& type);

    explicit PlanPaths(QList<Mount> mounts);
    /// With the mounts of this machine at this moment.
    PlanPaths();

    /// The path on this machine that a plan path names; empty with a reason when no mount fits.
    QString toReal(const QString& planPath, QString* error = nullptr) const;
    /// The mount point of the network file system that holds a real path, or empty.
    QString networkMountOf(const QString& realPath) const;
    /// The shares, by name, that hold any of the real paths.
    QMap<QString, QString> sharesOf(const QStringList& realPaths) const;
    /// The mount point of a network file system with that name on this machine, or empty.
    QString shareMount(const QString& name) const;

    /// The catalog path of a backed-up real path, given the shares (name to mount point) its backup saw.
    static QString toCatalog(const QString& realPath, const QMap<QString, QString>& shares);
    /// The real path a catalog path was backed up from; empty for a path under neither root.
    static QString fromCatalog(const QString& catalogPath, const QMap<QString, QString>& shares);

    static QString volumesRoot() { return QStringLiteral("/TWB_VOLUMES"); }
    static QString sharesRoot() { return QStringLiteral("/TWB_SHARES"); }
    static QString rootVolume() { return QStringLiteral("root"); }

    /// "name=mountpoint" pairs, the form shares travel in; names and mount points hold no "=" or ",".
    static QStringList encodeShares(const QMap<QString, QString>& shares);
    static QMap<QString, QString> decodeShares(const QStringList& encoded);

private:
    QList<Mount> m_mounts;
};

} // namespace TWB::Service
