#include "storages/storage_connections_local_model.h"

#include "platform/cloud/cloud_type.h"

namespace TWB::GUI {

StorageConnectionsLocalModel::StorageConnectionsLocalModel(QObject* parent)
    : StorageConnectionsFilterModel(TWL::Cloud::FileSystem, parent)
{ }

StorageConnectionsLocalModel::~StorageConnectionsLocalModel() = default;

} // namespace TWB::GUI
