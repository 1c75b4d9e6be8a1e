#include "history/history_get_by_file_model.h"

#include "platform/history/export_as_csv.h"
#include "widgets/icon_manager.h"

namespace TWB::GUI {

namespace {

const QMap<int, QString> KEY = {
    {0, QStringLiteral("Operation")},
    {1, QStringLiteral("PlanId")},
    {2, QStringLiteral("File")},
    {3, QStringLiteral("Size")},
    {4, QStringLiteral("FinishTime")},
    {5, QStringLiteral("Duration")},
    {6, QStringLiteral("DateModified")},
    {7, QStringLiteral("Message")},
};

} // namespace

HistoryGetByFileModel::HistoryGetByFileModel(QObject* parent)
    : HistoryModelBase(
        {QStringLiteral("HistoryListByFiles"), QStringLiteral("planId"), QStringLiteral("lastId"), QStringLiteral("ID"),
            QStringLiteral("Commnunication manager is 0x00"), QStringLiteral("Commnunication command don't registrate"),
            {tr("Operation"), tr("Plan name"), tr("File"), tr("Size"), tr("Finish Time"), tr("Duration"),
                tr("Date Modified"), tr("Message")}},
        parent)
{ }

HistoryGetByFileModel::~HistoryGetByFileModel() = default;

int HistoryGetByFileModel::operationIcon(int operation)
{
    // The service's kinds: 1 uploaded, 2 restored, 3 deleted, 4 failed.
    switch (operation) {
    case 1:
        return IconManager::FileUploaded;
    case 2:
        return IconManager::RestorePlan;
    case 3:
        return IconManager::FileDeleted;
    case 4:
        return IconManager::BackupPlanFail;
    default:
        return IconManager::BackupPlan;
    }
}

QVariant HistoryGetByFileModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rows.size())
        return QVariant();
    const QMap<QString, QVariant>& entry = rows.at(index.row());
    if (role == Qt::DisplayRole)
        return entry.value(KEY.value(index.column()));
    if (role == Qt::UserRole && index.column() == 1)
        return entry.value(QStringLiteral("PlanName"));
    if (role == Qt::DecorationRole && index.column() == 0)
        return IconManager::icon(operationIcon(entry.value(QStringLiteral("Operation")).toInt()), IconManager::Small);
    return QVariant();
}

bool HistoryGetByFileModel::load(int period, const QUuid& plan, int lastId, int filterOperation)
{
    return startLoad(period, plan, lastId, filterOperation);
}

bool HistoryGetByFileModel::issueFileExport(int period, const QUuid& plan, int lastId, int filterOperation)
{
    return send(period, plan, lastId, filterOperation, true);
}

void HistoryGetByFileModel::addParams(QJsonObject& params, int filterOperation) const
{
    params.insert(QStringLiteral("filterOperationType"), filterOperation);
    if (runId > 0)
        params.insert(QStringLiteral("runId"), double(runId));
}

QSharedPointer<QTemporaryFile> HistoryGetByFileModel::prepareExport(const QStringList& lines) const
{
    return TWB::Common::History::ExportAsCSV::prepareFileExport(lines);
}

void HistoryGetByFileModel::emitExportReady(const QSharedPointer<QTemporaryFile>& file)
{
    Q_EMIT saveFileReady(file);
}

} // namespace TWB::GUI
