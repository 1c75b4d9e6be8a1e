#include "plans/plan_table_model.h"

#include "plans/plan_states.h"
#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/communication/icommand.h"
#include "platform/communication/iparser.h"
#include "platform/communication/manager.h"
#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "platform/communication/parser_factory.h"
#include "platform/logging/twl_debug.h"
#include "widgets/icon_manager.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QLocale>

#include <memory>

namespace TWB::GUI {

using namespace TWB::Common::Communication;

namespace {

constexpr int ColumnCount = 15;
constexpr int LastRunTimeColumn = 8;
constexpr int NextRunColumn = 9;

// A plan's UTC time as the service sends it, shown in the user's local time and format.
QVariant localTimeText(const QString& text)
{
    if (text.isEmpty())
        return QVariant();
    QDateTime time = QDateTime::fromString(text, Qt::ISODate);
    time.setTimeSpec(Qt::UTC);
    return QLocale::system().toString(time.toLocalTime(), QLocale::ShortFormat);
}

} // namespace

const QMap<int, QString> PlanTableModel::KEY = {
    {0, QStringLiteral("ID")},
    {1, QStringLiteral("Name")},
    {2, QStringLiteral("SubType")},
    {3, QStringLiteral("Schedule")},
    {4, QStringLiteral("Status")},
    {5, QStringLiteral("StorageId")},
    {6, QStringLiteral("LastRunMessage")},
    {7, QStringLiteral("LastRunStatus")},
    {8, QStringLiteral("LastRunTime")},
    {9, QStringLiteral("NextRun")},
    {10, QStringLiteral("LastDuration")},
    {11, QStringLiteral("LastUploadedCount")},
    {12, QStringLiteral("LastFailedCount")},
    {13, QStringLiteral("LastUploadedSize")},
    {14, QStringLiteral("Type")},
};

PlanTableModel::PlanTableModel(QObject* parent)
    : BaseModel(parent)
{
    if (auto center = NotificationCenter::instance())
        connect(center, &NotificationCenter::notification, this, &PlanTableModel::onNotification);
}

PlanTableModel::~PlanTableModel() = default;

bool PlanTableModel::init()
{
    Q_EMIT updated();
    try {
        ICommand* command = newCommand(QStringLiteral("PlanGetList"), this, &PlanTableModel::onGetListResult);
        setCommandParams(*command, {{QStringLiteral("profile"), currentProfile()}});
        command->exec();
        return true;
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
        return false;
    }
}

bool PlanTableModel::loadInfo(const QUuid& id)
{
    Q_EMIT updated();
    try {
        ICommand* command = newCommand(QStringLiteral("PlanGetInfo"), this, &PlanTableModel::onGetInfoResult);
        // Lower-case "id" here, unlike the other plan commands.
        setCommandParams(
            *command, {{QStringLiteral("id"), id.toString()}, {QStringLiteral("profile"), currentProfile()}});
        command->exec();
        return true;
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
        return false;
    }
}

void PlanTableModel::onGetListResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        const QJsonArray list = replyData(*command).value(QStringLiteral("planList")).toArray();
        if (!list.isEmpty()) {
            // Appends without clearing: the load is meant to run once.
            const int first = order.size();
            beginInsertRows(QModelIndex(), first, first + list.size() - 1);
            order.reserve(first + list.size());
            for (const QJsonValue& value : list) {
                const QVariantMap plan = value.toObject().toVariantMap();
                const QUuid id(plan.value(QStringLiteral("ID")).toString());
                plans.insert(id, plan);
                order.append(id);
            }
            endInsertRows();
        }
        Q_EMIT complite();
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        Q_EMIT error(text);
    }
    command->deleteLater();
}

void PlanTableModel::onGetInfoResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        const QVariantMap plan = replyData(*command).value(QStringLiteral("planInfo")).toObject().toVariantMap();
        if (!plan.isEmpty()) {
            const QUuid id(plan.value(QStringLiteral("ID")).toString());
            if (plans.contains(id)) {
                plans.insert(id, plan);
                const int row = order.indexOf(id);
                Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
            } else {
                const int row = order.size();
                beginInsertRows(QModelIndex(), row, row);
                plans.insert(id, plan);
                order.append(id);
                endInsertRows();
            }
        }
        Q_EMIT complite();
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        Q_EMIT error(text);
    }
    command->deleteLater();
}

void PlanTableModel::onNotification(const QJsonDocument& document)
{
    static const Notification::ParserFactory factory;
    const std::unique_ptr<Notification::IParser> parser(factory.create(document));
    if (!parser) {
        TWL::TwlDebug("TWB").debug() << "Notiifcation is 0x00";
        return;
    }
    const QUuid type = parser->type();
    const QMap<QString, QVariant> message = parser->message();
    const QUuid id(message.value(QStringLiteral("id")).toString());
    if (type == QUuid(QLatin1String(Notification::Type::PlanCreated)))
        loadInfo(id);
    else if (type == QUuid(QLatin1String(Notification::Type::PlanUpdated)))
        loadInfo(id);
    else if (type == QUuid(QLatin1String(Notification::Type::PlanRemoved)))
        removePlan(id);
    else if (type == QUuid(QLatin1String(Notification::Type::PlanStateChanged)))
        changeState(id, message.value(QStringLiteral("state")).toInt());
}

void PlanTableModel::removePlan(const QUuid& id)
{
    if (!plans.contains(id))
        return;
    const int row = order.indexOf(id);
    beginRemoveRows(QModelIndex(), row, row);
    order.remove(row);
    plans.remove(id);
    endRemoveRows();
}

void PlanTableModel::changeState(const QUuid& id, int state)
{
    if (!plans.contains(id))
        return;
    // Shown at once; the rest of the row (last run, next run) comes with the reload.
    plans[id].insert(QStringLiteral("Status"), state);
    const int row = order.indexOf(id);
    Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
    loadInfo(id);
}

int PlanTableModel::palnStatusIconType(int type, int status)
{
    if (type != 1 && type != 2)
        return 0;
    const bool backup = type == 1;
    switch (status) {
    case PlanStates::Running:
        return backup ? IconManager::BackupPlanRunning : IconManager::RestorePlanRunning;
    case PlanStates::Success:
        return backup ? IconManager::BackupPlanSuccess : IconManager::RestorePlanSuccess;
    case PlanStates::Warning:
        return backup ? IconManager::BackupPlanWarning : IconManager::RestorePlanWarning;
    case PlanStates::Fail:
        return backup ? IconManager::BackupPlanFail : IconManager::RestorePlanFail;
    default:
        return backup ? IconManager::BackupPlan : IconManager::RestorePlan;
    }
}

QIcon PlanTableModel::palnStatusIcon(int type, int status)
{
    const int icon = palnStatusIconType(type, status);
    return icon ? IconManager::icon(icon, IconManager::Small) : QIcon();
}

QModelIndex PlanTableModel::index(int row, int column, const QModelIndex&) const
{
    if (row < 0 || column < 0)
        return QModelIndex();
    return createIndex(row, column);
}

QModelIndex PlanTableModel::parent(const QModelIndex&) const
{
    return QModelIndex();
}

int PlanTableModel::rowCount(const QModelIndex& parent) const
{
    // A flat table: rows have no children.
    return parent.isValid() ? 0 : order.size();
}

int PlanTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PlanTableModel::data(const QModelIndex& index, int role) const
{
    if (index.row() < 0 || index.column() < 0 || !index.model())
        return QVariant();
    // index() has no upper bound, so a row past the end reads as an empty plan.
    const QMap<QString, QVariant> plan = plans.value(order.value(index.row()));
    if (role == Qt::DisplayRole) {
        if (index.column() == LastRunTimeColumn || index.column() == NextRunColumn)
            return localTimeText(plan.value(KEY.value(index.column())).toString());
        return plan.value(KEY.value(index.column()));
    }
    if (role == Qt::DecorationRole && index.column() == 1) {
        const int subType = plan.value(QStringLiteral("SubType")).toInt();
        if (subType != 1 && subType != 2)
            return QVariant();
        // A running plan shows that it runs; an idle one shows how its last run ended.
        const bool running = plan.value(QStringLiteral("Status")).toInt() == 1;
        const int lastRunStatus = plan.value(QStringLiteral("LastRunStatus")).toInt();
        return palnStatusIcon(subType, running ? int(PlanStates::Running) : lastRunStatus);
    }
    return QVariant();
}

QVariant PlanTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return BaseModel::headerData(section, orientation, role);
    switch (section) {
    case 0:
        return tr("ID");
    case 1:
        return tr("Name");
    case 2:
        return tr("SubType");
    case 3:
        return tr("Shedule");
    case 4:
        return tr("Status");
    case 6:
        return tr("Last run message");
    case 7:
        return tr("Last run status");
    case 8:
        return tr("Last run time");
    case 9:
        return tr("Next run time");
    case 10:
        return tr("Duration", "of the last run");
    case 11:
        return tr("Files", "count of files sent in the last run");
    case 12:
        return tr("Failed", "count of files that failed in the last run");
    case 13:
        return tr("Size", "bytes sent in the last run");
    case 14:
        return tr("Type", "plan type: file, disk image...");
    default:
        // Column 5 holds the storage id but has no header of its own.
        return QVariant();
    }
}

Qt::ItemFlags PlanTableModel::flags(const QModelIndex& index) const
{
    // The root is no item: views and proxies expect no flags there.
    if (!index.isValid())
        return BaseModel::flags(index);
    return BaseModel::flags(index) | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsEnabled;
}

} // namespace TWB::GUI
