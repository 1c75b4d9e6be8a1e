#pragma once

#include <QSortFilterProxyModel>

namespace TWB::GUI::StorageConnectionsProxy {

/// The storage list announces the accounts that a full load brings only after it has signalled their data.
/// A proxy that meets such a data signal before it has mapped its rows maps them there and then, and takes
/// them in a second time when the insertion follows: it shows rows that its filter refuses and rows that do
/// not exist. A proxy that keeps its rows mapped ignores the early signal and takes the rows in once.
inline void keepRowsMapped(QSortFilterProxyModel* proxy)
{
    const auto map = [proxy] { proxy->rowCount(); };
    // A new source or a new filter drops the mapping; both end in one of these two signals.
    QObject::connect(proxy, &QAbstractItemModel::modelReset, proxy, map);
    QObject::connect(proxy, &QAbstractItemModel::layoutChanged, proxy, map);
}

} // namespace TWB::GUI::StorageConnectionsProxy
