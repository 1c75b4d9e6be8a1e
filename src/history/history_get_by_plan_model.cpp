#include "history/history_get_by_plan_model.h"

#include "plans/plan_table_model.h"
#include "platform/history/export_as_csv.h"

#include <QDateTime>

namespace TWB::GUI {

namespace {

const QString timeFormat = QStringLiteral("yyyyMMddhhmmss");
constexpr int ResultColumn = 3;
constexpr int FinishColumn = 6;
constexpr int RunningResult = 2;

const QMap<int, QString> KEY = {
    {0, QStringLiteral("PlanName")},
    {1, QStringLiteral("FileOperationsTotalCount")},
    {2, QStringLiteral("Size")},
    {3, QStringLiteral("Result")},
    {4, QStringLiteral("StartTimeUTC")},
    {5, QStringLiteral("Duration")},
    {7, QStringLiteral("ErrorMessage")},
};

QVariant resultColour(int result)
{
    switch (result) {
    case 2:
    case 6:
        return QColor(Qt::darkGreen);
    case 5:
    case 7:
        return QColor(Qt::darkYellow);
    case 8:
    case 10:
        return QColor(Qt::red);
    case 9:
    case 100:
    case 101:
    case 102:
        return QColor(Qt::blue);
    default:
        return QVariant();
    }
}

} // namespace

HistoryGetByPlanModel::HistoryGetByPlanModel(QObject* parent)
    : HistoryModelBase({QStringLiteral("HistoryListByPlan"), QStringLiteral("planID"), QStringLiteral("lastID"),
                           QStringLiteral("DbID"), QStringLiteral("Commnunication manager  not exist"),
                           QStringLiteral("Commnunication command not registered"),
                           {tr("Plan Name"), tr("Files"), tr("Size"), tr("Result"), tr("Start Time"), tr("Duration"),
                               tr("Finish Time"), tr("Error Message")}},
        parent)
{ }

HistoryGetByPlanModel::~HistoryGetByPlanModel() = default;

QString HistoryGetByPlanModel::finishTime(const QMap<QString, QVariant>& entry)
{
    if (entry.value(QStringLiteral("Result")).toInt() == RunningResult)
        return QString();
    const QDateTime start = QDateTime::fromString(entry.value(QStringLiteral("StartTimeUTC")).toString(), timeFormat);
    return start.addSecs(entry.value(QStringLiteral("Duration")).toLongLong()).toString(timeFormat);
}

QVariant HistoryGetByPlanModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rows.size())
        return QVariant();
    const QMap<QString, QVariant>& entry = rows.at(index.row());
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        if (column == FinishColumn)
            return finishTime(entry);
        if (column == ResultColumn)
            return entry.value(KEY.value(column)).toInt();
        return entry.value(KEY.value(column));
    case Qt::DecorationRole:
        if (column != 0)
            return QVariant();
        return PlanTableModel::palnStatusIcon(entry.value(QStringLiteral("Operation")).toInt() == 0 ? 1 : 2,
            entry.value(QStringLiteral("Result")).toInt());
    case Qt::TextAlignmentRole:
        if (column == 1 || column == 2)
            return -1;
        if (column == ResultColumn)
            return int(Qt::AlignHCenter | Qt::AlignVCenter);
        return QVariant();
    case Qt::ForegroundRole:
        return column == ResultColumn ? resultColour(entry.value(QStringLiteral("Result")).toInt()) : QVariant();
    default:
        return QVariant();
    }
}

bool HistoryGetByPlanModel::load(int period, const QUuid& plan, int lastId)
{
    return startLoad(period, plan, lastId, 0);
}

bool HistoryGetByPlanModel::issuePlanExport(int period, const QUuid& plan, int lastId)
{
    return send(period, plan, lastId, 0, true);
}

QSharedPointer<QTemporaryFile> HistoryGetByPlanModel::prepareExport(const QStringList& lines) const
{
    return TWB::Common::History::ExportAsCSV::preparePlanExport(lines);
}

void HistoryGetByPlanModel::emitExportReady(const QSharedPointer<QTemporaryFile>& file)
{
    Q_EMIT savePlanReady(file);
}

} // namespace TWB::GUI
