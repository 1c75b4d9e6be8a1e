#pragma once

#include "twbconsole_export.h"

#include <QSortFilterProxyModel>

namespace TWB::GUI {

/// The accounts of the storage list that are not file-system folders.
class TWBCONSOLE_EXPORT StorageConnectionsCloudModel final : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_DISABLE_COPY(StorageConnectionsCloudModel)
public:
    explicit StorageConnectionsCloudModel(QObject* parent = nullptr);
    ~StorageConnectionsCloudModel() override;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
};

} // namespace TWB::GUI
