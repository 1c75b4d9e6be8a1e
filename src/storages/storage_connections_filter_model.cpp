#include "storages/storage_connections_filter_model.h"

#include "storages/storage_connections_proxy_p.h"

namespace TWB::GUI {

namespace {
constexpr int TypeColumn = 5;
}

StorageConnectionsFilterModel::StorageConnectionsFilterModel(int type, QObject* parent)
    : QSortFilterProxyModel(parent)
    , type(type)
{
    setDynamicSortFilter(true);
    setFilterKeyColumn(TypeColumn);
    StorageConnectionsProxy::keepRowsMapped(this);
}

StorageConnectionsFilterModel::~StorageConnectionsFilterModel() = default;

bool StorageConnectionsFilterModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const QModelIndex typeIndex = sourceModel()->index(sourceRow, filterKeyColumn(), sourceParent);
    return sourceModel()->data(typeIndex, Qt::DisplayRole).toInt() == type;
}

} // namespace TWB::GUI
