#include "storages/storage_connections_cloud_model.h"

#include "platform/cloud/cloud_type.h"
#include "storages/storage_connections_proxy_p.h"

namespace TWB::GUI {

namespace {
constexpr int TypeColumn = 5;
}

StorageConnectionsCloudModel::StorageConnectionsCloudModel(QObject* parent)
    : QSortFilterProxyModel(parent)
{
    setDynamicSortFilter(true);
    setFilterKeyColumn(TypeColumn);
    StorageConnectionsProxy::keepRowsMapped(this);
}

StorageConnectionsCloudModel::~StorageConnectionsCloudModel() = default;

bool StorageConnectionsCloudModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const QModelIndex typeIndex = sourceModel()->index(sourceRow, filterKeyColumn(), sourceParent);
    return sourceModel()->data(typeIndex, Qt::DisplayRole).toInt() != TWL::Cloud::FileSystem;
}

} // namespace TWB::GUI
