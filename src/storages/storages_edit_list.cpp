#include "storages/storages_edit_list.h"

#include "frame/application.h"
#include "platform/cloud/cloud_type.h"
#include "widgets/icon_manager.h"

#include <QAbstractItemModel>
#include <QListView>
#include <QMenu>
#include <QToolButton>

namespace TWB::GUI::Settings {

namespace {
constexpr int idColumn = 1;
constexpr int typeColumn = 5;
} // namespace

Storages::EditList::EditList(bool readOnly, QWidget* parent)
    : EditListWidget(readOnly, parent)
    , edit(addButton(IconManager::icon(IconManager::Edit), tr("Edit Account")))
{
    edit->setEnabled(false);
    if (auto button = addItemButton())
        button->setToolTip(tr("Add new storage"));
    if (auto button = removeItemButton())
        button->setToolTip(tr("Delete the selected storage"));
    connect(edit, &QToolButton::clicked, this, [this] {
        const QModelIndex index = currentIndex();
        if (index.isValid())
            Q_EMIT editItem(index);
    });
    connect(view(), &QListView::doubleClicked, this, &EditList::activatedItem);
}

void Storages::EditList::setModel(QAbstractItemModel* model, int column)
{
    EditListWidget::setModel(model, column);
    if (!model)
        return;
    connect(model, &QAbstractItemModel::dataChanged, this, &EditList::setCurrentItem);
    connect(model, &QAbstractItemModel::rowsInserted, this, &EditList::setCurrentItem);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &EditList::setCurrentItem);
    connect(model, &QAbstractItemModel::layoutChanged, this, &EditList::setCurrentItem);
}

void Storages::EditList::setAddButtonMenu(QMenu* menu)
{
    if (auto button = addItemButton()) {
        button->setMenu(menu);
        button->setPopupMode(QToolButton::InstantPopup);
    }
}

QModelIndex Storages::EditList::currentIndex() const
{
    const QModelIndex index = view()->currentIndex();
    if (!index.isValid() || !view()->selectionModel() || !view()->selectionModel()->isSelected(index))
        return QModelIndex();
    return index;
}

void Storages::EditList::setCurrentIndex(const QModelIndex& index)
{
    view()->setCurrentIndex(index);
}

void Storages::EditList::onSetCurrentItem(const QModelIndex& index)
{
    EditListWidget::onSetCurrentItem(index);
    edit->setEnabled(index.isValid());
    current = index.isValid() ? index.sibling(index.row(), idColumn).data().toUuid() : QUuid();
    if (index.isValid() && !Application::isStandalon() && removeItemButton()) {
        // A managed installation lets the user remove only the local folders.
        removeItemButton()->setEnabled(index.sibling(index.row(), typeColumn).data().toInt() == TWL::Cloud::FileSystem);
    }
    Q_EMIT currentItem(index);
}

void Storages::EditList::setCurrentItem()
{
    QAbstractItemModel* model = view()->model();
    if (!model || current.isNull())
        return;
    const QModelIndexList hits
        = model->match(model->index(0, idColumn), Qt::DisplayRole, current.toString(), 1, Qt::MatchExactly);
    if (hits.isEmpty())
        return;
    const QModelIndex row = hits.first().sibling(hits.first().row(), view()->modelColumn());
    if (view()->currentIndex() != row)
        view()->setCurrentIndex(row);
}

void Storages::EditList::onAddClicked()
{
    if (addItemButton() && addItemButton()->menu())
        return;
    Q_EMIT addItem();
}

void Storages::EditList::onRemoveClicked()
{
    const QModelIndex index = currentIndex();
    if (index.isValid())
        Q_EMIT removeItem(index);
}

} // namespace TWB::GUI::Settings
