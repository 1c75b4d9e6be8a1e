#include "service/catalog/plan_paths.h"

#include "platform/drive_shares.h"

namespace TWB::Service {

namespace {

QString lastPart(const QString& point)
{
    return point.mid(point.lastIndexOf(QLatin1Char('/')) + 1);
}

bool isUnder(const QString& path, const QString& folder)
{
    if (folder == QLatin1String("/"))
        return path.startsWith(QLatin1Char('/'));
    return path == folder || path.startsWith(folder + QLatin1Char('/'));
}

// The first part of a path below a root ("/ROOT/<first>/rest"), and the rest with its slash.
bool splitBelow(const QString& path, const QString& root, QString* first, QString* rest)
{
    if (!path.startsWith(root + QLatin1Char('/')))
        return false;
    const int start = root.size() + 1;
    const int slash = path.indexOf(QLatin1Char('/'), start);
    *first = slash < 0 ? path.mid(start) : path.mid(start, slash - start);
    *rest = slash < 0 ? QString() : path.mid(slash);
    return !first->isEmpty();
}

QString withoutTrailingSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

} // namespace

bool PlanPaths::isNetworkType(const QString& type)
{
    return TWB::Info::DriveShares::isNetworkType(type);
}

QList<PlanPaths::Mount> PlanPaths::currentMounts()
{
    QList<Mount> mounts;
    const auto table = TWB::Info::DriveShares::currentMounts();
    for (const auto& mount : table)
        mounts.append({mount.point, mount.type, isNetworkType(mount.type)});
    return mounts;
}

PlanPaths::PlanPaths(QList<Mount> mounts)
    : m_mounts(std::move(mounts))
{ }

PlanPaths::PlanPaths()
    : m_mounts(currentMounts())
{ }

QString PlanPaths::toReal(const QString& planPath, QString* error) const
{
    const QString path = withoutTrailingSlash(planPath);
    QString first;
    QString rest;
    auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return QString();
    };
    if (!path.startsWith(QLatin1Char('/')))
        return fail(QStringLiteral("\"%1\" is not an absolute path").arg(planPath));
    if (path == volumesRoot() || path == sharesRoot())
        return fail(QStringLiteral("\"%1\" names no volume or share").arg(planPath));
    if (splitBelow(path, volumesRoot(), &first, &rest)) {
        if (first == rootVolume())
            return rest.isEmpty() ? QStringLiteral("/") : rest;
        for (const Mount& mount : m_mounts) {
            if (!mount.network && mount.point != QLatin1String("/") && lastPart(mount.point) == first)
                return mount.point + rest;
        }
        return fail(QStringLiteral("The volume \"%1\" of \"%2\" is not mounted").arg(first, planPath));
    }
    if (splitBelow(path, sharesRoot(), &first, &rest)) {
        const QString point = shareMount(first);
        if (point.isEmpty())
            return fail(QStringLiteral("The share \"%1\" of \"%2\" is not mounted").arg(first, planPath));
        return point + rest;
    }
    return path;
}

QString PlanPaths::networkMountOf(const QString& realPath) const
{
    QString best;
    for (const Mount& mount : m_mounts) {
        if (mount.network && isUnder(realPath, mount.point) && mount.point.size() > best.size())
            best = mount.point;
    }
    return best;
}

QString PlanPaths::shareMount(const QString& name) const
{
    for (const Mount& mount : m_mounts) {
        if (mount.network && lastPart(mount.point) == name)
            return mount.point;
    }
    return QString();
}

QMap<QString, QString> PlanPaths::sharesOf(const QStringList& realPaths) const
{
    QMap<QString, QString> shares;
    for (const QString& path : realPaths) {
        const QString point = networkMountOf(path);
        const QString name = lastPart(point);
        // Shares travel as "name=point" in a list split at commas.
        if (point.isEmpty() || name.isEmpty() || point.contains(QLatin1Char('=')) || point.contains(QLatin1Char(',')))
            continue;
        shares.insert(name, point);
    }
    return shares;
}

QString PlanPaths::toCatalog(const QString& realPath, const QMap<QString, QString>& shares)
{
    QString bestName;
    QString bestPoint;
    for (auto it = shares.constBegin(); it != shares.constEnd(); ++it) {
        if (isUnder(realPath, it.value()) && it.value().size() > bestPoint.size()) {
            bestName = it.key();
            bestPoint = it.value();
        }
    }
    if (!bestPoint.isEmpty())
        return sharesRoot() + QLatin1Char('/') + bestName + realPath.mid(bestPoint.size());
    const QString volume = volumesRoot() + QLatin1Char('/') + rootVolume();
    return realPath == QLatin1String("/") ? volume : volume + realPath;
}

QString PlanPaths::fromCatalog(const QString& catalogPath, const QMap<QString, QString>& shares)
{
    QString first;
    QString rest;
    if (splitBelow(catalogPath, volumesRoot(), &first, &rest))
        return first == rootVolume() ? (rest.isEmpty() ? QStringLiteral("/") : rest) : QString();
    if (splitBelow(catalogPath, sharesRoot(), &first, &rest))
        return shares.contains(first) ? shares.value(first) + rest : QString();
    return QString();
}

QStringList PlanPaths::encodeShares(const QMap<QString, QString>& shares)
{
    QStringList encoded;
    for (auto it = shares.constBegin(); it != shares.constEnd(); ++it)
        encoded << it.key() + QLatin1Char('=') + it.value();
    return encoded;
}

QMap<QString, QString> PlanPaths::decodeShares(const QStringList& encoded)
{
    QMap<QString, QString> shares;
    for (const QString& pair : encoded) {
        const int equals = pair.indexOf(QLatin1Char('='));
        if (equals > 0)
            shares.insert(pair.left(equals), pair.mid(equals + 1));
    }
    return shares;
}

} // namespace TWB::Service
