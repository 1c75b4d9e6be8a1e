#include "restore_wizard/storage_backup_model.h"

#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/communication/connection_manager.h"
#include "platform/communication/icommand.h"
#include "platform/logging/twl_debug.h"

#include <QApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QStyle>

#include <utility>

namespace TWB::GUI {

using namespace TWB::Common::Communication;

namespace {

// Columns of the storage connections model that the top-level rows show in columns 0, 1 and 2.
constexpr int SourceColumns[] = {0, 1, 5};
constexpr int IdColumn = 1;

// Bit of a key in Node::present: the plain keys 0 to 4, then 1004 to 1012.
quint32 presentBit(int key)
{
    return 1u << (key < 1000 ? key : key - 999);
}

} // namespace

StorageBackupModel::StorageBackupModel(QObject* parent)
    : BaseModel(parent)
    , keys({{0, QStringLiteral("Name")}, {1, QStringLiteral("Path")}, {2, QStringLiteral("IsChangeable")},
          {3, QStringLiteral("IsExpandable")}, {4, QStringLiteral("Type")}})
{ }

StorageBackupModel::~StorageBackupModel() = default;

QString StorageBackupModel::nodeKey(const QString& path, int type)
{
    return path + QLatin1Char(':') + QString::number(type);
}

bool StorageBackupModel::init()
{
    if (source)
        return true;
    auto manager = ModelManager::instance();
    source = manager ? manager->create(ModelNames::StorageConnection) : nullptr;
    if (!source)
        return false;
    connect(source, &QAbstractItemModel::rowsAboutToBeInserted, this, &StorageBackupModel::onScRowsAboutToBeInserted);
    connect(source, &QAbstractItemModel::rowsInserted, this, &StorageBackupModel::onScRowsInserted);
    connect(source, &QAbstractItemModel::rowsAboutToBeRemoved, this, &StorageBackupModel::onScRowsAboutToBeRemoved);
    connect(source, &QAbstractItemModel::rowsRemoved, this, &StorageBackupModel::onScRowsRemoved);
    connect(source, &QAbstractItemModel::dataChanged, this, &StorageBackupModel::onScDataChanged);
    if (auto connection = ConnectionManager::instance())
        connect(connection, &ConnectionManager::localManagmentConnected, this, &StorageBackupModel::refetchStalled);
    const int count = source->rowCount();
    if (count > 0) {
        beginInsertRows(QModelIndex(), 0, count - 1);
        for (int row = 0; row < count; ++row)
            addRoot(row);
        renumberRoots();
        endInsertRows();
    }
    return true;
}

void StorageBackupModel::addRoot(int row)
{
    const QUuid id(source->index(row, IdColumn).data().toString());
    accounts.insert(row, id);
    Root& entry = roots[id];
    if (!entry.node)
        entry.node = std::make_unique<Node>();
    entry.node->destination = id;
}

void StorageBackupModel::renumberRoots()
{
    for (int row = 0; row < accounts.size(); ++row) {
        const auto entry = roots.find(accounts.at(row));
        if (entry != roots.end())
            entry->second.node->row = row;
    }
}

void StorageBackupModel::onScRowsAboutToBeInserted(const QModelIndex&, int, int) { }

void StorageBackupModel::onScRowsInserted(const QModelIndex& parent, int first, int last)
{
    if (parent.isValid() || !source)
        return;
    beginInsertRows(QModelIndex(), first, last);
    for (int row = first; row <= last; ++row)
        addRoot(row);
    renumberRoots();
    endInsertRows();
}

void StorageBackupModel::onScRowsAboutToBeRemoved(const QModelIndex&, int, int) { }

void StorageBackupModel::onScRowsRemoved(const QModelIndex& parent, int first, int last)
{
    if (parent.isValid() || first < 0 || last >= accounts.size())
        return;
    beginRemoveRows(QModelIndex(), first, last);
    // The account's nodes go with its row: a reply still on its way then finds no account and is dropped,
    // rather than landing under a row that another account holds now.
    for (int row = first; row <= last; ++row)
        roots.erase(accounts.at(row));
    accounts.remove(first, last - first + 1);
    renumberRoots();
    endRemoveRows();
}

void StorageBackupModel::onScDataChanged(
    const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles)
{
    if (topLeft.parent().isValid() || accounts.isEmpty())
        return;
    // Rows the source filled before announcing them are not ours yet.
    const int top = qMax(0, topLeft.row());
    const int bottom = qMin(bottomRight.row(), accounts.size() - 1);
    if (top > bottom)
        return;
    Q_EMIT dataChanged(index(top, 0), index(bottom, int(std::size(SourceColumns)) - 1), roles);
}

StorageBackupModel::Node* StorageBackupModel::root(int row) const
{
    if (row < 0 || row >= accounts.size())
        return nullptr;
    const auto entry = roots.find(accounts.at(row));
    return entry == roots.end() ? nullptr : entry->second.node.get();
}

int StorageBackupModel::sourceRow(int row) const
{
    // The rows match but for the moments when the source has changed and not yet said so.
    const QUuid id = accounts.value(row);
    if (QUuid(source->index(row, IdColumn).data().toString()) == id)
        return row;
    for (int other = 0; other < source->rowCount(); ++other) {
        if (QUuid(source->index(other, IdColumn).data().toString()) == id)
            return other;
    }
    return -1;
}

StorageBackupModel::Node* StorageBackupModel::nodeOf(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<Node*>(index.internalPointer()) : nullptr;
}

bool StorageBackupModel::isTopLevel(const QModelIndex& index) const
{
    return index.isValid() && !index.parent().isValid();
}

QModelIndex StorageBackupModel::indexOf(const Node* node, int column) const
{
    return node ? createIndex(node->row, column, const_cast<Node*>(node)) : QModelIndex();
}

QModelIndex StorageBackupModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column < 0 || column >= columnCount())
        return QModelIndex();
    if (!parent.isValid()) {
        Node* node = root(row);
        return node ? createIndex(row, column, node) : QModelIndex();
    }
    const Node* node = nodeOf(parent);
    if (!node || parent.column() != 0 || row >= int(node->children.size()))
        return QModelIndex();
    return createIndex(row, column, node->children[size_t(row)].get());
}

QModelIndex StorageBackupModel::parent(const QModelIndex& child) const
{
    const Node* node = nodeOf(child);
    return node ? indexOf(node->parent) : QModelIndex();
}

int StorageBackupModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return accounts.size();
    const Node* node = nodeOf(parent);
    return node && parent.column() == 0 ? int(node->children.size()) : 0;
}

int StorageBackupModel::columnCount(const QModelIndex&) const
{
    return 4;
}

Qt::ItemFlags StorageBackupModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsSelectable | Qt::ItemIsEnabled : Qt::NoItemFlags;
}

bool StorageBackupModel::hasChildren(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return !accounts.isEmpty();
    const Node* node = nodeOf(parent);
    if (!node || parent.column() != 0)
        return false;
    return !node->parent || node->isExpandable;
}

bool StorageBackupModel::canFetchMore(const QModelIndex& parent) const
{
    const Node* node = nodeOf(parent);
    return node && hasChildren(parent) && node->loaded == 0;
}

void StorageBackupModel::fetchMore(const QModelIndex& parent)
{
    Node* node = nodeOf(parent);
    if (!node || parent.model() != this || !canFetchMore(parent))
        return;
    node->awaitedPart = 0;
    node->loaded = 1;
    if (!node->parent)
        load(node->destination, QString(), 0, 0);
    else
        load(node->destination, node->path, node->type, 0);
}

void StorageBackupModel::fail(const QString& text)
{
    TWL::TwlDebug("TWB").warning() << text;
    Q_EMIT error(text);
}

void StorageBackupModel::sendListing(const QString& command, const QString& managerGone, const QUuid& destination,
    const QString& path, int type, int currentPart, const QJsonObject& extra)
{
    ICommand* listing = newCommand(command, this, &StorageBackupModel::onResult, managerGone,
        QStringLiteral("Commnunication command don't registrate"));
    QJsonObject params = extra;
    params.insert(QStringLiteral("profile"), currentProfile());
    params.insert(QStringLiteral("path"), path);
    params.insert(QStringLiteral("type"), type);
    params.insert(QStringLiteral("destination"), destination.toString());
    params.insert(QStringLiteral("restoreType"), QString());
    params.insert(QStringLiteral("currentPart"), currentPart);
    setCommandParams(*listing, params);
    listing->exec();
}

bool StorageBackupModel::load(const QUuid& destination, const QString& path, int type, int currentPart)
{
    Q_EMIT updated();
    try {
        sendListing(QStringLiteral("GetRestoreContent"), QStringLiteral("Commnunication manager does not exist"),
            destination, path, type, currentPart, {{QStringLiteral("dir_only"), true}});
        return true;
    } catch (const QString& text) {
        fail(text);
        return false;
    }
}

void StorageBackupModel::take(Node* node, const QJsonObject& entry, const QUuid& destination)
{
    node->destination = destination;
    for (auto key = keys.cbegin(); key != keys.cend(); ++key) {
        const QJsonValue value = entry.value(key.value());
        if (value.isUndefined())
            continue;
        node->present |= presentBit(key.key());
        switch (key.key()) {
        case 0:
            node->name = value.toString();
            break;
        case 1:
            node->path = value.toString();
            break;
        case 2:
            node->isChangeable = value.toBool();
            break;
        case 3:
            node->isExpandable = value.toBool();
            break;
        case 4:
            node->type = value.toInt();
            break;
        case 1004:
            node->size = value.toDouble();
            break;
        case 1005:
            node->originalSize = value.toDouble();
            break;
        case 1006:
            node->dateModified = value.toString();
            break;
        case 1007:
            node->isEncrypted = value.toBool();
            break;
        case 1008:
            node->isCompressed = value.toBool();
            break;
        case 1009:
            node->isFull = value.toBool();
            break;
        case 1010:
            node->revision = value.toDouble();
            break;
        case 1011:
            node->attribute = value.toDouble();
            break;
        case 1012:
            node->delimiter = value.toString();
            break;
        }
    }
}

QVariant StorageBackupModel::value(const Node* node, int key) const
{
    if (!node || !(node->present & presentBit(key)))
        return QVariant();
    switch (key) {
    case 0:
        return node->name;
    case 1:
        return node->path;
    case 2:
        return node->isChangeable;
    case 3:
        return node->isExpandable;
    case 4:
        return node->type;
    case 1004:
        return node->size;
    case 1005:
        return node->originalSize;
    case 1006:
        return node->dateModified;
    case 1007:
        return node->isEncrypted;
    case 1008:
        return node->isCompressed;
    case 1009:
        return node->isFull;
    case 1010:
        return node->revision;
    case 1011:
        return node->attribute;
    case 1012:
        return node->delimiter;
    }
    return QVariant();
}

void StorageBackupModel::onResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    const QJsonObject params = command->request().object().value(QStringLiteral("params")).toObject();
    const QString path = params.value(QStringLiteral("path")).toString();
    const int type = params.value(QStringLiteral("type")).toInt();
    const QUuid destination(params.value(QStringLiteral("destination")).toString());
    const int currentPart = params.value(QStringLiteral("currentPart")).toInt();
    try {
        // A listing the service never answered is asked again once it is back; a refusal is not.
        if (command->failed) {
            const auto account = roots.find(destination);
            if (account != roots.end()) {
                Node* node
                    = path.isEmpty() ? account->second.node.get() : account->second.nodes.value(nodeKey(path, type));
                if (node && node->awaitedPart == currentPart)
                    stalled.append({destination, path.isEmpty() ? QString() : nodeKey(path, type)});
            }
        }
        const QJsonArray entries = replyData(*command).value(QStringLiteral("contentRestore")).toArray();

        const auto account = roots.find(destination);
        if (account == roots.end() || !account->second.node)
            throw QStringLiteral("This destination is not registrate on system");
        Root& entry = account->second;
        Node* node = path.isEmpty() ? entry.node.get() : entry.nodes.value(nodeKey(path, type));
        if (!node)
            throw QStringLiteral("This tree node is deleted...");
        // A node collapsed and opened again meanwhile asks anew; only the reply it waits for counts, so that
        // no part lands twice or at the wrong place.
        if (node->awaitedPart != currentPart) {
            TWL::TwlDebug("TWB").debug() << "Dropped a listing the tree no longer waits for:" << path << currentPart;
            Q_EMIT complite();
            command->deleteLater();
            return;
        }
        node->loaded = 2;

        std::vector<std::unique_ptr<Node>> fresh;
        fresh.reserve(size_t(entries.size()));
        bool more = false;
        const int held = int(node->children.size());
        for (const QJsonValue& item : entries) {
            const QJsonObject object = item.toObject();
            if (object.value(QStringLiteral("Type")).toInt() == EndOfPartType) {
                more = true;
                continue;
            }
            auto child = std::make_unique<Node>();
            child->parent = node;
            child->row = held + int(fresh.size());
            take(child.get(), object, destination);
            fresh.push_back(std::move(child));
        }
        // The next part is asked for before this one is shown, so that the service works while the view does.
        node->awaitedPart = -1;
        if (more) {
            const int next = held + int(fresh.size());
            node->awaitedPart = next;
            if (!load(destination, path, type, next))
                node->awaitedPart = -1;
        }
        if (!fresh.empty()) {
            beginInsertRows(indexOf(node), held, held + int(fresh.size()) - 1);
            entry.nodes.reserve(entry.nodes.size() + int(fresh.size()));
            for (std::unique_ptr<Node>& child : fresh) {
                // Two entries with one path and type share a key; the later one wins.
                entry.nodes.insert(nodeKey(child->path, child->type), child.get());
                node->children.push_back(std::move(child));
            }
            endInsertRows();
        }
        Q_EMIT complite();
    } catch (const QString& text) {
        fail(text);
    }
    command->deleteLater();
}

void StorageBackupModel::refetchStalled()
{
    const auto listings = std::exchange(stalled, {});
    for (const auto& listing : listings) {
        const auto account = roots.find(listing.first);
        if (account == roots.end())
            continue;
        Node* node
            = listing.second.isEmpty() ? account->second.node.get() : account->second.nodes.value(listing.second);
        // Only a node still waiting for that listing: one collapsed or listed anew meanwhile is left be.
        if (node && node->loaded != 0 && node->awaitedPart >= 0)
            onUpdate(indexOf(node));
    }
}

void StorageBackupModel::forget(Root& root, Node* node)
{
    for (const std::unique_ptr<Node>& child : node->children) {
        forget(root, child.get());
        const auto found = root.nodes.find(nodeKey(child->path, child->type));
        if (found != root.nodes.end() && found.value() == child.get())
            root.nodes.erase(found);
    }
}

void StorageBackupModel::onCollapse(const QModelIndex& index)
{
    Node* node = nodeOf(index);
    if (!node || index.model() != this)
        return;
    if (!node->children.empty()) {
        beginRemoveRows(index.siblingAtColumn(0), 0, int(node->children.size()) - 1);
        const auto account = roots.find(node->destination);
        if (account != roots.end())
            forget(account->second, node);
        node->children.clear();
        endRemoveRows();
    }
    node->loaded = 0;
    node->awaitedPart = -1;
}

void StorageBackupModel::onUpdate(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    onCollapse(index);
    fetchMore(index.siblingAtColumn(0));
}

QVariant StorageBackupModel::data(const QModelIndex& index, int role) const
{
    const Node* node = nodeOf(index);
    if (!node)
        return QVariant();
    if (!node->parent && index.column() < int(std::size(SourceColumns))) {
        if (!source)
            return QVariant();
        const int row = sourceRow(index.row());
        return row < 0 ? QVariant() : source->index(row, SourceColumns[index.column()]).data(role);
    }
    if (role == Qt::DecorationRole && index.column() == 0)
        return typeImage(node->type);
    if (role == LoadedRole)
        return node->loaded == 2;
    if (role != Qt::DisplayRole)
        return QVariant();
    switch (index.column()) {
    case 0:
        return value(node, 0);
    case 1:
        return node->destination;
    case 2:
        return value(node, 4);
    case 3:
        return value(node, 1);
    }
    return QVariant();
}

QVariant StorageBackupModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= columnCount())
        return QVariant();
    // Translated once, with the language the console started in.
    static const QStringList titles = {QStringLiteral("Display Name"), QStringLiteral("ID"), QStringLiteral("Type"),
        QStringLiteral("Path"), tr("Size on Storage"), tr("Size"), tr("Date Modified"), tr("Encrypted"),
        tr("Compressed"), tr("isFull"), tr("BL revision"), tr("Attribute"), tr("Delimiter")};
    return section < titles.size() ? QVariant(titles.at(section)) : QVariant();
}

QIcon StorageBackupModel::typeImage(int type)
{
    QStyle::StandardPixmap pixmap;
    switch (type) {
    case 0:
    case 1:
        pixmap = QStyle::SP_FileIcon;
        break;
    case 2:
        pixmap = QStyle::SP_DirIcon;
        break;
    case 5:
        pixmap = QStyle::SP_DriveNetIcon;
        break;
    case 7:
        pixmap = QStyle::SP_DriveHDIcon;
        break;
    default:
        return QIcon();
    }
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return QIcon();
    // The style decodes its images anew for each call, and a view asks for every row it paints.
    static QHash<int, QIcon> icons;
    auto icon = icons.find(pixmap);
    if (icon == icons.end())
        icon = icons.insert(pixmap, QApplication::style()->standardIcon(pixmap));
    return icon.value();
}

} // namespace TWB::GUI
