#include "backup_wizard/base_files_model.h"

#include "platform/logging/twl_debug.h"

#include <QGuiApplication>
#include <QPalette>

#include <algorithm>
#include <utility>

namespace TWB::GUI {

const QString BaseFilesModel::Name = QStringLiteral("Name");
const QString BaseFilesModel::Path = QStringLiteral("Path");
const QString BaseFilesModel::RealPath = QStringLiteral("RealPath");
const QString BaseFilesModel::IsChangeable = QStringLiteral("IsChangeable");
const QString BaseFilesModel::IsExpandable = QStringLiteral("IsExpandable");
const QString BaseFilesModel::Type = QStringLiteral("Type");
const QString BaseFilesModel::IsHidden = QStringLiteral("IsHidden");
const QString BaseFilesModel::IsSymlink = QStringLiteral("IsSymlink");
const QString BaseFilesModel::Checked = QStringLiteral("Checked");
const QString BaseFilesModel::Row = QStringLiteral("Row");
const QString BaseFilesModel::Load = QStringLiteral("Loaded");

const QHash<int, QString>& BaseFilesModel::columns()
{
    static const QHash<int, QString> map
        = {{0, Name}, {1, Path}, {2, RealPath}, {3, IsChangeable}, {4, IsExpandable}, {5, Type}, {6, IsHidden}};
    return map;
}

BaseFilesModel::BaseFilesModel(QObject* parent)
    : QAbstractItemModel(parent)
    , root(std::make_unique<FileNode>())
{
    qRegisterMetaType<FileNodeBatch>("TWB::GUI::FileNodeBatch");
    root->isExpandable = true;
    root->load = 2;
}

BaseFilesModel::~BaseFilesModel() = default;

FileNode* BaseFilesModel::nodeOf(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<FileNode*>(index.internalPointer()) : root.get();
}

QModelIndex BaseFilesModel::indexOf(const FileNode* node, int column) const
{
    if (!node || node == root.get())
        return QModelIndex();
    return createIndex(node->row, column, const_cast<FileNode*>(node));
}

QModelIndex BaseFilesModel::index(int row, int column, const QModelIndex& parent) const
{
    const FileNode* node = nodeOf(parent);
    if (row < 0 || column < 0 || column >= columnCount() || row >= int(node->children.size())
        || (parent.isValid() && parent.column() != 0))
        return QModelIndex();
    return createIndex(row, column, node->children[size_t(row)].get());
}

QModelIndex BaseFilesModel::parent(const QModelIndex& child) const
{
    if (!child.isValid())
        return QModelIndex();
    return indexOf(nodeOf(child)->parent);
}

int BaseFilesModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() && parent.column() != 0)
        return 0;
    return int(nodeOf(parent)->children.size());
}

int BaseFilesModel::columnCount(const QModelIndex&) const
{
    return 7;
}

QString BaseFilesModel::nameOf(const FileNode* node) const
{
    if (!node->name.isNull())
        return node->name;
    return node->realPath.mid(node->realPath.lastIndexOf(QLatin1Char('/')) + 1);
}

QString BaseFilesModel::pathOf(const FileNode* node) const
{
    if (!node->path.isNull() || !node->parent || node->parent == root.get())
        return node->path.isNull() ? node->realPath : node->path;
    return pathOf(node->parent) + QLatin1Char('/') + nameOf(node);
}

QVariant BaseFilesModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const FileNode* node = nodeOf(index);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        switch (index.column()) {
        case 0:
            return nameOf(node);
        case 1:
            return pathOf(node);
        case 2:
            return node->realPath;
        case 3:
            return node->isChangeable;
        case 4:
            return node->isExpandable;
        case 5:
            return int(node->type);
        case 6:
            return node->isHidden;
        }
        return QVariant();
    case Qt::CheckStateRole:
        return index.column() == 0 ? QVariant(node->checked) : QVariant();
    case Qt::DecorationRole:
        return index.column() == 0 ? QVariant(iconOf(node)) : QVariant();
    case Qt::ToolTipRole:
        return node->error.isEmpty() ? QVariant() : QVariant(node->error);
    case Qt::ForegroundRole:
        if (node->error.isEmpty())
            return QVariant();
        return QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text);
    }
    return QVariant();
}

QIcon BaseFilesModel::iconOf(const FileNode* node) const
{
    switch (node->type) {
    case 1:
        return iconProvider.icon(QFileIconProvider::Folder, node->isSymlink);
    case 2:
        return iconProvider.icon(QFileIconProvider::Computer);
    default:
        return iconProvider.icon(QFileIconProvider::File, node->isSymlink);
    }
}

QVariant BaseFilesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return columns().value(section);
}

Qt::ItemFlags BaseFilesModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == 0 && nodeOf(index)->isChangeable)
        result |= Qt::ItemIsUserCheckable;
    return result;
}

bool BaseFilesModel::hasChildren(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return !root->children.empty();
    return parent.column() == 0 && nodeOf(parent)->isExpandable;
}

bool BaseFilesModel::canFetchMore(const QModelIndex& parent) const
{
    return parent.isValid() && hasChildren(parent) && nodeOf(parent)->load == 0;
}

void BaseFilesModel::fetchMore(const QModelIndex& parent)
{
    if (!canFetchMore(parent))
        return;
    FileNode* node = nodeOf(parent);
    node->load = 1;
    load(QStringList(node->realPath), 0);
}

QModelIndex BaseFilesModel::indexByPath(const QString& realPath) const
{
    return indexOf(pathIndex.value(realPath));
}

bool BaseFilesModel::hasMatchFirst(const QModelIndex& start, int role, const QVariant& value, bool withHidden) const
{
    if (!start.isValid())
        return false;
    const QModelIndex parent = start.parent();
    const FileNode* node = nodeOf(parent);
    for (int row = start.row(); row < int(node->children.size()); ++row) {
        if (!withHidden && node->children[size_t(row)]->isHidden)
            continue;
        if (data(index(row, 0, parent), role) == value)
            return true;
    }
    return false;
}

int BaseFilesModel::hiddenChildCount(const QModelIndex& parent) const
{
    if (parent.isValid() && parent.column() != 0)
        return 0;
    return nodeOf(parent)->hiddenChildren;
}

void BaseFilesModel::appendTopLevel(std::unique_ptr<FileNode> node)
{
    if (pathIndex.contains(node->realPath))
        return;
    const int row = int(root->children.size());
    beginInsertRows(QModelIndex(), row, row);
    node->parent = root.get();
    node->row = row;
    node->checked = 0;
    root->stateCount[0]++;
    pathIndex.insert(node->realPath, node.get());
    root->children.push_back(std::move(node));
    endInsertRows();
}

void BaseFilesModel::resetTree()
{
    beginResetModel();
    pathIndex.clear();
    changedAncestors.clear();
    root = std::make_unique<FileNode>();
    root->isExpandable = true;
    root->load = 2;
    endResetModel();
}

void BaseFilesModel::onResult(const QString& path, const FileNodeBatch& items)
{
    FileNode* node = pathIndex.value(path);
    if (!node) {
        TWL::TwlDebug("TWB").warning() << "This path dont exist" << path;
        return;
    }
    node->load = 2;
    if (!items || items->empty())
        return;
    FileNodeList fresh;
    fresh.reserve(items->size());
    pathIndex.reserve(pathIndex.size() + int(items->size()));
    for (std::unique_ptr<FileNode>& item : *items) {
        if (!item)
            continue;
        // One look-up a row: the slot is made empty for a new path and found filled for a known one.
        FileNode*& slot = pathIndex[item->realPath];
        if (slot)
            continue;
        slot = item.get();
        fresh.push_back(std::move(item));
    }
    items->clear();
    if (fresh.empty())
        return;
    // Children of a fully selected folder are selected too; under any other state they start unselected.
    const int state = node->checked == Qt::Checked ? Qt::Checked : Qt::Unchecked;
    const int first = int(node->children.size());
    const int last = first + int(fresh.size()) - 1;
    beginInsertRows(indexOf(node), first, last);
    node->children.reserve(node->children.size() + fresh.size());
    int row = first;
    for (std::unique_ptr<FileNode>& item : fresh) {
        item->parent = node;
        item->load = 0;
        item->row = row++;
        item->checked = state;
        node->stateCount[FileNode::stateSlot(state)]++;
        if (item->isHidden)
            node->hiddenChildren++;
        node->children.push_back(std::move(item));
    }
    endInsertRows();
    emit dataChanged(index(first, 0, indexOf(node)), index(last, 0, indexOf(node)));
}

void BaseFilesModel::onListingError(const QString& path, const QString& error)
{
    FileNode* node = pathIndex.value(path);
    // A file named among a plan's paths fails to list like any file would; only folders say why.
    if (!node || !node->isExpandable || !node->children.empty())
        return;
    node->error = error;
    node->isExpandable = false;
    const QModelIndex changed = indexOf(node);
    emit dataChanged(changed, changed.siblingAtColumn(columnCount() - 1));
}

void BaseFilesModel::forget(FileNode* node)
{
    for (const std::unique_ptr<FileNode>& child : node->children) {
        forget(child.get());
        pathIndex.remove(child->realPath);
    }
}

void BaseFilesModel::onCollapse(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    FileNode* node = nodeOf(index);
    if (!node->children.empty()) {
        beginRemoveRows(index, 0, int(node->children.size()) - 1);
        forget(node);
        node->children.clear();
        std::fill(std::begin(node->stateCount), std::end(node->stateCount), 0);
        node->hiddenChildren = 0;
        endRemoveRows();
    }
    node->load = 0;
    setData(index, Qt::Unchecked, Qt::CheckStateRole);
}

void BaseFilesModel::onUncheckedAllHiddenFiles(bool unchecked)
{
    hiddenFilesUnchecked = unchecked;
}

void BaseFilesModel::setState(FileNode* node, int state)
{
    if (node->parent) {
        node->parent->stateCount[FileNode::stateSlot(node->checked)]--;
        node->parent->stateCount[FileNode::stateSlot(state)]++;
    }
    node->checked = state;
}

bool BaseFilesModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || !index.isValid() || index.column() != 0)
        return false;
    bool ok = false;
    const int state = value.toInt(&ok);
    if (!ok
        || (state != Qt::Unchecked && state != Qt::PartiallyChecked && state != Qt::Checked
            && state != IncompliteChecked))
        return false;
    FileNode* node = nodeOf(index);
    if (node->checked == state)
        return false;
    setState(node, state);
    // A walk up may set a parent through setData again; each call reports the ancestors it changed itself.
    const QVector<FileNode*> outer = std::exchange(changedAncestors, {});
    switch (state) {
    case Qt::Checked:
        setDataChecked(node, Qt::Checked);
        setDataCheckedParent(node);
        break;
    case Qt::Unchecked:
        setDataChecked(node, Qt::Unchecked);
        setDataUncheckedParent(node);
        break;
    case Qt::PartiallyChecked:
        setDataPartiallyChecked(node);
        break;
    default:
        setDataIncompliteChecked(node);
        break;
    }
    emit dataChanged(index, index, {Qt::CheckStateRole});
    const QVector<FileNode*> ancestors = std::exchange(changedAncestors, outer);
    for (FileNode* ancestor : ancestors) {
        const QModelIndex changed = indexOf(ancestor);
        emit dataChanged(changed, changed, {Qt::CheckStateRole});
    }
    return true;
}

void BaseFilesModel::setDataChecked(FileNode* node, int target)
{
    // Depth first; a subtree already in the target state is consistent and is skipped whole.
    QVector<FileNode*> work {node};
    while (!work.isEmpty()) {
        FileNode* folder = work.takeLast();
        bool changed = false;
        for (const std::unique_ptr<FileNode>& child : folder->children) {
            if (child->checked == target)
                continue;
            setState(child.get(), target);
            changed = true;
            if (!child->children.empty())
                work.append(child.get());
        }
        if (changed)
            emitChildrenChanged(folder);
    }
}

void BaseFilesModel::emitChildrenChanged(FileNode* node)
{
    const QModelIndex parent = indexOf(node);
    emit dataChanged(index(0, 0, parent), index(int(node->children.size()) - 1, 0, parent), {Qt::CheckStateRole});
}

void BaseFilesModel::setDataCheckedParent(FileNode* node)
{
    for (FileNode* p = node->parent; p && p != root.get() && p->checked != Qt::Checked; p = p->parent) {
        if (p->checked == Qt::Unchecked) {
            setState(p, IncompliteChecked);
            changedAncestors.append(p);
        } else if (p->checked == Qt::PartiallyChecked) {
            // Hidden children count as much as shown ones: a folder is whole only when all of it is.
            const bool open = p->stateCount[0] || p->stateCount[1] || p->stateCount[3];
            if (!open) {
                setState(p, Qt::Checked);
                changedAncestors.append(p);
            }
        }
    }
}

void BaseFilesModel::setDataUncheckedParent(FileNode* node)
{
    FileNode* p = node->parent;
    for (; p && p != root.get() && p->checked != Qt::Unchecked; p = p->parent) {
        if (p->stateCount[1] || p->stateCount[2] || p->stateCount[3]) {
            // A fully selected folder that lost a child is selected with that child left out.
            if (p->checked == Qt::Checked)
                setData(indexOf(node->parent), Qt::PartiallyChecked, Qt::CheckStateRole);
            return;
        }
        setState(p, Qt::Unchecked);
        changedAncestors.append(p);
    }
}

void BaseFilesModel::setDataPartiallyChecked(FileNode* node)
{
    for (FileNode* p = node->parent; p && p != root.get() && p->checked == Qt::Checked; p = p->parent) {
        setState(p, Qt::PartiallyChecked);
        changedAncestors.append(p);
    }
}

void BaseFilesModel::setDataIncompliteChecked(FileNode* node)
{
    for (FileNode* p = node->parent; p && p != root.get() && p->checked == Qt::Unchecked; p = p->parent) {
        setState(p, IncompliteChecked);
        changedAncestors.append(p);
    }
}

} // namespace TWB::GUI
