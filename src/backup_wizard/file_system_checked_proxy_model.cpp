#include "backup_wizard/file_system_checked_proxy_model.h"

#include "backup_wizard/base_files_model.h"
#include "platform/logging/twl_debug.h"

namespace TWB::GUI {

FileSystemCheckedProxyModel::FileSystemCheckedProxyModel(QObject* parent)
    : QSortFilterProxyModel(parent)
{ }

FileSystemCheckedProxyModel::~FileSystemCheckedProxyModel() = default;

void FileSystemCheckedProxyModel::setSourceModel(QAbstractItemModel* model)
{
    if (sourceModel())
        disconnect(sourceModel(), &QAbstractItemModel::dataChanged, this, &FileSystemCheckedProxyModel::onDataChange);
    QSortFilterProxyModel::setSourceModel(model);
    if (model)
        connect(model, &QAbstractItemModel::dataChanged, this, &FileSystemCheckedProxyModel::onDataChange);
}

void FileSystemCheckedProxyModel::setIsShowHidden(bool show)
{
    showHidden = show;
    if (auto* files = qobject_cast<BaseFilesModel*>(sourceModel()))
        files->onUncheckedAllHiddenFiles(!show);
    else
        TWL::TwlDebug("TWB").warning() << "Wrong convert AbstracItemModel to BaseFileModel";
    invalidateFilter();
}

bool FileSystemCheckedProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    if (!sourceParent.isValid())
        return QSortFilterProxyModel::filterAcceptsRow(sourceRow, sourceParent);
    return showHidden || !sourceModel()->index(sourceRow, 6, sourceParent).data().toBool();
}

void FileSystemCheckedProxyModel::onDataChange(
    const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles)
{
    // The base drops changes under a folder it has not mapped yet; the page must hear of every mark.
    const QModelIndex top = mapFromSource(topLeft);
    const QModelIndex bottom = mapFromSource(bottomRight);
    if (top.isValid() && bottom.isValid() && top.parent() == bottom.parent())
        emit dataChanged(top, bottom, roles);
}

} // namespace TWB::GUI
