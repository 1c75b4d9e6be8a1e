#include "history/history_model_base.h"

#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/communication/icommand.h"
#include "platform/logging/twl_debug.h"

#include <QJsonArray>

namespace TWB::GUI {

using namespace TWB::Common::Communication;

namespace {

constexpr int ColumnCount = 8;

QString periodText(int period)
{
    switch (period) {
    case 1:
        return QStringLiteral("DayLast");
    case 2:
        return QStringLiteral("WeekLast");
    case 3:
        return QStringLiteral("MonthLast");
    default:
        return QStringLiteral("All");
    }
}

} // namespace

HistoryModelBase::HistoryModelBase(const Keys& keys, QObject* parent)
    : BaseModel(parent)
    , keys(keys)
{ }

HistoryModelBase::~HistoryModelBase() = default;

QModelIndex HistoryModelBase::index(int row, int column, const QModelIndex& parent) const
{
    if (parent.isValid() || row < 0 || column < 0 || row >= rows.size() || column >= ColumnCount)
        return QModelIndex();
    return createIndex(row, column);
}

QModelIndex HistoryModelBase::parent(const QModelIndex&) const
{
    return QModelIndex();
}

int HistoryModelBase::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : rows.size();
}

int HistoryModelBase::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

Qt::ItemFlags HistoryModelBase::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsSelectable | Qt::ItemIsEnabled : Qt::NoItemFlags;
}

QVariant HistoryModelBase::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < keys.headers.size())
        return keys.headers.at(section);
    return BaseModel::headerData(section, orientation, role);
}

bool HistoryModelBase::canFetchMore(const QModelIndex& parent) const
{
    return !parent.isValid() && hasMore;
}

void HistoryModelBase::fetchMore(const QModelIndex& parent)
{
    if (parent.isValid() || !hasMore || rows.isEmpty())
        return;
    startLoad(period, plan, rows.constLast().value(keys.rowId).toInt(), filterOperation);
}

QMap<QString, QVariant> HistoryModelBase::entry(int row) const
{
    return row >= 0 && row < rows.size() ? rows.at(row) : QMap<QString, QVariant>();
}

bool HistoryModelBase::startLoad(int period, const QUuid& plan, int lastId, int filterOperation)
{
    Q_EMIT updated();
    this->period = period;
    this->plan = plan;
    this->filterOperation = filterOperation;
    hasMore = false;
    if (lastId == 0 && !rows.isEmpty()) {
        beginRemoveRows(QModelIndex(), 0, rows.size() - 1);
        rows.clear();
        endRemoveRows();
    }
    return send(period, plan, lastId, filterOperation, false);
}

bool HistoryModelBase::send(int period, const QUuid& plan, int lastId, int filterOperation, bool csv)
{
    QJsonObject params {{QStringLiteral("filter"), QString()}, {keys.lastId, lastId},
        {QStringLiteral("period"), periodText(period)}, {keys.plan, plan.toString()},
        {QStringLiteral("profile"), currentProfile()}};
    addParams(params, filterOperation);
    if (csv)
        params.insert(QStringLiteral("generateCSV"), true);
    return sendParams(params, csv);
}

void HistoryModelBase::addParams(QJsonObject&, int) const { }

bool HistoryModelBase::sendParams(const QJsonObject& params, bool csv)
{
    try {
        ICommand* command = csv
            ? newCommand(keys.command, this, &HistoryModelBase::onGetExportResult, keys.managerGone, keys.noCommand)
            : newCommand(keys.command, this, &HistoryModelBase::onGetResult, keys.managerGone, keys.noCommand);
        // A list supersedes the one before it; exports run beside the list and are not tied to it.
        if (!csv)
            requestId = QUuid(command->id());
        setCommandParams(*command, params);
        command->exec();
        return true;
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
        return false;
    }
}

void HistoryModelBase::onGetResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    if (QUuid(command->id()) != requestId) {
        command->deleteLater();
        return;
    }
    try {
        const QJsonArray list = replyData(*command).value(keys.command).toArray();
        if (!list.isEmpty()) {
            const int first = rows.size();
            beginInsertRows(QModelIndex(), first, first + list.size() - 1);
            rows.reserve(first + list.size());
            for (const QJsonValue& value : list)
                rows.append(value.toObject().toVariantMap());
            endInsertRows();
            // Only now: a view that asks for more while the rows go in would ask for this page again.
            hasMore = true;
        }
        Q_EMIT complite();
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        Q_EMIT error(text);
    }
    command->deleteLater();
}

void HistoryModelBase::onGetExportResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        const QJsonArray list = replyData(*command).value(keys.command).toArray();
        exportLines.reserve(exportLines.size() + list.size());
        for (const QJsonValue& value : list)
            exportLines.append(value.toObject().value(QStringLiteral("CSVLine")).toString());
        Q_EMIT exportProgress(exportLines.size());
        if (list.size() == ExportPageSize) {
            // The same selection, read back from this request, below the last entry it brought.
            QJsonObject params = command->request().object().value(QStringLiteral("params")).toObject();
            params.insert(keys.lastId, list.last().toObject().value(keys.rowId).toInt());
            sendParams(params, true);
        } else if (list.size() < ExportPageSize) {
            const QSharedPointer<QTemporaryFile> file = prepareExport(exportLines);
            exportLines.clear();
            if (!file)
                throw tr("The history could not be written to a temporary file");
            emitExportReady(file);
        }
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        Q_EMIT error(text);
    }
    command->deleteLater();
}

} // namespace TWB::GUI
