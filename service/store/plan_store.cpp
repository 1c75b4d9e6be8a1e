#include "service/store/plan_store.h"

#include "platform/crypt/local_password.h"
#include "service/store/database.h"
#include "service/store/store_time.h"

#include <QHash>
#include <QVector>

#include <algorithm>

namespace TWB::Service {

/// The plan list as all() gives it, kept beside the connection so that the scheduler's and the
/// console's listings do not read and convert every row each time. PlanStore's own writes update
/// it; a rollback drops it, and a change by another connection makes it stale.
struct PlanListCache
{
    qint64 dataVersion = -1;
    QList<PlanRecord> plans; // without the XML, in list order
    QVector<QString> created; // each plan's creation time as stored: the list's order
    QHash<QUuid, int> rows;

    void reindex()
    {
        rows.clear();
        rows.reserve(plans.size());
        for (int row = 0; row < plans.size(); ++row)
            rows.insert(plans.at(row).id, row);
    }
    PlanRecord* find(const QUuid& id)
    {
        const auto row = rows.constFind(id);
        return row == rows.constEnd() ? nullptr : &plans[row.value()];
    }
};

namespace {

// A plan's row and its timings: every plan has both, written together.
const QString summaryColumns = QStringLiteral(
    "p.id, p.name, p.subtype, p.type, p.storage_id, p.schedule_text, t.next_run_utc, t.next_run_full_utc, p.status, "
    "p.last_run_message, p.last_run_status, p.last_run_utc, p.last_duration, p.last_uploaded_count, "
    "p.last_failed_count, p.last_uploaded_size, p.last_file_count, p.last_file_size, t.timing");
const QString planTables = QStringLiteral("plans p LEFT JOIN plan_timings t ON t.plan_id = p.id");

PlanRecord fromRow(const QSqlQuery& row)
{
    PlanRecord plan;
    plan.id = QUuid(row.value(0).toString());
    plan.name = row.value(1).toString();
    plan.subtype = row.value(2).toInt();
    plan.type = row.value(3).toInt();
    plan.storage = QUuid(row.value(4).toString());
    plan.scheduleText = row.value(5).toString();
    plan.nextRun = StoreTime::fromText(row.value(6).toString());
    plan.nextRunFull = StoreTime::fromText(row.value(7).toString());
    plan.status = row.value(8).toInt();
    if (!row.isNull(10)) {
        PlanRecord::LastRun last;
        last.message = row.value(9).toString();
        last.status = row.value(10).toInt();
        last.time = StoreTime::fromText(row.value(11).toString());
        last.duration = row.value(12).toLongLong();
        last.uploadedCount = row.value(13).toLongLong();
        last.failedCount = row.value(14).toLongLong();
        last.uploadedSize = row.value(15).toLongLong();
        last.fileCount = row.value(16).toLongLong();
        last.fileSize = row.value(17).toLongLong();
        plan.lastRun = last;
    }
    plan.timing = row.value(18).toString();
    return plan;
}

/// A time as it reads back from the store, to the second.
QDateTime stored(const QDateTime& time)
{
    return StoreTime::fromText(StoreTime::toText(time));
}

QString idText(const QUuid& id)
{
    return id.isNull() ? QString() : id.toString();
}

// A plan document holds secrets as they are (encryption passwords), so it is kept sealed.
QString sealed(const PlanRecord& plan)
{
    const QString text = SHARED::cryptNS::encrypt_local_password(plan.xml);
    if (text.isEmpty())
        throw QStringLiteral("Cannot encipher the plan %1: the local key is not available").arg(plan.id.toString());
    return text;
}

} // namespace

QList<PlanRecord> PlanStore::all()
{
    return list().plans;
}

PlanListCache& PlanStore::list()
{
    std::shared_ptr<PlanListCache>& cache = m_database.planListCache();
    const qint64 version = m_database.dataVersion();
    if (cache && cache->dataVersion == version)
        return *cache;
    auto fresh = std::make_shared<PlanListCache>();
    QSqlQuery query
        = m_database.prepare(QStringLiteral("SELECT %1, p.created_utc FROM %2 ORDER BY p.created_utc, p.rowid")
                                 .arg(summaryColumns, planTables));
    query.setForwardOnly(true);
    m_database.exec(query);
    while (query.next()) {
        fresh->plans.append(fromRow(query));
        fresh->created.append(query.value(19).toString());
    }
    fresh->dataVersion = version;
    fresh->reindex();
    cache = std::move(fresh);
    return *cache;
}

std::optional<PlanRecord> PlanStore::listed(const QUuid& id)
{
    const PlanRecord* plan = list().find(id);
    return plan ? std::optional<PlanRecord>(*plan) : std::nullopt;
}

PlanListCache* PlanStore::kept()
{
    const std::shared_ptr<PlanListCache>& cache = m_database.planListCache();
    return cache && cache->dataVersion == m_database.dataVersion() ? cache.get() : nullptr;
}

std::optional<PlanRecord> PlanStore::find(const QUuid& id)
{
    QSqlQuery query = m_database.prepare(
        QStringLiteral("SELECT %1, d.xml FROM %2 LEFT JOIN plan_documents d ON d.plan_id = p.id WHERE p.id = ?")
            .arg(summaryColumns, planTables));
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
    if (!query.next())
        return std::nullopt;
    PlanRecord plan = fromRow(query);
    plan.xml = SHARED::cryptNS::decrypt_local_password(query.value(19).toString());
    if (plan.xml.isEmpty())
        throw QStringLiteral("The stored plan %1 cannot be deciphered with the key in secret.key").arg(id.toString());
    return plan;
}

int PlanStore::count()
{
    QSqlQuery query = m_database.prepare(QStringLiteral("SELECT count(*) FROM plans"));
    return m_database.scalar(query, 0).toInt();
}

bool PlanStore::save(const PlanRecord& plan)
{
    const QString now = StoreTime::now();
    const QString xml = sealed(plan);
    QSqlQuery update = m_database.prepare(
        QStringLiteral("UPDATE plans SET name = ?, subtype = ?, type = ?, storage_id = ?, schedule_text = ?, "
                       "updated_utc = ? WHERE id = ?"));
    update.addBindValue(Database::text(plan.name));
    update.addBindValue(plan.subtype);
    update.addBindValue(plan.type);
    update.addBindValue(Database::text(idText(plan.storage)));
    update.addBindValue(Database::text(plan.scheduleText));
    update.addBindValue(Database::text(now));
    update.addBindValue(Database::text(plan.id.toString()));
    m_database.exec(update);
    if (update.numRowsAffected() > 0) {
        saveDocument(plan.id, xml);
        saveTimings(plan);
        if (PlanListCache* cache = kept()) {
            if (PlanRecord* kept = cache->find(plan.id)) {
                kept->name = Database::text(plan.name);
                kept->subtype = plan.subtype;
                kept->type = plan.type;
                kept->storage = plan.storage;
                kept->scheduleText = Database::text(plan.scheduleText);
                kept->nextRun = stored(plan.nextRun);
                kept->nextRunFull = stored(plan.nextRunFull);
                kept->timing = Database::text(plan.timing);
            } else {
                m_database.dropCaches();
            }
        }
        return false;
    }
    QSqlQuery insert = m_database.prepare(
        QStringLiteral("INSERT INTO plans (id, name, subtype, type, storage_id, schedule_text, status, "
                       "created_utc, updated_utc) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    insert.addBindValue(Database::text(plan.id.toString()));
    insert.addBindValue(Database::text(plan.name));
    insert.addBindValue(plan.subtype);
    insert.addBindValue(plan.type);
    insert.addBindValue(Database::text(idText(plan.storage)));
    insert.addBindValue(Database::text(plan.scheduleText));
    insert.addBindValue(plan.status);
    insert.addBindValue(Database::text(now));
    insert.addBindValue(Database::text(now));
    m_database.exec(insert);
    saveDocument(plan.id, xml);
    saveTimings(plan);
    if (PlanListCache* cache = kept()) {
        PlanRecord summary = plan;
        summary.xml.clear();
        summary.name = Database::text(plan.name);
        summary.scheduleText = Database::text(plan.scheduleText);
        summary.timing = Database::text(plan.timing);
        summary.nextRun = stored(plan.nextRun);
        summary.nextRunFull = stored(plan.nextRunFull);
        summary.lastRun.reset();
        // After every plan made in the same second or before, as the rowid orders them.
        const int row
            = int(std::upper_bound(cache->created.begin(), cache->created.end(), now) - cache->created.begin());
        cache->plans.insert(row, summary);
        cache->created.insert(row, now);
        cache->reindex();
    }
    return true;
}

void PlanStore::saveDocument(const QUuid& id, const QString& sealedXml)
{
    QSqlQuery query = m_database.prepare(QStringLiteral("INSERT INTO plan_documents (plan_id, xml) VALUES (?, ?) ON "
                                                        "CONFLICT(plan_id) DO UPDATE SET xml = excluded.xml"));
    query.addBindValue(Database::text(id.toString()));
    query.addBindValue(Database::text(sealedXml));
    m_database.exec(query);
}

void PlanStore::saveTimings(const PlanRecord& plan)
{
    QSqlQuery query = m_database.prepare(QStringLiteral(
        "INSERT INTO plan_timings (plan_id, timing, next_run_utc, next_run_full_utc) VALUES (?, ?, ?, ?) "
        "ON CONFLICT(plan_id) DO UPDATE SET timing = excluded.timing, "
        "next_run_utc = excluded.next_run_utc, next_run_full_utc = excluded.next_run_full_utc"));
    query.addBindValue(Database::text(plan.id.toString()));
    query.addBindValue(Database::text(plan.timing));
    query.addBindValue(Database::text(StoreTime::toText(plan.nextRun)));
    query.addBindValue(Database::text(StoreTime::toText(plan.nextRunFull)));
    m_database.exec(query);
}

bool PlanStore::remove(const QUuid& id)
{
    QSqlQuery query = m_database.prepare(QStringLiteral("DELETE FROM plans WHERE id = ?"));
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
    if (PlanListCache* cache = kept()) {
        const auto row = cache->rows.constFind(id);
        if (row != cache->rows.constEnd()) {
            cache->plans.removeAt(row.value());
            cache->created.remove(row.value());
            cache->reindex();
        }
    }
    return query.numRowsAffected() > 0;
}

void PlanStore::setNextRun(const QUuid& id, const QDateTime& nextRun, const QDateTime& nextRunFull)
{
    QSqlQuery query = m_database.prepare(
        QStringLiteral("UPDATE plan_timings SET next_run_utc = ?, next_run_full_utc = ? WHERE plan_id = ?"));
    query.addBindValue(Database::text(StoreTime::toText(nextRun)));
    query.addBindValue(Database::text(StoreTime::toText(nextRunFull)));
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
    if (PlanListCache* cache = kept()) {
        if (PlanRecord* plan = cache->find(id)) {
            plan->nextRun = stored(nextRun);
            plan->nextRunFull = stored(nextRunFull);
        }
    }
}

void PlanStore::setNextRuns(const QVector<NextRuns>& runs)
{
    if (runs.isEmpty())
        return;
    // A pass after a long sleep moves thousands of plans, each to times of its own. One statement
    // prepared once: Qt takes milliseconds to prepare a statement of a few hundred values, far more
    // than SQLite takes to run a short one again.
    QSqlQuery query = m_database.prepare(
        QStringLiteral("UPDATE plan_timings SET next_run_utc = ?, next_run_full_utc = ? WHERE plan_id = ?"));
    for (const NextRuns& run : runs) {
        query.addBindValue(Database::text(StoreTime::toText(run.nextRun)));
        query.addBindValue(Database::text(StoreTime::toText(run.nextRunFull)));
        query.addBindValue(Database::text(run.id.toString()));
        m_database.exec(query);
    }
    if (PlanListCache* cache = kept()) {
        for (const NextRuns& run : runs) {
            if (PlanRecord* plan = cache->find(run.id)) {
                plan->nextRun = stored(run.nextRun);
                plan->nextRunFull = stored(run.nextRunFull);
            }
        }
    }
}

void PlanStore::setTiming(const QUuid& id, const QString& timing)
{
    QSqlQuery query = m_database.prepare(QStringLiteral("UPDATE plan_timings SET timing = ? WHERE plan_id = ?"));
    query.addBindValue(Database::text(timing));
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
    if (PlanListCache* cache = kept()) {
        if (PlanRecord* plan = cache->find(id))
            plan->timing = Database::text(timing);
    }
}

void PlanStore::setStatus(const QUuid& id, int status)
{
    QSqlQuery query = m_database.prepare(QStringLiteral("UPDATE plans SET status = ? WHERE id = ?"));
    query.addBindValue(status);
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
    if (PlanListCache* cache = kept()) {
        if (PlanRecord* plan = cache->find(id))
            plan->status = status;
    }
}

void PlanStore::setAllIdle()
{
    m_database.exec(QStringLiteral("UPDATE plans SET status = 2 WHERE status = 1"));
    if (PlanListCache* cache = kept()) {
        for (PlanRecord& plan : cache->plans)
            plan.status = plan.status == 1 ? 2 : plan.status;
    }
}

void PlanStore::setLastRun(const QUuid& id, const PlanRecord::LastRun& lastRun)
{
    QSqlQuery query = m_database.prepare(
        QStringLiteral("UPDATE plans SET last_run_message = ?, last_run_status = ?, last_run_utc = ?, "
                       "last_duration = ?, last_uploaded_count = ?, last_failed_count = ?, last_uploaded_size = ?, "
                       "last_file_count = ?, last_file_size = ? WHERE id = ?"));
    query.addBindValue(Database::text(lastRun.message));
    query.addBindValue(lastRun.status);
    query.addBindValue(Database::text(StoreTime::toText(lastRun.time)));
    query.addBindValue(lastRun.duration);
    query.addBindValue(lastRun.uploadedCount);
    query.addBindValue(lastRun.failedCount);
    query.addBindValue(lastRun.uploadedSize);
    query.addBindValue(lastRun.fileCount);
    query.addBindValue(lastRun.fileSize);
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
    if (PlanListCache* cache = kept()) {
        if (PlanRecord* plan = cache->find(id)) {
            PlanRecord::LastRun last = lastRun;
            last.message = Database::text(lastRun.message);
            last.time = stored(lastRun.time);
            plan->lastRun = last;
        }
    }
}

QStringList PlanStore::namesUsingStorage(const QUuid& storage)
{
    QSqlQuery query = m_database.prepare(QStringLiteral("SELECT name FROM plans WHERE storage_id = ? ORDER BY name"));
    query.addBindValue(Database::text(storage.toString()));
    m_database.exec(query);
    QStringList names;
    while (query.next())
        names << query.value(0).toString();
    return names;
}

} // namespace TWB::Service
