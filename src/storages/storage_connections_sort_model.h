#pragma once

#include "twbconsole_export.h"

#include <QSortFilterProxyModel>

namespace TWB::GUI {

/// The storage list as the account pages show it: cloud accounts first, then file-system folders, each group
/// by name without regard to case, whatever column the view sorts on.
class TWBCONSOLE_EXPORT StorageConnectionsSortModel final : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_DISABLE_COPY(StorageConnectionsSortModel)
public:
    explicit StorageConnectionsSortModel(QObject* parent = nullptr);
    ~StorageConnectionsSortModel() override;

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
};

} // namespace TWB::GUI
