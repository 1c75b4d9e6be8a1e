#pragma once

#include "storages/storage_connections_filter_model.h"
#include "twbconsole_export.h"

namespace TWB::GUI {

/// The file-system accounts of the storage list.
class TWBCONSOLE_EXPORT StorageConnectionsLocalModel final : public StorageConnectionsFilterModel
{
    Q_OBJECT
    Q_DISABLE_COPY(StorageConnectionsLocalModel)
public:
    explicit StorageConnectionsLocalModel(QObject* parent = nullptr);
    ~StorageConnectionsLocalModel() override;
};

} // namespace TWB::GUI
