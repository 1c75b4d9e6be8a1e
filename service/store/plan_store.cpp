#include "service/store/plan_store.h"

#include "platform/crypt/local_password.h"
#include "service/store/database.h"
#include "service/store/store_time.h"

namespace TWB::Service {

namespace {

const QString summaryColumns = QStringLiteral(
    "id, name, subtype, type, storage_id, schedule_text, next_run_utc, next_run_full_utc, status, "
    "last_run_message, last_run_status, last_run_utc, last_duration, last_uploaded_count, last_failed_count, "
    "last_uploaded_size, last_file_count, last_file_size");

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
    return plan;
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
    QSqlQuery query
        = m_database.prepare(QStringLiteral("SELECT %1 FROM plans ORDER BY created_utc, rowid").arg(summaryColumns));
    query.setForwardOnly(true);
    m_database.exec(query);
    QList<PlanRecord> plans;
    while (query.next())
        plans.append(fromRow(query));
    return plans;
}

std::optional<PlanRecord> PlanStore::find(const QUuid& id)
{
    QSqlQuery query = m_database.prepare(QStringLiteral("SELECT %1, xml FROM plans WHERE id = ?").arg(summaryColumns));
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
    if (!query.next())
        return std::nullopt;
    PlanRecord plan = fromRow(query);
    plan.xml = SHARED::cryptNS::decrypt_local_password(query.value(18).toString());
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
                       "next_run_utc = ?, next_run_full_utc = ?, xml = ?, updated_utc = ? WHERE id = ?"));
    update.addBindValue(Database::text(plan.name));
    update.addBindValue(plan.subtype);
    update.addBindValue(plan.type);
    update.addBindValue(Database::text(idText(plan.storage)));
    update.addBindValue(Database::text(plan.scheduleText));
    update.addBindValue(Database::text(StoreTime::toText(plan.nextRun)));
    update.addBindValue(Database::text(StoreTime::toText(plan.nextRunFull)));
    update.addBindValue(Database::text(xml));
    update.addBindValue(Database::text(now));
    update.addBindValue(Database::text(plan.id.toString()));
    m_database.exec(update);
    if (update.numRowsAffected() > 0)
        return false;
    QSqlQuery insert = m_database.prepare(
        QStringLiteral("INSERT INTO plans (id, name, subtype, type, storage_id, schedule_text, next_run_utc, "
                       "next_run_full_utc, xml, status, created_utc, updated_utc) "
                       "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    insert.addBindValue(Database::text(plan.id.toString()));
    insert.addBindValue(Database::text(plan.name));
    insert.addBindValue(plan.subtype);
    insert.addBindValue(plan.type);
    insert.addBindValue(Database::text(idText(plan.storage)));
    insert.addBindValue(Database::text(plan.scheduleText));
    insert.addBindValue(Database::text(StoreTime::toText(plan.nextRun)));
    insert.addBindValue(Database::text(StoreTime::toText(plan.nextRunFull)));
    insert.addBindValue(Database::text(xml));
    insert.addBindValue(plan.status);
    insert.addBindValue(Database::text(now));
    insert.addBindValue(Database::text(now));
    m_database.exec(insert);
    return true;
}

bool PlanStore::remove(const QUuid& id)
{
    QSqlQuery query = m_database.prepare(QStringLiteral("DELETE FROM plans WHERE id = ?"));
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
    return query.numRowsAffected() > 0;
}

void PlanStore::setNextRun(const QUuid& id, const QDateTime& nextRun, const QDateTime& nextRunFull)
{
    QSqlQuery query
        = m_database.prepare(QStringLiteral("UPDATE plans SET next_run_utc = ?, next_run_full_utc = ? WHERE id = ?"));
    query.addBindValue(Database::text(StoreTime::toText(nextRun)));
    query.addBindValue(Database::text(StoreTime::toText(nextRunFull)));
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
}

void PlanStore::setStatus(const QUuid& id, int status)
{
    QSqlQuery query = m_database.prepare(QStringLiteral("UPDATE plans SET status = ? WHERE id = ?"));
    query.addBindValue(status);
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
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
