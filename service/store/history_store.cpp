#include "service/store/history_store.h"

#include "service/store/database.h"
#include "service/store/store_time.h"

#include <QStringList>

namespace TWB::Service {

namespace {

struct Filter
{
    QStringList conditions;
    QVariantList values;

    void add(const QString& condition, const QVariant& value)
    {
        conditions << condition;
        values << value;
    }
    QString where() const
    {
        return conditions.isEmpty() ? QString() : QStringLiteral(" WHERE ") + conditions.join(QStringLiteral(" AND "));
    }
};

} // namespace

QString FileOperationRecord::kindName(int operation)
{
    switch (operation) {
    case Uploaded:
        return QStringLiteral("Uploaded");
    case Restored:
        return QStringLiteral("Restored");
    case Deleted:
        return QStringLiteral("Deleted");
    case Failed:
        return QStringLiteral("Failed");
    default:
        return QString::number(operation);
    }
}

qint64 HistoryStore::addRun(const RunRecord& run)
{
    QSqlQuery query = m_database.prepare(
        QStringLiteral("INSERT INTO runs (plan_id, plan_name, operation, result, start_utc, duration, file_count, "
                       "size, error_message) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    query.addBindValue(Database::text(run.plan.toString()));
    query.addBindValue(Database::text(run.planName));
    query.addBindValue(run.operation);
    query.addBindValue(run.result);
    query.addBindValue(Database::text(StoreTime::toText(run.start)));
    query.addBindValue(run.duration);
    query.addBindValue(run.fileCount);
    query.addBindValue(run.size);
    query.addBindValue(Database::text(run.errorMessage));
    m_database.exec(query);
    return query.lastInsertId().toLongLong();
}

void HistoryStore::updateRun(const RunRecord& run)
{
    QSqlQuery query = m_database.prepare(QStringLiteral(
        "UPDATE runs SET result = ?, duration = ?, file_count = ?, size = ?, error_message = ? WHERE id = ?"));
    query.addBindValue(run.result);
    query.addBindValue(run.duration);
    query.addBindValue(run.fileCount);
    query.addBindValue(run.size);
    query.addBindValue(Database::text(run.errorMessage));
    query.addBindValue(run.id);
    m_database.exec(query);
}

qint64 HistoryStore::addFileOperation(const FileOperationRecord& operation)
{
    QSqlQuery query = m_database.prepare(
        QStringLiteral("INSERT INTO file_operations (run_id, plan_id, operation, path, size, modified_utc, "
                       "finish_utc, duration, message) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    query.addBindValue(operation.run);
    query.addBindValue(Database::text(operation.plan.toString()));
    query.addBindValue(operation.operation);
    query.addBindValue(Database::text(operation.path));
    query.addBindValue(operation.size);
    query.addBindValue(Database::text(StoreTime::toText(operation.modified)));
    query.addBindValue(Database::text(StoreTime::toText(operation.finish)));
    query.addBindValue(operation.duration);
    query.addBindValue(Database::text(operation.message));
    m_database.exec(query);
    return query.lastInsertId().toLongLong();
}

void HistoryStore::addFileOperations(qint64 run, const QList<FileOperationRecord>& operations)
{
    QSqlQuery query = m_database.prepare(
        QStringLiteral("INSERT INTO file_operations (run_id, plan_id, operation, path, size, modified_utc, "
                       "finish_utc, duration, message) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    for (const FileOperationRecord& operation : operations) {
        query.bindValue(0, run);
        query.bindValue(1, Database::text(operation.plan.toString()));
        query.bindValue(2, operation.operation);
        query.bindValue(3, Database::text(operation.path));
        query.bindValue(4, operation.size);
        query.bindValue(5, Database::text(StoreTime::toText(operation.modified)));
        query.bindValue(6, Database::text(StoreTime::toText(operation.finish)));
        query.bindValue(7, operation.duration);
        query.bindValue(8, Database::text(operation.message));
        m_database.exec(query);
    }
}

QList<RunRecord> HistoryStore::unfinishedRuns()
{
    QSqlQuery query = m_database.prepare(
        QStringLiteral("SELECT id, plan_id, plan_name, operation, start_utc FROM runs WHERE result = 2 ORDER BY id"));
    m_database.exec(query);
    QList<RunRecord> result;
    while (query.next()) {
        RunRecord run;
        run.id = query.value(0).toLongLong();
        run.plan = QUuid(query.value(1).toString());
        run.planName = query.value(2).toString();
        run.operation = query.value(3).toInt();
        run.start = StoreTime::fromText(query.value(4).toString());
        result.append(run);
    }
    return result;
}

QList<RunRecord> HistoryStore::runs(const QUuid& plan, const QDateTime& since, qint64 beforeId, int limit)
{
    Filter filter;
    if (!plan.isNull())
        filter.add(QStringLiteral("plan_id = ?"), plan.toString());
    if (since.isValid())
        filter.add(QStringLiteral("start_utc >= ?"), StoreTime::toText(since));
    if (beforeId > 0)
        filter.add(QStringLiteral("id < ?"), beforeId);
    QSqlQuery query = m_database.prepare(
        QStringLiteral("SELECT id, plan_id, plan_name, operation, result, start_utc, duration, file_count, size, "
                       "error_message FROM runs%1 ORDER BY id DESC LIMIT ?")
            .arg(filter.where()));
    for (const QVariant& value : qAsConst(filter.values))
        query.addBindValue(value);
    query.addBindValue(limit);
    m_database.exec(query);
    QList<RunRecord> result;
    while (query.next()) {
        RunRecord run;
        run.id = query.value(0).toLongLong();
        run.plan = QUuid(query.value(1).toString());
        run.planName = query.value(2).toString();
        run.operation = query.value(3).toInt();
        run.result = query.value(4).toInt();
        run.start = StoreTime::fromText(query.value(5).toString());
        run.duration = query.value(6).toLongLong();
        run.fileCount = query.value(7).toLongLong();
        run.size = query.value(8).toLongLong();
        run.errorMessage = query.value(9).toString();
        result.append(run);
    }
    return result;
}

QSqlQuery HistoryStore::selectFileOperations(
    const QUuid& plan, const QDateTime& since, qint64 beforeId, int operation, int limit, qint64 run)
{
    Filter filter;
    if (run > 0)
        filter.add(QStringLiteral("f.run_id = ?"), run);
    if (!plan.isNull())
        filter.add(QStringLiteral("f.plan_id = ?"), plan.toString());
    if (since.isValid())
        filter.add(QStringLiteral("f.finish_utc >= ?"), StoreTime::toText(since));
    if (beforeId > 0)
        filter.add(QStringLiteral("f.id < ?"), beforeId);
    if (operation != 0)
        filter.add(QStringLiteral("f.operation = ?"), operation);
    QSqlQuery query = m_database.prepare(
        QStringLiteral("SELECT f.id, f.run_id, f.plan_id, f.operation, f.path, f.size, f.modified_utc, f.finish_utc, "
                       "f.duration, f.message, r.plan_name FROM file_operations f LEFT JOIN runs r ON r.id = f.run_id"
                       "%1 ORDER BY f.id DESC LIMIT ?")
            .arg(filter.where()));
    query.setForwardOnly(true);
    for (const QVariant& value : qAsConst(filter.values))
        query.addBindValue(value);
    query.addBindValue(limit);
    m_database.exec(query);
    return query;
}

QList<FileOperationRecord> HistoryStore::fileOperations(
    const QUuid& plan, const QDateTime& since, qint64 beforeId, int operation, int limit, qint64 run)
{
    QSqlQuery query = selectFileOperations(plan, since, beforeId, operation, limit, run);
    QList<FileOperationRecord> result;
    while (query.next()) {
        FileOperationRecord record;
        record.id = query.value(OperationId).toLongLong();
        record.run = query.value(OperationRun).toLongLong();
        record.plan = QUuid(query.value(OperationPlan).toString());
        record.operation = query.value(OperationKind).toInt();
        record.path = query.value(OperationPath).toString();
        record.size = query.value(OperationSize).toLongLong();
        record.modified = StoreTime::fromText(query.value(OperationModified).toString());
        record.finish = StoreTime::fromText(query.value(OperationFinish).toString());
        record.duration = query.value(OperationDuration).toLongLong();
        record.message = query.value(OperationMessage).toString();
        record.planName = query.value(OperationPlanName).toString();
        result.append(record);
    }
    return result;
}

} // namespace TWB::Service
