#pragma once

#include "twbconsole_export.h"

#include <QSortFilterProxyModel>

namespace TWB::GUI {

/// The accounts of one back-end type (TWL::Cloud::Type) of the storage list.
class TWBCONSOLE_EXPORT StorageConnectionsFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_DISABLE_COPY(StorageConnectionsFilterModel)
public:
    explicit StorageConnectionsFilterModel(int type, QObject* parent = nullptr);
    ~StorageConnectionsFilterModel() override;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    const int type;
};

} // namespace TWB::GUI
