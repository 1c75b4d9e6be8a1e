#include "restore_wizard/storage_backup_table_model.h"

#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "restore_wizard/storage_backup_full_model.h"

namespace TWB::GUI {

StorageBackupTableModel::StorageBackupTableModel(QObject* parent)
    : BaseModel(parent)
{ }

StorageBackupTableModel::~StorageBackupTableModel() = default;

bool StorageBackupTableModel::init()
{
    if (!tree) {
        auto manager = ModelManager::instance();
        setSourceModel(
            qobject_cast<StorageBackupFullModel*>(manager ? manager->create(ModelNames::StorageBackupFull) : nullptr));
    }
    return tree;
}

void StorageBackupTableModel::setSourceModel(StorageBackupFullModel* source)
{
    if (source == tree)
        return;
    beginResetModel();
    if (tree)
        tree->disconnect(this);
    tree = source;
    shown = QPersistentModelIndex();
    if (tree) {
        connect(tree, &QAbstractItemModel::rowsAboutToBeInserted, this, &StorageBackupTableModel::onAboutToBeInserted);
        connect(tree, &QAbstractItemModel::rowsInserted, this, &StorageBackupTableModel::onInserted);
        connect(tree, &QAbstractItemModel::rowsAboutToBeRemoved, this, &StorageBackupTableModel::onAboutToBeRemoved);
        connect(tree, &QAbstractItemModel::rowsRemoved, this, &StorageBackupTableModel::onRemoved);
        connect(tree, &QAbstractItemModel::dataChanged, this, &StorageBackupTableModel::onDataChanged);
        connect(tree, &BaseModel::updated, this, &BaseModel::updated);
        connect(tree, &BaseModel::complite, this, &BaseModel::complite);
        connect(tree, &BaseModel::error, this, &BaseModel::error);
    }
    endResetModel();
}

void StorageBackupTableModel::setFolder(const QModelIndex& folder)
{
    beginResetModel();
    shown = tree && folder.model() == tree ? folder.siblingAtColumn(0) : QModelIndex();
    endResetModel();
    if (canFetchMore(QModelIndex()))
        fetchMore(QModelIndex());
}

QModelIndex StorageBackupTableModel::mapToSource(const QModelIndex& index) const
{
    if (!tree || !shown.isValid() || !index.isValid() || index.model() != this)
        return QModelIndex();
    return tree->index(index.row(), index.column(), shown);
}

QModelIndex StorageBackupTableModel::index(int row, int column, const QModelIndex& parent) const
{
    if (parent.isValid() || row < 0 || column < 0 || row >= rowCount() || column >= columnCount())
        return QModelIndex();
    return createIndex(row, column);
}

QModelIndex StorageBackupTableModel::parent(const QModelIndex&) const
{
    return QModelIndex();
}

int StorageBackupTableModel::rowCount(const QModelIndex& parent) const
{
    // While the tree removes the folder itself, its rows are no longer there to be read.
    if (parent.isValid() || !tree || !shown.isValid() || resetting)
        return 0;
    return tree->rowCount(shown);
}

int StorageBackupTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() || !tree ? 0 : tree->columnCount();
}

QVariant StorageBackupTableModel::data(const QModelIndex& index, int role) const
{
    return mapToSource(index).data(role);
}

QVariant StorageBackupTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    return tree ? tree->headerData(section, orientation, role) : QVariant();
}

Qt::ItemFlags StorageBackupTableModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren : Qt::NoItemFlags;
}

bool StorageBackupTableModel::canFetchMore(const QModelIndex& parent) const
{
    return !parent.isValid() && tree && shown.isValid() && tree->canFetchMore(shown);
}

void StorageBackupTableModel::fetchMore(const QModelIndex& parent)
{
    if (canFetchMore(parent))
        tree->fetchMore(shown);
}

void StorageBackupTableModel::onAboutToBeInserted(const QModelIndex& parent, int first, int last)
{
    if (!shown.isValid() || parent != shown || resetting)
        return;
    beginInsertRows(QModelIndex(), first, last);
    inserting = true;
}

void StorageBackupTableModel::onInserted(const QModelIndex&)
{
    if (inserting) {
        inserting = false;
        endInsertRows();
    }
}

bool StorageBackupTableModel::holdsFolder(const QModelIndex& parent, int first, int last) const
{
    for (QModelIndex at = shown; at.isValid(); at = at.parent()) {
        if (at.parent() == parent && at.row() >= first && at.row() <= last)
            return true;
    }
    return false;
}

void StorageBackupTableModel::onAboutToBeRemoved(const QModelIndex& parent, int first, int last)
{
    if (!shown.isValid() || resetting)
        return;
    if (parent == shown) {
        beginRemoveRows(QModelIndex(), first, last);
        removing = true;
    } else if (holdsFolder(parent, first, last)) {
        // The folder goes with its parent's listing: the table is left empty rather than showing rows
        // of whatever takes the folder's place.
        beginResetModel();
        resetting = true;
    }
}

void StorageBackupTableModel::onRemoved(const QModelIndex&)
{
    if (removing) {
        removing = false;
        endRemoveRows();
    } else if (resetting) {
        resetting = false;
        shown = QPersistentModelIndex();
        endResetModel();
    }
}

void StorageBackupTableModel::onDataChanged(
    const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles)
{
    if (shown.isValid() && topLeft.parent() == shown)
        Q_EMIT dataChanged(
            index(topLeft.row(), topLeft.column()), index(bottomRight.row(), bottomRight.column()), roles);
}

} // namespace TWB::GUI
