#include "storages/storage_connections_sort_model.h"

#include "platform/cloud/cloud_type.h"
#include "storages/storage_connections_proxy_p.h"

namespace TWB::GUI {

namespace {
constexpr int NameColumn = 0;
constexpr int TypeColumn = 5;
} // namespace

StorageConnectionsSortModel::StorageConnectionsSortModel(QObject* parent)
    : QSortFilterProxyModel(parent)
{
    setDynamicSortFilter(true);
    StorageConnectionsProxy::keepRowsMapped(this);
}

StorageConnectionsSortModel::~StorageConnectionsSortModel() = default;

bool StorageConnectionsSortModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const QAbstractItemModel* source = sourceModel();
    const auto cell = [source](const QModelIndex& at, int column) {
        return source->data(source->index(at.row(), column, at.parent()), Qt::DisplayRole);
    };
    const bool leftLocal = cell(left, TypeColumn).toInt() == TWL::Cloud::FileSystem;
    const bool rightLocal = cell(right, TypeColumn).toInt() == TWL::Cloud::FileSystem;
    if (leftLocal != rightLocal)
        return rightLocal;
    // Upper-cased here, so the proxy's own case setting changes nothing.
    return cell(left, NameColumn).toString().toUpper() < cell(right, NameColumn).toString().toUpper();
}

} // namespace TWB::GUI
