#include "storages/storage_connections_model.h"

#include "frame/application.h"
#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/communication/icommand.h"
#include "platform/communication/iparser.h"
#include "platform/communication/manager.h"
#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "platform/communication/parser_factory.h"
#include "platform/defines/common.h"
#include "platform/logging/twl_debug.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QTimer>

#include <memory>

namespace TWB::GUI {

using namespace TWB::Common::Communication;

namespace {

constexpr int ColumnCount = 10;
constexpr int TypeColumn = 5;
constexpr int DetailParamsColumn = 8;
// A service still gathering its accounts says so; asking again sooner would only repeat the answer.
constexpr int RetryIntervalMs = 60000;

QUuid accountId(const QVariantMap& account)
{
    return QUuid(account.value(QStringLiteral("ID")).toString());
}

// A "StorageGetConnection" command wired to the given result slot. Throws the usual texts when the
// channel is gone or does not know the command.
template <typename Slot> void sendGetConnection(StorageConnectionsModel* model, Slot slot)
{
    newCommand(QStringLiteral("StorageGetConnection"), model, slot)->exec();
}

} // namespace

const QMap<int, QString> StorageConnectionsModel::KEY = {
    {0, QStringLiteral("DisplayName")},
    {1, QStringLiteral("ID")},
    {2, QStringLiteral("Path")},
    {3, QStringLiteral("Prefix")},
    {4, QStringLiteral("PrefixArray")},
    {5, QStringLiteral("Type")},
    {6, QStringLiteral("SpaceLimit")},
    {7, QStringLiteral("SpaceUsed")},
    {8, QStringLiteral("DetailParams")},
    {9, QStringLiteral("SyncStatus")},
};

StorageConnectionsModel::StorageConnectionsModel(QObject* parent)
    : BaseModel(parent)
    , retryTimer(new QTimer(this))
{
    retryTimer->setSingleShot(true);
    retryTimer->setTimerType(Qt::CoarseTimer);
    retryTimer->setInterval(RetryIntervalMs);
    connect(retryTimer, &QTimer::timeout, this, &StorageConnectionsModel::init);
    if (auto center = NotificationCenter::instance())
        connect(center, &NotificationCenter::notification, this, &StorageConnectionsModel::onNotification);
}

StorageConnectionsModel::~StorageConnectionsModel() = default;

bool StorageConnectionsModel::init()
{
    Q_EMIT updated();
    try {
        sendGetConnection(this, &StorageConnectionsModel::onGetConnectionResult);
        return true;
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
        return false;
    }
}

void StorageConnectionsModel::onGetConnectionResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        const QJsonObject data = replyData(*command);
        if (data.value(QStringLiteral("NeedRetry")).toBool()) {
            TWL::TwlDebug("TWB").warning() << "GetConnection command return need retry... timeout 1 min";
            retryTimer->start();
            command->deleteLater();
            return;
        }
        const QJsonArray list = data.value(QStringLiteral("storageConnection")).toArray();
        QList<QUuid> stale = storages.keys();
        int added = 0;
        for (const QJsonValue& value : list) {
            const QVariantMap account = value.toObject().toVariantMap();
            const QUuid id = accountId(account);
            if (!storages.contains(id)) {
                order.append(id);
                ++added;
            }
            storages.insert(id, account);
            stale.removeAll(id);
            const int row = order.indexOf(id);
            Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1), {});
        }
        // New accounts are announced once, as one batch, after every row has its data.
        if (added > 0) {
            beginInsertRows(QModelIndex(), order.size() - added, order.size() - 1);
            endInsertRows();
        }
        for (const QUuid& id : qAsConst(stale)) {
            const int row = order.indexOf(id);
            beginRemoveRows(QModelIndex(), row, row);
            storages.remove(id);
            order.remove(row);
            endRemoveRows();
        }
        Q_EMIT complite();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
    }
    command->deleteLater();
}

void StorageConnectionsModel::editStorage(QUuid id)
{
    pendingEdits.append(id);
    Q_EMIT updated();
    try {
        // The whole list is fetched: the answer for one account would tell nothing about the others.
        sendGetConnection(this, &StorageConnectionsModel::onEditStorage);
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
    }
}

void StorageConnectionsModel::onEditStorage()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        const QJsonArray list = replyData(*command).value(QStringLiteral("storageConnection")).toArray();
        for (const QJsonValue& value : list) {
            const QVariantMap account = value.toObject().toVariantMap();
            const QUuid id = accountId(account);
            if (!pendingEdits.contains(id))
                continue;
            // One reply settles one account; any other pending one waits for its own reply.
            pendingEdits.removeOne(id);
            const int row = order.indexOf(id);
            if (row >= 0) {
                storages.insert(id, account);
                Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
            } else {
                beginInsertRows(QModelIndex(), order.size(), order.size());
                storages.insert(id, account);
                order.append(id);
                endInsertRows();
            }
            break;
        }
        Q_EMIT complite();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
    }
    command->deleteLater();
}

bool StorageConnectionsModel::removeRows(int row, int count, const QModelIndex&)
{
    const QVector<QUuid> ids = order.mid(row, count);
    if (ids.isEmpty())
        return true;
    try {
        // Each account is deleted on its own; a refusal for one does not hold back the others.
        for (const QUuid& id : ids) {
            ICommand* command = newCommand(
                QStringLiteral("StorageDeleteFileSystem"), this, &StorageConnectionsModel::onRemovedResult);
            setCommandParams(
                *command, {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("profile"), currentProfile()}});
            command->exec();
        }
        return true;
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
        return false;
    }
}

void StorageConnectionsModel::onRemovedResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        replyData(*command);
        // The row goes when the service reports the removal, so every console sees it go at once.
        Q_EMIT complite();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT error(text);
    }
    command->deleteLater();
}

void StorageConnectionsModel::removeStorage(QUuid id)
{
    Q_EMIT updated();
    const int row = order.indexOf(id);
    if (row < 0) {
        Q_EMIT error(tr("There isn't such storage account in model"));
        return;
    }
    beginRemoveRows(QModelIndex(), row, row);
    storages.remove(id);
    order.remove(row);
    endRemoveRows();
    Q_EMIT complite();
}

void StorageConnectionsModel::updateOnSyncReposytory(const QUuid& id, bool running)
{
    const auto account = storages.find(id);
    if (account == storages.end())
        return;
    account->insert(QStringLiteral("SyncStatus"), running);
    const int row = order.indexOf(id);
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1), {});
}

void StorageConnectionsModel::onNotification(const QJsonDocument& document)
{
    static const Notification::ParserFactory factory;
    const std::unique_ptr<Notification::IParser> parser(factory.create(document));
    if (!parser) {
        TWL::TwlDebug("TWB").debug() << "Notiifcation is 0x00";
        return;
    }
    const QUuid type = parser->type();
    const QUuid id(parser->message().value(QStringLiteral("id")).toString());
    const auto is = [&type](const char* guid) { return type == QUuid(QLatin1String(guid)); };
    if (is(Notification::Type::StorageListChanged)) {
        TWL::TwlDebug("TWB").debug() << "Update storges notification!";
        init();
    } else if (is(Notification::Type::StorageAdded)) {
        TWL::TwlDebug("TWB").debug().noquote() << "Add storge notification!    " << id.toString();
        editStorage(id);
    } else if (is(Notification::Type::StorageUpdated)) {
        TWL::TwlDebug("TWB").debug().noquote() << "Update storge notification! " << id.toString();
        editStorage(id);
    } else if (is(Notification::Type::StorageRemoved)) {
        TWL::TwlDebug("TWB").debug().noquote() << "Remove storge notification! " << id.toString();
        removeStorage(id);
    } else if (is(Notification::Type::StorageSyncFinished)) {
        TWL::TwlDebug("TWB").debug() << "Syncstorges notification finished!";
        updateOnSyncReposytory(id, false);
    } else if (is(Notification::Type::StorageSyncStarted)) {
        TWL::TwlDebug("TWB").debug() << "Syncstorges notification started!";
        updateOnSyncReposytory(id, true);
    }
}

QModelIndex StorageConnectionsModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return QModelIndex();
    return createIndex(row, column);
}

QModelIndex StorageConnectionsModel::parent(const QModelIndex&) const
{
    return QModelIndex();
}

int StorageConnectionsModel::rowCount(const QModelIndex& parent) const
{
    // A flat table: rows have no children, or views and proxies would look for some.
    return parent.isValid() ? 0 : order.size();
}

int StorageConnectionsModel::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

QVariant StorageConnectionsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || role > Qt::DecorationRole || index.row() >= order.size())
        return QVariant();
    const QVariantMap& account = storages[order.at(index.row())];
    if (role == Qt::DecorationRole) {
        if (index.column() != 0)
            return QVariant();
        return storageIcon(TWL::Cloud::Type(account.value(KEY.value(TypeColumn)).toInt()), IconManager::Small);
    }
    const QVariant value = account.value(KEY.value(index.column()));
    // Readers of the back-end's settings take them as JSON, the form they are saved in.
    if (index.column() == DetailParamsColumn)
        return QJsonObject::fromVariantMap(value.toMap());
    return value;
}

QVariant StorageConnectionsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return BaseModel::headerData(section, orientation, role);
    // Plain texts: hosts and tests find columns by these words.
    switch (section) {
    case 0:
        return QStringLiteral("Display Name");
    case 1:
        return QStringLiteral("ID");
    case 2:
        return QStringLiteral("Path");
    case 3:
        return QStringLiteral("Prefix");
    case 4:
        return QStringLiteral("Prefixs");
    case 5:
        return QStringLiteral("Type");
    case 6:
        return QStringLiteral("Space Limit");
    case 7:
        return QStringLiteral("Space Used");
    case 8:
        return QStringLiteral("Detail Params");
    case 9:
        return QStringLiteral("Sync status");
    default:
        return QVariant();
    }
}

Qt::ItemFlags StorageConnectionsModel::flags(const QModelIndex& index) const
{
    // The root is no account: views take flags there for what may be dropped on the table.
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled;
}

QIcon StorageConnectionsModel::storageIcon(TWL::Cloud::Type type, IconManager::Size size)
{
    if (!SHARED::defines::common::is_standalone()) {
        // The managed edition shows its provider's mark for every cloud account.
        if (type == TWL::Cloud::FileSystem)
            return IconManager::storage(IconManager::FileSystem, size);
        return QIcon(Application::getImagesPath() + QStringLiteral("/MainIcon.ico"));
    }
    static const QHash<int, IconManager::Storage> icons = {
        {TWL::Cloud::FileSystem, IconManager::FileSystem},
        {TWL::Cloud::AmazonS3, IconManager::AmazonS3},
        {TWL::Cloud::AzureBlob, IconManager::AzureBlob},
        {TWL::Cloud::OracleCloud, IconManager::OracleCloud},
        {TWL::Cloud::Rackspace, IconManager::Rackspace},
        {TWL::Cloud::Openstack, IconManager::Openstack},
        {TWL::Cloud::GoogleStorage, IconManager::GoogleStorage},
        {TWL::Cloud::SoftLayer, IconManager::SoftLayer},
        {TWL::Cloud::HPCloud, IconManager::HPCloud},
        {TWL::Cloud::HPHelion, IconManager::HPHelion},
        {TWL::Cloud::S3Compatible, IconManager::S3Compatible},
        {TWL::Cloud::Scality, IconManager::Scality},
        {TWL::Cloud::DreamObjects, IconManager::DreamObjects},
        {TWL::Cloud::Cloudian, IconManager::Cloudian},
        {TWL::Cloud::ThinkOn, IconManager::ThinkOn},
        {TWL::Cloud::CenturyLink, IconManager::CenturyLink},
        {TWL::Cloud::AmazonS3Chinese, IconManager::AmazonS3Chinese},
        {TWL::Cloud::Minio, IconManager::Minio},
        {TWL::Cloud::Verizon, IconManager::Verizon},
        {TWL::Cloud::Wasabi, IconManager::Wasabi},
        {TWL::Cloud::AlibabaCloud, IconManager::AlibabaCloud},
        {TWL::Cloud::BackBlaze, IconManager::BackBlaze},
        {TWL::Cloud::Sftp, IconManager::Sftp},
    };
    const auto icon = icons.constFind(type);
    if (icon == icons.constEnd())
        return QIcon();
    return IconManager::storage(*icon, size);
}

} // namespace TWB::GUI
