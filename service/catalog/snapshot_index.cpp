#include "service/catalog/snapshot_index.h"

#include "platform/logging/twl_debug.h"
#include "service/catalog/version_catalog.h"
#include "service/store/database.h"
#include "service/catalog/plan_paths.h"
#include "service/store/store_time.h"
#include "service/store/transaction.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace TWB::Service {

namespace {

constexpr qint64 openEnd = std::numeric_limits<qint64>::max();

QString sharesText(const QMap<QString, QString>& shares)
{
    return PlanPaths::encodeShares(shares).join(QLatin1Char(','));
}

SnapshotRecord snapshotFromRow(const QSqlQuery& row)
{
    SnapshotRecord snapshot;
    snapshot.plan = QUuid(row.value(0).toString());
    snapshot.id = row.value(1).toString();
    snapshot.timeMs = row.value(2).toLongLong();
    snapshot.account = QUuid(row.value(3).toString());
    snapshot.prefix = row.value(4).toString();
    const QString shares = row.value(5).toString();
    if (!shares.isEmpty())
        snapshot.shares = PlanPaths::decodeShares(shares.split(QLatin1Char(',')));
    return snapshot;
}

const QString snapshotColumns = QStringLiteral("plan_id, snapshot, time_ms, account_id, prefix, shares");

QDateTime fromMs(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
}

// The versions of file entries at a catalog path or below it, with the time of their snapshot.
const QString versionsUnder
    = QStringLiteral("FROM catalog_entries e JOIN catalog_versions v ON v.entry_id = e.id "
                     "JOIN catalog_snapshots s ON s.plan_id = v.plan_id AND s.snapshot = v.snapshot "
                     "WHERE e.account_id = ? AND e.prefix = ? AND e.is_file = 1 "
                     "AND ((e.parent = ? AND e.name = ?) OR e.parent = ? OR substr(e.parent, 1, ?) = ?)");

void bindUnder(QSqlQuery& query, const QUuid& account, const QString& prefix, const QString& path)
{
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    query.addBindValue(Database::text(account.toString()));
    query.addBindValue(Database::text(prefix));
    query.addBindValue(Database::text(path.left(slash)));
    query.addBindValue(Database::text(path.mid(slash + 1)));
    query.addBindValue(Database::text(path));
    query.addBindValue(path.size() + 1);
    query.addBindValue(Database::text(path + QLatin1Char('/')));
}

} // namespace

int SnapshotIndex::record(const SnapshotRecord& snapshot, const QStringList& held,
    const QHash<QString, qint64>& changed, bool compressed, bool encrypted, const Describe& describe,
    std::optional<Live> live)
{
    Transaction transaction(m_database);
    const int added = recordInto(snapshot, held, changed, compressed, encrypted, describe, live);
    transaction.commit();
    return added;
}

void SnapshotIndex::rebuild(const QUuid& plan, const QList<PendingSnapshot>& snapshots, bool compressed, bool encrypted)
{
    Transaction transaction(m_database);
    dropInto(plan);
    for (const PendingSnapshot& pending : snapshots) {
        recordInto(
            pending.snapshot, pending.held, pending.changed, compressed, encrypted,
            [&pending](const QString& path) { return pending.files.value(path); }, std::nullopt);
    }
    pruneEntries();
    transaction.commit();
}

int SnapshotIndex::recordInto(const SnapshotRecord& snapshot, const QStringList& held,
    const QHash<QString, qint64>& changed, bool compressed, bool encrypted, const Describe& describe,
    const std::optional<Live>& live)
{
    QSqlQuery insert = m_database.prepare(
        QStringLiteral("INSERT OR REPLACE INTO catalog_snapshots (%1) VALUES (?, ?, ?, ?, ?, ?)").arg(snapshotColumns));
    insert.addBindValue(Database::text(snapshot.plan.toString()));
    insert.addBindValue(Database::text(snapshot.id));
    insert.addBindValue(snapshot.timeMs);
    insert.addBindValue(Database::text(snapshot.account.toString()));
    insert.addBindValue(Database::text(snapshot.prefix));
    insert.addBindValue(Database::text(sharesText(snapshot.shares)));
    m_database.exec(insert);

    QHash<QString, QString> catalogPaths; // catalog path to real path
    catalogPaths.reserve(held.size());
    QSet<QString> changedPaths;
    for (const QString& real : held) {
        const QString path = PlanPaths::toCatalog(real, snapshot.shares);
        catalogPaths.insert(path, real);
        if (changed.contains(real))
            changedPaths.insert(path);
    }

    // The versions this plan's backups held until now end here if this backup dropped the file or
    // brought a new version of it.
    const Live before = live ? *live : liveVersions(snapshot.plan);
    QStringList ended;
    QSet<QString> stillHeld;
    for (auto it = before.constBegin(); it != before.constEnd(); ++it) {
        if (!catalogPaths.contains(it.key()) || changedPaths.contains(it.key()))
            ended << QString::number(it.value());
        else
            stillHeld.insert(it.key());
    }
    // Ids are numbers: joined into the statement in groups rather than sent one by one.
    for (int at = 0; at < ended.size(); at += 500) {
        QSqlQuery end = m_database.prepare(QStringLiteral("UPDATE catalog_versions SET gone_ms = ? WHERE id IN (%1)")
                                               .arg(ended.mid(at, 500).join(QLatin1Char(','))));
        end.addBindValue(snapshot.timeMs);
        m_database.exec(end);
    }

    VersionCatalog catalog(m_database);
    int added = 0;
    for (auto it = catalogPaths.constBegin(); it != catalogPaths.constEnd(); ++it) {
        if (!changedPaths.contains(it.key()) && stillHeld.contains(it.key()))
            continue;
        const SnapshotFile file = describe(it.value());
        CatalogVersion version;
        version.snapshot = snapshot.id;
        version.backupTime = fromMs(snapshot.timeMs);
        version.modified = file.modified;
        version.originalSize = file.size;
        version.size = changed.value(file.path, file.size);
        // restic encrypts every repository, but one whose key follows from the plan's id is open.
        version.encrypted = encrypted;
        version.compressed = compressed;
        version.plan = snapshot.plan;
        if (!VersionCatalog::isValidPath(it.key())) {
            TWL::TwlDebug("TWB").warning() << "The catalog cannot hold the backed-up path" << file.path;
            continue;
        }
        catalog.addVersion(snapshot.account, snapshot.prefix, it.key(), version);
        ++added;
    }
    return added;
}

SnapshotIndex::Live SnapshotIndex::liveVersions(const QUuid& plan)
{
    QSqlQuery query = m_database.prepare(
        QStringLiteral("SELECT v.id, e.parent, e.name FROM catalog_versions v JOIN catalog_entries e "
                       "ON e.id = v.entry_id WHERE v.plan_id = ? AND v.gone_ms = 0"));
    query.setForwardOnly(true);
    query.addBindValue(Database::text(plan.toString()));
    m_database.exec(query);
    Live live;
    while (query.next())
        live.insert(
            query.value(1).toString() + QLatin1Char('/') + query.value(2).toString(), query.value(0).toLongLong());
    return live;
}

QList<SnapshotRecord> SnapshotIndex::snapshots(const QUuid& plan)
{
    QSqlQuery query = m_database.prepare(
        QStringLiteral("SELECT %1 FROM catalog_snapshots WHERE plan_id = ? ORDER BY time_ms, rowid")
            .arg(snapshotColumns));
    query.addBindValue(Database::text(plan.toString()));
    m_database.exec(query);
    QList<SnapshotRecord> result;
    while (query.next())
        result << snapshotFromRow(query);
    return result;
}

std::optional<SnapshotRecord> SnapshotIndex::snapshot(const QUuid& plan, const QString& id)
{
    QSqlQuery query = m_database.prepare(
        QStringLiteral("SELECT %1 FROM catalog_snapshots WHERE plan_id = ? AND snapshot = ?").arg(snapshotColumns));
    query.addBindValue(Database::text(plan.toString()));
    query.addBindValue(Database::text(id));
    m_database.exec(query);
    if (!query.next())
        return std::nullopt;
    return snapshotFromRow(query);
}

void SnapshotIndex::forget(const QUuid& plan, const QSet<QString>& removed)
{
    if (removed.isEmpty())
        return;
    const QList<SnapshotRecord> all = snapshots(plan);
    QHash<QString, qint64> times;
    QList<const SnapshotRecord*> remaining;
    for (const SnapshotRecord& snapshot : all) {
        times.insert(snapshot.id, snapshot.timeMs);
        if (!removed.contains(snapshot.id))
            remaining << &snapshot;
    }

    Transaction transaction(m_database);
    QSqlQuery versions = m_database.prepare(
        QStringLiteral("SELECT id, gone_ms FROM catalog_versions WHERE plan_id = ? AND snapshot = ?"));
    QSqlQuery move
        = m_database.prepare(QStringLiteral("UPDATE catalog_versions SET snapshot = ?, backup_utc = ? WHERE id = ?"));
    QSqlQuery drop = m_database.prepare(QStringLiteral("DELETE FROM catalog_versions WHERE id = ?"));
    QSqlQuery dropSnapshot
        = m_database.prepare(QStringLiteral("DELETE FROM catalog_snapshots WHERE plan_id = ? AND snapshot = ?"));
    for (const QString& id : removed) {
        const qint64 start = times.value(id, openEnd);
        versions.bindValue(0, Database::text(plan.toString()));
        versions.bindValue(1, Database::text(id));
        m_database.exec(versions);
        std::vector<std::pair<qint64, qint64>> found;
        while (versions.next())
            found.emplace_back(versions.value(0).toLongLong(), versions.value(1).toLongLong());
        for (const auto& [versionId, gone] : found) {
            const qint64 end = gone == 0 ? openEnd : gone;
            const SnapshotRecord* holder = nullptr;
            for (const SnapshotRecord* candidate : qAsConst(remaining)) {
                if (candidate->timeMs > start && candidate->timeMs < end) {
                    holder = candidate;
                    break;
                }
            }
            if (holder) {
                move.bindValue(0, Database::text(holder->id));
                move.bindValue(1, Database::text(StoreTime::toText(fromMs(holder->timeMs))));
                move.bindValue(2, versionId);
                m_database.exec(move);
            } else {
                drop.bindValue(0, versionId);
                m_database.exec(drop);
            }
        }
        dropSnapshot.bindValue(0, Database::text(plan.toString()));
        dropSnapshot.bindValue(1, Database::text(id));
        m_database.exec(dropSnapshot);
    }
    pruneEntries();
    transaction.commit();
}

void SnapshotIndex::dropPlan(const QUuid& plan)
{
    Transaction transaction(m_database);
    dropInto(plan);
    pruneEntries();
    transaction.commit();
}

void SnapshotIndex::dropInto(const QUuid& plan)
{
    for (const QString& table : {QStringLiteral("catalog_versions"), QStringLiteral("catalog_snapshots")}) {
        QSqlQuery query = m_database.prepare(QStringLiteral("DELETE FROM %1 WHERE plan_id = ?").arg(table));
        query.addBindValue(Database::text(plan.toString()));
        m_database.exec(query);
    }
}

QStringList SnapshotIndex::forgettable(const QUuid& plan, const FileRetention& rules)
{
    const QList<SnapshotRecord> all = snapshots(plan);
    if (all.size() < 2 || rules.keepsEverything())
        return {};
    std::vector<qint64> times;
    times.reserve(size_t(all.size()));
    for (const SnapshotRecord& snapshot : all)
        times.push_back(snapshot.timeMs);
    // Each version that must stay needs one snapshot that holds it: one within [from, until).
    // Those still held by the newest snapshot have it.
    std::vector<std::pair<qint64, qint64>> spans; // (until, from)
    const auto keep = [&](qint64 from, qint64 until) {
        if (until != 0)
            spans.emplace_back(until, from);
    };

    QSqlQuery query = m_database.prepare(
        QStringLiteral("SELECT v.entry_id, s.time_ms, v.gone_ms, v.modified_utc FROM catalog_versions v "
                       "JOIN catalog_snapshots s ON s.plan_id = v.plan_id AND s.snapshot = v.snapshot "
                       "WHERE v.plan_id = ? ORDER BY v.entry_id, s.time_ms"));
    query.setForwardOnly(true);
    query.addBindValue(Database::text(plan.toString()));
    m_database.exec(query);
    struct Version
    {
        qint64 from;
        qint64 until;
        qint64 modified;
    };
    std::vector<Version> file;
    const auto decide = [&] {
        if (file.empty())
            return;
        const Version& newest = file.back();
        // A file that the last backups no longer hold was deleted locally, or could not be read,
        // from the first backup that missed it.
        const bool deleted = newest.until != 0;
        const bool deletedLongAgo = deleted && rules.deletedBeforeMs > 0 && newest.until < rules.deletedBeforeMs;
        const int count = int(file.size());
        for (int i = 0; i < count; ++i) {
            const Version& version = file[size_t(i)];
            const int rank = count - 1 - i; // 0 is the newest version
            bool mayGo = deletedLongAgo;
            if (!mayGo && !(rank == 0 && (deleted || rules.keepLast))) {
                const bool byCount = rules.keepVersions > 0 && rank >= rules.keepVersions;
                const qint64 age = rules.ageFromModification ? version.modified : version.from;
                const bool byAge = rules.olderThanMs > 0 && age < rules.olderThanMs;
                // Where both rules are on, a version goes only when neither keeps it.
                mayGo = (rules.keepVersions > 0 || rules.olderThanMs > 0) && (rules.keepVersions <= 0 || byCount)
                    && (rules.olderThanMs <= 0 || byAge);
            }
            if (!mayGo)
                keep(version.from, version.until);
        }
        file.clear();
    };
    qint64 entry = -1;
    while (query.next()) {
        const qint64 id = query.value(0).toLongLong();
        if (id != entry) {
            decide();
            entry = id;
        }
        const QDateTime modified
            = rules.ageFromModification ? StoreTime::fromText(query.value(3).toString()) : QDateTime();
        file.push_back({query.value(1).toLongLong(), query.value(2).toLongLong(),
            modified.isValid() ? modified.toMSecsSinceEpoch() : 0});
    }
    decide();

    // The fewest snapshots that hold every such version: taking spans by their end, a span
    // that no kept snapshot falls in yet keeps its latest snapshot, which serves the most spans
    // that end later.
    std::sort(spans.begin(), spans.end());
    std::vector<bool> kept(times.size(), false);
    kept.back() = true;
    qint64 lastKept = std::numeric_limits<qint64>::min();
    for (const auto& [until, from] : spans) {
        if (lastKept >= from && lastKept < until)
            continue;
        const auto end = std::lower_bound(times.begin(), times.end(), until) - times.begin();
        if (end == 0 || times[size_t(end - 1)] < from) {
            // No snapshot the catalog knows holds it: keep them all rather than guess.
            return {};
        }
        kept[size_t(end - 1)] = true;
        lastKept = times[size_t(end - 1)];
    }
    QStringList result;
    for (size_t i = 0; i < times.size(); ++i) {
        if (!kept[i])
            result << all.at(int(i)).id;
    }
    return result;
}

int SnapshotIndex::keepOnly(const QUuid& plan, const QSet<QString>& present)
{
    QSet<QString> gone;
    const QList<SnapshotRecord> all = snapshots(plan);
    for (const SnapshotRecord& snapshot : all) {
        bool found = present.contains(snapshot.id);
        // The catalog may hold the short form of an id, or the full one.
        for (auto it = present.constBegin(); !found && it != present.constEnd(); ++it)
            found = !snapshot.id.isEmpty() && (it->startsWith(snapshot.id) || snapshot.id.startsWith(*it));
        if (!found)
            gone.insert(snapshot.id);
    }
    forget(plan, gone);
    return gone.size();
}

void SnapshotIndex::pruneEntries()
{
    m_database.exec(QStringLiteral("DELETE FROM catalog_entries WHERE is_file = 1 AND NOT EXISTS "
                                   "(SELECT 1 FROM catalog_versions v WHERE v.entry_id = catalog_entries.id)"));
    // Folders exist on the way to files; one that leads to nothing any more goes too, level by level.
    for (int depth = 0; depth < 4096; ++depth) {
        QSqlQuery folders = m_database.prepare(QStringLiteral(
            "DELETE FROM catalog_entries WHERE is_file = 0 AND NOT EXISTS (SELECT 1 FROM "
            "catalog_entries c WHERE c.account_id = catalog_entries.account_id AND c.prefix = "
            "catalog_entries.prefix AND c.parent = catalog_entries.parent || '/' || catalog_entries.name)"));
        m_database.exec(folders);
        if (folders.numRowsAffected() <= 0)
            break;
    }
}

std::optional<RestoreSource> SnapshotIndex::sourceFor(const QUuid& account, const QString& prefix,
    const QString& catalogPath, std::optional<qint64> pointInTimeMs, QString* why)
{
    auto fail = [why](const QString& text) -> std::optional<RestoreSource> {
        if (why)
            *why = text;
        return std::nullopt;
    };

    // A version picked by name: "<file>@<snapshot>", the id in its short or its full form.
    const int at = catalogPath.lastIndexOf(QLatin1Char('@'));
    if (at > 0 && !catalogPath.mid(at + 1).contains(QLatin1Char('/'))) {
        const QString file = catalogPath.left(at);
        const QString id = catalogPath.mid(at + 1);
        QSqlQuery query
            = m_database.prepare(QStringLiteral("SELECT v.plan_id, v.snapshot, v.original_size ") + versionsUnder);
        bindUnder(query, account, prefix, file);
        m_database.exec(query);
        while (query.next()) {
            const QString held = query.value(1).toString();
            if (held.isEmpty() || (!id.startsWith(held) && !held.startsWith(id)))
                continue;
            const std::optional<SnapshotRecord> snapshot = this->snapshot(QUuid(query.value(0).toString()), held);
            if (!snapshot)
                continue;
            const QString real = PlanPaths::fromCatalog(file, snapshot->shares);
            if (real.isEmpty())
                return fail(QStringLiteral("\"%1\" lies under no volume or share").arg(file));
            return RestoreSource {*snapshot, real, query.value(2).toLongLong()};
        }
    }

    // Per plan: from when to when its backups held anything at or below the path.
    QSqlQuery spans = m_database.prepare(
        QStringLiteral("SELECT v.plan_id, min(s.time_ms), max(CASE WHEN v.gone_ms = 0 THEN %1 ELSE v.gone_ms END) ")
            .arg(openEnd)
        + versionsUnder + QStringLiteral(" GROUP BY v.plan_id"));
    bindUnder(spans, account, prefix, catalogPath);
    m_database.exec(spans);
    struct Span
    {
        QUuid plan;
        qint64 start;
        qint64 end;
    };
    QList<Span> found;
    while (spans.next())
        found.append({QUuid(spans.value(0).toString()), spans.value(1).toLongLong(), spans.value(2).toLongLong()});
    if (found.isEmpty())
        return fail(QStringLiteral("No backup holds \"%1\"").arg(catalogPath));

    std::optional<SnapshotRecord> best;
    for (const Span& span : qAsConst(found)) {
        QSqlQuery pick
            = m_database.prepare(QStringLiteral("SELECT %1 FROM catalog_snapshots WHERE plan_id = ? AND time_ms <= ? "
                                                "ORDER BY time_ms DESC, rowid DESC LIMIT 1")
                                     .arg(snapshotColumns));
        pick.addBindValue(Database::text(span.plan.toString()));
        // The latest version is read from the newest backup that still held the path.
        pick.addBindValue(pointInTimeMs ? *pointInTimeMs : (span.end == openEnd ? openEnd : span.end - 1));
        m_database.exec(pick);
        if (!pick.next())
            continue;
        const SnapshotRecord candidate = snapshotFromRow(pick);
        if (candidate.timeMs < span.start || candidate.timeMs >= span.end)
            continue;
        if (!best || candidate.timeMs > best->timeMs)
            best = candidate;
    }
    if (!best) {
        return fail(pointInTimeMs ? QStringLiteral("No backup held \"%1\" at %2")
                                        .arg(catalogPath, fromMs(*pointInTimeMs).toString(Qt::ISODate))
                                  : QStringLiteral("No backup holds \"%1\"").arg(catalogPath));
    }
    const QString real = PlanPaths::fromCatalog(catalogPath, best->shares);
    if (real.isEmpty())
        return fail(QStringLiteral("\"%1\" lies under no volume or share").arg(catalogPath));

    QSqlQuery bytes = m_database.prepare(QStringLiteral("SELECT coalesce(sum(v.original_size), 0) ") + versionsUnder
        + QStringLiteral(" AND v.plan_id = ? AND s.time_ms <= ? AND (v.gone_ms = 0 OR v.gone_ms > ?)"));
    bindUnder(bytes, account, prefix, catalogPath);
    bytes.addBindValue(Database::text(best->plan.toString()));
    bytes.addBindValue(best->timeMs);
    bytes.addBindValue(best->timeMs);
    return RestoreSource {*best, real, m_database.scalar(bytes, 0).toLongLong()};
}

} // namespace TWB::Service
