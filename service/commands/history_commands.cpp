#include "service/commands/history_commands.h"

#include "service/commands/command_router.h"
#include "service/store/history_store.h"
#include "service/commands/params.h"
#include "service/commands/responder.h"
#include "service/store/store_time.h"

#include <QHash>
#include <QJsonArray>
#include <QStringList>

#include <limits>

namespace TWB::Service {

namespace {

// The start of the period a history request names; invalid for all of history.
QDateTime periodStart(const Params& params)
{
    const QString period = params.optionalString("period", QStringLiteral("All"));
    const QDateTime now = QDateTime::currentDateTimeUtc();
    if (period == QLatin1String("DayLast"))
        return now.addDays(-1);
    if (period == QLatin1String("WeekLast"))
        return now.addDays(-7);
    if (period == QLatin1String("MonthLast"))
        return now.addMonths(-1);
    if (period == QLatin1String("All") || period.isEmpty())
        return QDateTime();
    throw params.fault("period", QStringLiteral("is \"%1\", not one of DayLast, WeekLast, MonthLast, All").arg(period));
}

QString stateName(int state)
{
    static const QHash<int, QString> names = {
        {-1, QStringLiteral("Unknown")},
        {0, QStringLiteral("Starting")},
        {1, QStringLiteral("Updated file search")},
        {2, QStringLiteral("Running")},
        {3, QStringLiteral("Purging files")},
        {4, QStringLiteral("Pausing")},
        {5, QStringLiteral("Paused")},
        {6, QStringLiteral("Success")},
        {7, QStringLiteral("Warning")},
        {8, QStringLiteral("Fail")},
        {9, QStringLiteral("Interrupted")},
        {10, QStringLiteral("Interrupted by schedule")},
        {11, QStringLiteral("Updating repository")},
        {12, QStringLiteral("Stopping")},
        {16, QStringLiteral("Interrupted for update")},
        {19, QStringLiteral("Preparing")},
        {20, QStringLiteral("Downloading")},
        {100, QStringLiteral("Interrupted system sleep")},
        {101, QStringLiteral("Interrupted by switching to battery")},
        {102, QStringLiteral("Interrupted by network filter")},
    };
    return names.value(state, QString::number(state));
}

QString fileOperationName(int operation)
{
    switch (operation) {
    case FileOperationRecord::Uploaded:
        return QStringLiteral("Uploaded");
    case FileOperationRecord::Restored:
        return QStringLiteral("Restored");
    case FileOperationRecord::Deleted:
        return QStringLiteral("Deleted");
    case FileOperationRecord::Failed:
        return QStringLiteral("Failed");
    default:
        return QString::number(operation);
    }
}

// By hand: an export formats two times for each of a hundred thousand lines, and QDateTime's
// format parser showed in its time.
QString readableTime(const QDateTime& time)
{
    if (!time.isValid())
        return QString();
    const QDateTime utc = time.toUTC();
    const QDate d = utc.date();
    const QTime t = utc.time();
    return QString::asprintf(
        "%04d-%02d-%02d %02d:%02d:%02d", d.year(), d.month(), d.day(), t.hour(), t.minute(), t.second());
}

// One line of RFC 4180 CSV: every field quoted, quotes doubled, so that names with commas,
// quotes or line breaks survive a spreadsheet.
QString csvLine(const QStringList& fields)
{
    QStringList quoted;
    quoted.reserve(fields.size());
    for (QString field : fields)
        quoted << QLatin1Char('"') + field.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
    return quoted.join(QLatin1Char(','));
}

} // namespace

void HistoryCommands::registerAt(CommandRouter& router)
{
    router.add(QStringLiteral("HistoryListByPlan"),
        [this](const QJsonObject& params, const Responder& respond) { listByPlan(params, respond); });
    router.add(QStringLiteral("HistoryListByFiles"),
        [this](const QJsonObject& params, const Responder& respond) { listByFiles(params, respond); });
}

void HistoryCommands::listByPlan(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    params.optionalString("filter");
    const qint64 lastId = params.optionalInteger("lastID", 0, 0, std::numeric_limits<qint64>::max());
    const QUuid plan = params.optionalUuid("planID");
    const QDateTime since = periodStart(params);
    const bool csv = params.optionalBool("generateCSV", false);

    const QList<RunRecord> runs = HistoryStore(m_database).runs(plan, since, lastId, pageSize());
    QJsonArray entries;
    for (const RunRecord& run : runs) {
        QJsonObject entry;
        entry.insert(QStringLiteral("DbID"), double(run.id));
        entry.insert(QStringLiteral("Duration"), double(run.duration));
        entry.insert(QStringLiteral("ErrorMessage"), run.errorMessage);
        entry.insert(QStringLiteral("FileOperationsTotalCount"), double(run.fileCount));
        entry.insert(QStringLiteral("PlanId"), run.plan.toString());
        entry.insert(QStringLiteral("PlanName"), run.planName);
        entry.insert(QStringLiteral("Result"), run.result);
        entry.insert(QStringLiteral("Size"), double(run.size));
        entry.insert(QStringLiteral("StartTimeUTC"), StoreTime::toText(run.start));
        entry.insert(QStringLiteral("Operation"), run.operation);
        if (csv) {
            const bool running = run.result == 2;
            entry.insert(QStringLiteral("CSVLine"),
                csvLine({run.planName, run.operation == 0 ? QStringLiteral("Backup") : QStringLiteral("Restore"),
                    QString::number(run.fileCount), QString::number(run.size), stateName(run.result),
                    readableTime(run.start), QString::number(run.duration),
                    running ? QString() : readableTime(run.start.addSecs(run.duration)), run.errorMessage}));
        }
        entries.append(entry);
    }
    respond.success({{QStringLiteral("HistoryListByPlan"), entries}});
}

void HistoryCommands::listByFiles(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    params.optionalString("filter");
    const qint64 lastId = params.optionalInteger("lastId", 0, 0, std::numeric_limits<qint64>::max());
    const QUuid plan = params.optionalUuid("planId");
    const int operation = int(params.optionalInteger("filterOperationType", 0, 0, FileOperationRecord::Failed));
    const qint64 run = params.optionalInteger("runId", 0, 0, std::numeric_limits<qint64>::max());
    const QDateTime since = periodStart(params);
    const bool csv = params.optionalBool("generateCSV", false);

    const QList<FileOperationRecord> records
        = HistoryStore(m_database).fileOperations(plan, since, lastId, operation, pageSize(), run);
    QJsonArray entries;
    for (const FileOperationRecord& record : records) {
        QJsonObject entry;
        entry.insert(QStringLiteral("ID"), double(record.id));
        entry.insert(QStringLiteral("DateModified"), StoreTime::toText(record.modified));
        entry.insert(QStringLiteral("Duration"), double(record.duration));
        entry.insert(QStringLiteral("File"), record.path);
        entry.insert(QStringLiteral("Message"), record.message);
        entry.insert(QStringLiteral("Operation"), record.operation);
        entry.insert(QStringLiteral("Size"), double(record.size));
        entry.insert(QStringLiteral("FinishTime"), StoreTime::toText(record.finish));
        entry.insert(QStringLiteral("PlanId"), record.plan.toString());
        // The run's record of the name outlives the plan, such as a restore run once and removed.
        entry.insert(QStringLiteral("PlanName"), record.planName);
        if (csv) {
            entry.insert(QStringLiteral("CSVLine"),
                csvLine({fileOperationName(record.operation), record.planName, record.path,
                    QString::number(record.size), readableTime(record.finish), QString::number(record.duration),
                    readableTime(record.modified), record.message}));
        }
        entries.append(entry);
    }
    respond.success({{QStringLiteral("HistoryListByFiles"), entries}});
}

} // namespace TWB::Service
