#include "service/commands/history_commands.h"

#include "service/commands/command_router.h"
#include "service/commands/json_writer.h"
#include "service/store/history_store.h"
#include "service/commands/params.h"
#include "service/commands/responder.h"
#include "service/store/store_time.h"

#include <QHash>
#include <QJsonArray>
#include <QStringList>

#include <algorithm>

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

// The readable form of a stored "yyyyMMddhhmmss" time, cut from its digits; empty for no time.
QByteArray readableTime(const QByteArray& stored)
{
    if (stored.size() != 14
        || !std::all_of(stored.cbegin(), stored.cend(), [](char c) { return c >= '0' && c <= '9'; }))
        return QByteArray();
    const char* d = stored.constData();
    QByteArray text;
    text.reserve(19);
    text.append(d, 4).append('-').append(d + 4, 2).append('-').append(d + 6, 2).append(' ');
    text.append(d + 8, 2).append(':').append(d + 10, 2).append(':').append(d + 12, 2);
    return text;
}

// csvLine()'s rules, in UTF-8 for replies written as text.
class CsvLine final
{
public:
    void add(const QByteArray& field)
    {
        if (m_fields++ > 0)
            m_text.append(',');
        m_text.append('"');
        if (field.contains('"'))
            m_text.append(QByteArray(field).replace("\"", "\"\""));
        else
            m_text.append(field);
        m_text.append('"');
    }
    const QByteArray& text() const { return m_text; }

private:
    QByteArray m_text;
    int m_fields = 0;
};

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

    // Written as text straight from the rows: an export asks for hundreds of these pages one after
    // another, and records, QJsonObjects and times parsed back and forth were most of their cost.
    using Column = HistoryStore::FileOperationColumn;
    QSqlQuery rows = HistoryStore(m_database).selectFileOperations(plan, since, lastId, operation, pageSize(), run);
    QByteArray out;
    out.reserve(csv ? 96 * 1024 : 48 * 1024);
    out.append("{\"HistoryListByFiles\":[");
    bool first = true;
    for (; rows.next(); first = false) {
        const QByteArray path = rows.value(Column::OperationPath).toString().toUtf8();
        const QByteArray message = rows.value(Column::OperationMessage).toString().toUtf8();
        const QByteArray modified = rows.value(Column::OperationModified).toString().toLatin1();
        const QByteArray finish = rows.value(Column::OperationFinish).toString().toLatin1();
        const qint64 size = rows.value(Column::OperationSize).toLongLong();
        const qint64 duration = rows.value(Column::OperationDuration).toLongLong();
        const int kind = rows.value(Column::OperationKind).toInt();
        const QByteArray planName = rows.value(Column::OperationPlanName).toString().toUtf8();
        if (!first)
            out.append(',');
        JsonWriter json(out);
        json.beginObject();
        json.key("ID");
        json.number(rows.value(Column::OperationId).toLongLong());
        json.key("DateModified");
        json.utf8(modified);
        json.key("Duration");
        json.number(duration);
        json.key("File");
        json.utf8(path);
        json.key("Message");
        json.utf8(message);
        json.key("Operation");
        json.number(kind);
        json.key("Size");
        json.number(size);
        json.key("FinishTime");
        json.utf8(finish);
        json.key("PlanId");
        json.string(QUuid(rows.value(Column::OperationPlan).toString()).toString());
        // The run's record of the name outlives the plan, such as a restore run once and removed.
        json.key("PlanName");
        json.utf8(planName);
        if (csv) {
            CsvLine line;
            line.add(FileOperationRecord::kindName(kind).toUtf8());
            line.add(planName);
            line.add(path);
            line.add(QByteArray::number(size));
            line.add(readableTime(finish));
            line.add(QByteArray::number(duration));
            line.add(readableTime(modified));
            line.add(message);
            json.key("CSVLine");
            json.utf8(line.text());
        }
        json.endObject();
    }
    out.append("]}");
    respond.successJson(out);
}

} // namespace TWB::Service
