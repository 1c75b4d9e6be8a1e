#include "restore_wizard/restore_content_model.h"

#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/communication/icommand.h"
#include "platform/logging/twl_debug.h"
#include "restore_wizard/storage_backup_model.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <iterator>
#include <vector>

namespace TWB::GUI {

using namespace TWB::Common::Communication;

namespace {

const char* const RowProperty = "row";
const char* const LoadedProperty = "loaded";
const char* const CheckedProperty = "checked";
// On a listing command: the seeding run it belongs to, 0 for none.
const char* const SeedRunProperty = "seedRun";
// The reply's keys, which are also the nodes' property names, by column.
const char* const KeyNames[] = {QT_TRANSLATE_NOOP("TWB::GUI::RestoreContentModel", "Name"),
    QT_TRANSLATE_NOOP("TWB::GUI::RestoreContentModel", "Path"),
    QT_TRANSLATE_NOOP("TWB::GUI::RestoreContentModel", "IsChangeable"),
    QT_TRANSLATE_NOOP("TWB::GUI::RestoreContentModel", "IsExpandable"),
    QT_TRANSLATE_NOOP("TWB::GUI::RestoreContentModel", "Type")};
constexpr int ColumnCount = int(std::size(KeyNames));
constexpr int PathColumn = 1;
constexpr int ExpandableColumn = 3;
constexpr int TypeColumn = 4;

enum Loaded { NotFetched = 0, Fetching = 1, Fetched = 2 };

int loadedOf(const QObject* node)
{
    return node->property(LoadedProperty).toInt();
}

QString pathOf(const QObject* node)
{
    return node->property(KeyNames[PathColumn]).toString();
}

bool isBelow(const QString& path, const QString& folder)
{
    return path.size() > folder.size() && path.startsWith(folder) && path.at(folder.size()) == QLatin1Char('/');
}

} // namespace

RestoreContentModel::RestoreContentModel(const QUuid& destination, QObject* parent)
    : BaseModel(parent)
    , m_destination(destination)
    , root(new QObject(this))
{
    for (int column = 0; column < ColumnCount; ++column)
        keys.insert(column, QLatin1String(KeyNames[column]));
    root->setProperty(CheckedProperty, int(Qt::Unchecked));
    root->setProperty(RowProperty, 0);
    root->setProperty(LoadedProperty, int(NotFetched));
}

RestoreContentModel::~RestoreContentModel()
{
    // The nodes go before the members their destroyed() would touch.
    QObject* nodesRoot = root;
    root = nullptr;
    delete nodesRoot;
}

QObject* RestoreContentModel::nodeOf(const QModelIndex& index) const
{
    return index.isValid() && index.model() == this ? static_cast<QObject*>(index.internalPointer()) : nullptr;
}

QModelIndex RestoreContentModel::indexOf(QObject* node, int column) const
{
    if (!node || node == root)
        return QModelIndex();
    return createIndex(node->property(RowProperty).toInt(), column, node);
}

int RestoreContentModel::stateOf(const QObject* node)
{
    return node->property(CheckedProperty).toInt();
}

QModelIndex RestoreContentModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column < 0 || column >= ColumnCount || (parent.isValid() && parent.column() != 0))
        return QModelIndex();
    const QObject* node = parent.isValid() ? nodeOf(parent) : root;
    if (!node || row >= node->children().size())
        return QModelIndex();
    return createIndex(row, column, node->children().at(row));
}

QModelIndex RestoreContentModel::parent(const QModelIndex& child) const
{
    const QObject* node = nodeOf(child);
    return node ? indexOf(node->parent()) : QModelIndex();
}

int RestoreContentModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() && parent.column() != 0)
        return 0;
    const QObject* node = parent.isValid() ? nodeOf(parent) : root;
    return node ? node->children().size() : 0;
}

int RestoreContentModel::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

QVariant RestoreContentModel::data(const QModelIndex& index, int role) const
{
    const QObject* node = nodeOf(index);
    if (!node)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return node->property(KeyNames[index.column()]);
    case Qt::DecorationRole:
        return index.column() == 0
            ? QVariant(StorageBackupModel::typeImage(node->property(KeyNames[TypeColumn]).toInt()))
            : QVariant();
    case Qt::CheckStateRole:
        return index.column() == 0 ? node->property(CheckedProperty) : QVariant();
    }
    return QVariant();
}

QVariant RestoreContentModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= ColumnCount)
        return QVariant();
    return tr(KeyNames[section]);
}

Qt::ItemFlags RestoreContentModel::flags(const QModelIndex& index) const
{
    if (!nodeOf(index))
        return Qt::NoItemFlags;
    const Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    return index.column() == 0 ? flags | Qt::ItemIsUserCheckable : flags;
}

bool RestoreContentModel::hasChildren(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return true;
    const QObject* node = nodeOf(parent);
    return node && parent.column() == 0 && node->property(KeyNames[ExpandableColumn]).toBool();
}

bool RestoreContentModel::canFetchMore(const QModelIndex& parent) const
{
    const QObject* node = nodeOf(parent);
    return node && hasChildren(parent) && loadedOf(node) == NotFetched;
}

void RestoreContentModel::fetchMore(const QModelIndex& parent)
{
    QObject* node = nodeOf(parent);
    if (!node || !canFetchMore(parent))
        return;
    node->setProperty(LoadedProperty, int(Fetching));
    if (!load(pathOf(node), 0))
        node->setProperty(LoadedProperty, int(NotFetched));
}

void RestoreContentModel::fail(const QString& text)
{
    TWL::TwlDebug("TWB").warning() << text;
    Q_EMIT error(text);
}

bool RestoreContentModel::send(const QString& path, int currentPart, int run)
{
    Q_EMIT updated();
    try {
        ICommand* listing = newCommand(QStringLiteral("GetRestoreContent"), this, &RestoreContentModel::onResult,
            QStringLiteral("Commnunication manager is 0x00"),
            QStringLiteral("Commnunication command don't registrate"));
        setCommandParams(*listing,
            {{QStringLiteral("profile"), currentProfile()}, {QStringLiteral("path"), path},
                {QStringLiteral("destination"), m_destination.toString()}, {QStringLiteral("restoreType"), QString()},
                {QStringLiteral("currentPart"), currentPart}});
        listing->setProperty(SeedRunProperty, run);
        listing->exec();
        ++inFlight[path];
        if (run != 0)
            seedBusy = true;
        return true;
    } catch (const QString& text) {
        fail(text);
        return false;
    }
}

bool RestoreContentModel::load(const QString& path, int currentPart)
{
    return send(path, currentPart, 0);
}

bool RestoreContentModel::init()
{
    if (loadedOf(root) != NotFetched)
        return true;
    root->setProperty(LoadedProperty, int(Fetching));
    if (send(QString(), 0, seeding ? seedRun : 0))
        return true;
    root->setProperty(LoadedProperty, int(NotFetched));
    return false;
}

void RestoreContentModel::initChecked(const QStringList& paths)
{
    if (!root->children().isEmpty() || loadedOf(root) != NotFetched) {
        beginResetModel();
        qDeleteAll(root->children());
        nodes.clear();
        root->setProperty(LoadedProperty, int(NotFetched));
        endResetModel();
    }
    partialList.clear();
    pendingLoads.clear();
    seedBusy = false;
    checkedList = paths;
    std::sort(checkedList.begin(), checkedList.end());
    checkedList.erase(std::unique(checkedList.begin(), checkedList.end()), checkedList.end());

    // Sorted, a folder comes before what lies in it, so each folder is asked for after its parent.
    QSet<QString> folders;
    for (const QString& path : qAsConst(checkedList)) {
        const QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
        QString prefix;
        for (int i = 0; i + 1 < parts.size(); ++i) {
            prefix += QLatin1Char('/') + parts.at(i);
            if (!folders.contains(prefix)) {
                folders.insert(prefix);
                pendingLoads.append(prefix);
            }
        }
    }
    partialList = QStringList(folders.cbegin(), folders.cend());
    std::sort(partialList.begin(), partialList.end());
    seeding = !checkedList.isEmpty();
    ++seedRun;
    if (!init())
        seeding = false;
}

bool RestoreContentModel::awaits(QObject* node, int currentPart) const
{
    // A folder collapsed or asked for twice meanwhile takes in only the part it waits for, so that no
    // part lands twice or at the wrong place.
    return node->children().size() == currentPart && loadedOf(node) == (currentPart == 0 ? Fetching : Fetched);
}

void RestoreContentModel::loadNextPending()
{
    while (!pendingLoads.isEmpty()) {
        const QString path = pendingLoads.first();
        QObject* node = nodes.value(path);
        if (!node) {
            // The folder is no longer in the storage; what the plan held below it cannot be marked.
            TWL::TwlDebug("TWB").warning() << "This path dont exist" << path;
            pendingLoads.removeFirst();
            continue;
        }
        // A view opened the folder meanwhile: its listing marks the rows, and the run goes on once the
        // last part is in, since what lies deeper is known only then.
        if (inFlight.value(path) > 0)
            return;
        pendingLoads.removeFirst();
        if (loadedOf(node) != NotFetched || !node->property(KeyNames[ExpandableColumn]).toBool())
            continue;
        node->setProperty(LoadedProperty, int(Fetching));
        if (send(path, 0, seedRun))
            return;
        node->setProperty(LoadedProperty, int(NotFetched));
        break;
    }
    pendingLoads.clear();
    seeding = false;
}

void RestoreContentModel::onResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    const QJsonObject params = command->request().object().value(QStringLiteral("params")).toObject();
    const QString path = params.value(QStringLiteral("path")).toString();
    const int currentPart = params.value(QStringLiteral("currentPart")).toInt();
    const auto listing = inFlight.find(path);
    if (listing != inFlight.end() && --listing.value() <= 0)
        inFlight.erase(listing);
    // A seeding run has one listing of its own in flight at a time; the next goes out once it is in,
    // whatever its fate.
    const bool seedReply = seeding && command->property(SeedRunProperty).toInt() == seedRun;
    if (seedReply)
        seedBusy = false;
    const auto carryOn = [this] {
        if (seeding && !seedBusy)
            loadNextPending();
    };
    try {
        const QJsonArray entries = replyData(*command).value(QStringLiteral("contentRestore")).toArray();
        QObject* node = path.isEmpty() ? root : nodes.value(path);
        if (!node) {
            TWL::TwlDebug("TWB").warning() << "This path dont exist" << path;
            carryOn();
            command->deleteLater();
            return;
        }
        if (!awaits(node, currentPart)) {
            TWL::TwlDebug("TWB").debug() << "Dropped a listing the tree no longer waits for:" << path << currentPart;
            carryOn();
            command->deleteLater();
            return;
        }
        node->setProperty(LoadedProperty, int(Fetched));

        const bool inherit = node != root && stateOf(node) == Qt::Checked;
        const int held = node->children().size();
        std::vector<QObject*> fresh;
        fresh.reserve(size_t(entries.size()));
        bool more = false;
        for (const QJsonValue& item : entries) {
            const QVariantMap entry = item.toObject().toVariantMap();
            if (entry.value(QLatin1String(KeyNames[TypeColumn])).toInt() == StorageBackupModel::EndOfPartType) {
                more = true;
                continue;
            }
            auto* child = new QObject;
            child->setProperty(LoadedProperty, int(NotFetched));
            child->setProperty(RowProperty, held + int(fresh.size()));
            const QString childPath = entry.value(QLatin1String(KeyNames[PathColumn])).toString();
            int state = Qt::Unchecked;
            if (inherit || std::binary_search(checkedList.cbegin(), checkedList.cend(), childPath))
                state = Qt::Checked;
            for (const char* key : KeyNames)
                child->setProperty(key, entry.value(QLatin1String(key)));
            const auto partial = std::lower_bound(partialList.begin(), partialList.end(), childPath);
            if (partial != partialList.end() && *partial == childPath) {
                partialList.erase(partial);
                if (state == Qt::Unchecked)
                    state = IncompliteChecked;
            }
            child->setProperty(CheckedProperty, state);
            fresh.push_back(child);
        }
        // The next part is asked for before this one is shown, so that the service works while the view
        // lays out.
        if (more)
            send(path, held + int(fresh.size()), seedReply ? seedRun : 0);
        if (!fresh.empty()) {
            beginInsertRows(indexOf(node), held, held + int(fresh.size()) - 1);
            nodes.reserve(nodes.size() + int(fresh.size()));
            for (QObject* child : fresh) {
                child->setParent(node);
                connect(child, &QObject::destroyed, this, &RestoreContentModel::onDestoryedItem);
                nodes.insert(child->property(KeyNames[PathColumn]).toString(), child);
            }
            endInsertRows();
        }
        carryOn();
        const QModelIndex first = index(0, 0);
        if (first.isValid())
            Q_EMIT dataChanged(first, first);
        Q_EMIT complite();
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        Q_EMIT error(text);
        if (seedReply) {
            pendingLoads.clear();
            seeding = false;
            Q_EMIT complite();
        } else {
            carryOn();
        }
    }
    command->deleteLater();
}

void RestoreContentModel::onDestoryedItem()
{
    // Nothing to keep once the model itself is going.
    if (!root)
        return;
    QObject* node = sender();
    const auto found = nodes.find(pathOf(node));
    if (found != nodes.end() && found.value() == node)
        nodes.erase(found);
}

void RestoreContentModel::onCollapse(const QModelIndex& index)
{
    QObject* node = nodeOf(index);
    if (!node)
        return;
    const QObjectList children = node->children();
    if (!children.isEmpty()) {
        beginRemoveRows(index.siblingAtColumn(0), 0, children.size() - 1);
        qDeleteAll(children);
        endRemoveRows();
    }
    node->setProperty(LoadedProperty, int(NotFetched));
    setData(index.siblingAtColumn(0), int(Qt::Unchecked), Qt::CheckStateRole);
}

void RestoreContentModel::setState(QObject* node, int state)
{
    node->setProperty(CheckedProperty, state);
    const QModelIndex index = indexOf(node);
    Q_EMIT dataChanged(index, index, {Qt::CheckStateRole});
}

void RestoreContentModel::forgetSelection(const QString& path)
{
    for (QStringList* list : {&checkedList, &partialList}) {
        auto from = std::lower_bound(list->begin(), list->end(), path);
        auto to = from;
        while (to != list->end() && (*to == path || isBelow(*to, path)))
            ++to;
        list->erase(from, to);
    }
}

bool RestoreContentModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    QObject* node = nodeOf(index);
    if (role != Qt::CheckStateRole || index.column() != 0 || !node)
        return false;
    bool isNumber = false;
    const int state = value.toInt(&isNumber);
    if (!isNumber
        || (state != Qt::Unchecked && state != Qt::PartiallyChecked && state != Qt::Checked
            && state != IncompliteChecked))
        return false;
    if (stateOf(node) == state)
        return false;
    setState(node, state);
    switch (state) {
    case Qt::PartiallyChecked:
        setDataPartiallyChecked(index);
        break;
    case IncompliteChecked:
        setDataIncompliteChecked(index);
        break;
    case Qt::Checked:
        setDataCheckedParent(index);
        setDataChecked(index);
        break;
    case Qt::Unchecked:
        // Gone from the lists too, so that rows still to come are not marked again.
        forgetSelection(pathOf(node));
        setDataUncheckedParent(index);
        setDataUnchecked(index);
        break;
    }
    return true;
}

namespace {

// Sets every node below `node` that is not at `state` to it, breadth first, and calls `changed` once for
// each folder whose rows changed with the first and last of them. A node already at `state` is not entered.
template <typename Changed> void spread(QObject* node, int state, const char* property, Changed changed)
{
    QObjectList queue {node};
    for (int next = 0; next < queue.size(); ++next) {
        const QObjectList& children = queue.at(next)->children();
        int first = -1;
        int last = -1;
        for (int row = 0; row < children.size(); ++row) {
            QObject* child = children.at(row);
            if (child->property(property).toInt() == state)
                continue;
            child->setProperty(property, state);
            if (first < 0)
                first = row;
            last = row;
            queue.append(child);
        }
        if (first >= 0)
            changed(queue.at(next), first, last);
    }
}

} // namespace

void RestoreContentModel::setDataChecked(const QModelIndex& index)
{
    QObject* node = nodeOf(index);
    if (!node)
        return;
    spread(node, Qt::Checked, CheckedProperty, [this](QObject* parent, int first, int last) {
        const QModelIndex folder = indexOf(parent);
        Q_EMIT dataChanged(this->index(first, 0, folder), this->index(last, 0, folder), {Qt::CheckStateRole});
    });
}

void RestoreContentModel::setDataUnchecked(const QModelIndex& index)
{
    QObject* node = nodeOf(index);
    if (!node)
        return;
    // setData has forgotten the selection below the node already.
    spread(node, Qt::Unchecked, CheckedProperty, [this](QObject* parent, int first, int last) {
        const QModelIndex folder = indexOf(parent);
        Q_EMIT dataChanged(this->index(first, 0, folder), this->index(last, 0, folder), {Qt::CheckStateRole});
    });
}

bool RestoreContentModel::hasMatchFirst(const QModelIndex& first, int role, const QVariant& value) const
{
    if (!first.isValid())
        return false;
    const QModelIndex folder = first.parent();
    const int rows = rowCount(folder);
    for (int row = first.row(); row < rows; ++row) {
        if (index(row, 0, folder).data(role) == value)
            return true;
    }
    return false;
}

void RestoreContentModel::setDataCheckedParent(const QModelIndex& index)
{
    QObject* node = nodeOf(index);
    for (QObject* p = node ? node->parent() : nullptr; p && p != root; p = p->parent()) {
        const int state = stateOf(p);
        if (state == Qt::Checked)
            break;
        if (state == Qt::Unchecked) {
            setState(p, IncompliteChecked);
        } else if (state == Qt::PartiallyChecked) {
            // A folder that was selected whole is whole again once nothing below it is left out. One at
            // 1001 stays there: it was never selected itself.
            const QModelIndex first = this->index(0, 0, indexOf(p));
            if (!hasMatchFirst(first, Qt::CheckStateRole, int(Qt::Unchecked))
                && !hasMatchFirst(first, Qt::CheckStateRole, int(Qt::PartiallyChecked))
                && !hasMatchFirst(first, Qt::CheckStateRole, IncompliteChecked))
                setState(p, Qt::Checked);
        }
    }
}

void RestoreContentModel::setDataUncheckedParent(const QModelIndex& index)
{
    QObject* node = nodeOf(index);
    for (QObject* p = node ? node->parent() : nullptr; p && p != root; p = p->parent()) {
        if (stateOf(p) == Qt::Unchecked)
            break;
        const QModelIndex folder = indexOf(p);
        const QModelIndex first = this->index(0, 0, folder);
        if (hasMatchFirst(first, Qt::CheckStateRole, int(Qt::Checked))
            || hasMatchFirst(first, Qt::CheckStateRole, int(Qt::PartiallyChecked))
            || hasMatchFirst(first, Qt::CheckStateRole, IncompliteChecked)) {
            if (stateOf(p) == Qt::Checked)
                setData(folder, int(Qt::PartiallyChecked), Qt::CheckStateRole);
            break;
        }
        // Nothing below is selected any more, so neither is the folder.
        forgetSelection(pathOf(p));
        setState(p, Qt::Unchecked);
    }
}

void RestoreContentModel::setDataPartiallyChecked(const QModelIndex& index)
{
    QObject* node = nodeOf(index);
    for (QObject* p = node ? node->parent() : nullptr; p && p != root && stateOf(p) == Qt::Checked; p = p->parent())
        setState(p, Qt::PartiallyChecked);
}

void RestoreContentModel::setDataIncompliteChecked(const QModelIndex& index)
{
    QObject* node = nodeOf(index);
    for (QObject* p = node ? node->parent() : nullptr; p && p != root && stateOf(p) == Qt::Unchecked; p = p->parent())
        setState(p, IncompliteChecked);
}

QStringList RestoreContentModel::checkedPath() const
{
    // Depth first in row order, as a recursive match goes: a checked row stands for all below it.
    QStringList paths;
    QObjectList stack;
    const QObjectList& top = root->children();
    for (auto it = top.crbegin(); it != top.crend(); ++it)
        stack.append(*it);
    while (!stack.isEmpty()) {
        QObject* node = stack.takeLast();
        const int state = stateOf(node);
        if (state == Qt::Checked) {
            paths.append(pathOf(node));
            continue;
        }
        const QObjectList& children = node->children();
        for (auto it = children.crbegin(); it != children.crend(); ++it)
            stack.append(*it);
    }
    return paths;
}

} // namespace TWB::GUI
