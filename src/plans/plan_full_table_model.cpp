#include "plans/plan_full_table_model.h"

#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "plans/filter_plan_table_model.h"
#include "plans/plan_xml_list.h"
#include "platform/plan/base.h"

#include <QDomDocument>

#include <algorithm>

namespace TWB::GUI {

namespace {
constexpr int ColumnCount = 15;
constexpr int StorageColumn = 5;
constexpr int PlanXmlColumn = 14;
constexpr int NameColumn = 1;

// Our column that shows a column of the shared table, or -1 for none.
int ownColumn(int sourceColumn)
{
    for (int column = 0; column < ColumnCount; ++column) {
        if (PlanFullTableModel::sourceColumn(column) == sourceColumn)
            return column;
    }
    return -1;
}
} // namespace

PlanFullTableModel::PlanFullTableModel(QObject* parent)
    : BaseModel(parent)
{
    if (auto list = PlanXmlList::instance()) {
        connect(list, &PlanXmlList::complite, this, &PlanFullTableModel::onPlanXmlLoad);
        connect(list, &PlanXmlList::update, this, &PlanFullTableModel::onPlanXmlLoad);
        connect(list, &PlanXmlList::error, this, &BaseModel::error);
    }
}

PlanFullTableModel::~PlanFullTableModel() = default;

int PlanFullTableModel::sourceColumn(int column)
{
    switch (column) {
    case 6:
        return 8;
    case 8:
        return 6;
    case StorageColumn:
    case PlanXmlColumn:
        return -1;
    default:
        // Time stands before status and message; the rest is the shared table's own order.
        return column >= 0 && column < PlanXmlColumn ? column : -1;
    }
}

bool PlanFullTableModel::initSource(int kind)
{
    if (source)
        return true;
    auto manager = ModelManager::instance();
    BaseModel* table = manager ? manager->create(ModelNames::PlanTable) : nullptr;
    if (!table)
        return false;
    connect(table, &BaseModel::complite, this, &BaseModel::complite);
    connect(table, &BaseModel::updated, this, &BaseModel::updated);
    connect(table, &BaseModel::error, this, &BaseModel::error);

    auto* filter = new FilterPlanTableModel(kind, this);
    filter->setSourceModel(table);
    filter->sort(NameColumn, Qt::AscendingOrder);

    connect(filter, &QAbstractItemModel::rowsAboutToBeInserted, this, &PlanFullTableModel::onRowsAboutToBeInserted);
    connect(filter, &QAbstractItemModel::rowsAboutToBeRemoved, this, &PlanFullTableModel::onRowsAboutToBeRemoved);
    connect(filter, &QAbstractItemModel::rowsInserted, this, &PlanFullTableModel::onRowsInserted);
    connect(filter, &QAbstractItemModel::rowsRemoved, this, &PlanFullTableModel::onRowsRemoved);
    connect(filter, &QAbstractItemModel::dataChanged, this, &PlanFullTableModel::onDataChanged);
    // A new name re-sorts the filter, a reset of the table resets it: views must follow both.
    connect(filter, &QAbstractItemModel::layoutAboutToBeChanged, this, &PlanFullTableModel::onLayoutAboutToBeChanged);
    connect(filter, &QAbstractItemModel::layoutChanged, this, &PlanFullTableModel::onLayoutChanged);
    connect(filter, &QAbstractItemModel::modelAboutToBeReset, this, &PlanFullTableModel::beginResetModel);
    connect(filter, &QAbstractItemModel::modelReset, this, &PlanFullTableModel::endResetModel);

    // Publishes the rows the table already holds.
    const int rows = filter->rowCount();
    if (rows > 0)
        beginInsertRows(QModelIndex(), 0, rows - 1);
    source = filter;
    if (rows > 0)
        endInsertRows();
    return true;
}

QModelIndex PlanFullTableModel::index(int row, int column, const QModelIndex&) const
{
    return createIndex(row, column);
}

QModelIndex PlanFullTableModel::parent(const QModelIndex&) const
{
    return QModelIndex();
}

int PlanFullTableModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() || !source)
        return 0;
    return source->rowCount();
}

int PlanFullTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PlanFullTableModel::data(const QModelIndex& index, int role) const
{
    // Without a kind, no plan document is shown.
    return kindData(index, role, 0);
}

QVariant PlanFullTableModel::kindData(const QModelIndex& index, int role, int kind) const
{
    if (!source)
        return QVariant();
    const int mapped = sourceColumn(index.column());
    if (mapped >= 0) {
        const QModelIndex sourceIndex = source->index(index.row(), mapped);
        if (!sourceIndex.model())
            return QVariant();
        return sourceIndex.data(role);
    }
    if (role != Qt::DisplayRole || index.column() < StorageColumn)
        return QVariant();
    const QUuid id = source->index(index.row(), 0).data(Qt::DisplayRole).toUuid();
    auto list = PlanXmlList::instance();
    if (!list || !list->containts(id))
        return QVariant();
    const TWB::Info::Plan::Base* plan = list->plan(id);
    if (!plan || plan->subtype() != kind)
        return QVariant();
    if (index.column() == StorageColumn)
        return QVariant::fromValue(plan->storage());
    if (index.column() == PlanXmlColumn)
        return list->planXml(id).toByteArray(1);
    return QVariant();
}

QVariant PlanFullTableModel::headerData(int section, Qt::Orientation orientation, int role) const
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
    case 5:
        return tr("Storage name");
    case 6:
        return tr("Last run time");
    case 7:
        return tr("Last run status");
    case 8:
        return tr("Last run message");
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
        return tr("Plan XML");
    default:
        return QVariant();
    }
}

Qt::ItemFlags PlanFullTableModel::flags(const QModelIndex& index) const
{
    // The root is no item: views and proxies expect no flags there.
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled;
}

void PlanFullTableModel::onRowsAboutToBeInserted(const QModelIndex& parent, int first, int last)
{
    // Only a change of our own rows, and never two at once: a second begin would corrupt the views.
    if (parent.isValid() || pendingChange != RowChange::None || first < 0 || last < first)
        return;
    pendingChange = RowChange::Insert;
    beginInsertRows(QModelIndex(), first, last);
}

void PlanFullTableModel::onRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last)
{
    if (parent.isValid() || pendingChange != RowChange::None || first < 0 || last < first || last >= rowCount())
        return;
    pendingChange = RowChange::Remove;
    beginRemoveRows(QModelIndex(), first, last);
}

void PlanFullTableModel::onRowsInserted(const QModelIndex&, int, int)
{
    // Ends only the change that was begun: called on its own, there is nothing to end.
    if (pendingChange != RowChange::Insert)
        return;
    pendingChange = RowChange::None;
    endInsertRows();
}

void PlanFullTableModel::onRowsRemoved(const QModelIndex&, int, int)
{
    if (pendingChange != RowChange::Remove)
        return;
    pendingChange = RowChange::None;
    endRemoveRows();
}

void PlanFullTableModel::onDataChanged(
    const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles)
{
    // Columns 6 and 8 are crossed, so a span of source columns maps to the span that covers all its images.
    int left = -1;
    int right = -1;
    for (int column = topLeft.column(); column <= bottomRight.column(); ++column) {
        const int own = ownColumn(column);
        if (own < 0)
            continue;
        left = left < 0 ? own : std::min(left, own);
        right = std::max(right, own);
    }
    if (left < 0)
        return;
    Q_EMIT dataChanged(index(topLeft.row(), left), index(bottomRight.row(), right), roles);
}

void PlanFullTableModel::onPlanXmlLoad(const QUuid& id)
{
    auto list = PlanXmlList::instance();
    if (!list || !list->containts(id) || !source || source->rowCount() == 0)
        return;
    const QModelIndexList hits
        = source->match(source->index(0, 0), Qt::DisplayRole, QVariant::fromValue(id), 1, Qt::MatchExactly);
    if (hits.isEmpty())
        return;
    const int row = hits.first().row();
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

void PlanFullTableModel::onLayoutAboutToBeChanged()
{
    Q_EMIT layoutAboutToBeChanged();
    layoutRows.clear();
    const QModelIndexList own = persistentIndexList();
    for (const QModelIndex& index : own)
        layoutRows.append({index, QPersistentModelIndex(source->index(index.row(), 0))});
}

void PlanFullTableModel::onLayoutChanged()
{
    for (const auto& [own, sourceRow] : qAsConst(layoutRows))
        changePersistentIndex(own, sourceRow.isValid() ? index(sourceRow.row(), own.column()) : QModelIndex());
    layoutRows.clear();
    Q_EMIT layoutChanged();
}

} // namespace TWB::GUI
