#include "storages/storages.h"

#include "frame/application.h"
#include "frame/base_model.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "platform/logging/twl_debug.h"
#include "platform/rebranding/rebranding.h"
#include "storages/account_factory.h"
#include "storages/account_select.h"
#include "storages/storage_connections_sort_model.h"
#include "storages/storages_add.h"
#include "storages/storages_edit_list.h"
#include "storages/storages_info.h"
#include "storages/storages_update_watcher.h"

#include <QHBoxLayout>
#include <QListView>
#include <QMessageBox>
#include <QPointer>
#include <QStackedLayout>

namespace TWB::GUI::Settings {

namespace {

bool allowFileSystem()
{
    return TWB::Defines::Rebranding().value(QStringLiteral("AllowFileSystemAccount")).toBool();
}

} // namespace

Storages::Storages(QWidget* parent)
    : QWidget(parent)
    , m_list(new EditList(Application::isStandalon() ? false : !allowFileSystem(), this))
    , stack(new QStackedLayout)
{
    setWindowTitle(tr("Storage"));
    if (Application::isStandalon())
        select = new Account::SelectStandalon(this);
    else
        select = new Account::SelectFbs(this);
    connect(select, &Account::Select::accountSelected, this, &Storages::onCreateSelected);
    stack->addWidget(select);

    auto layout = new QHBoxLayout(this);
    layout->addWidget(m_list);
    layout->addLayout(stack, 1);

    QAbstractItemModel* model = nullptr;
    if (auto manager = ModelManager::instance())
        model = manager->create(QLatin1String(ModelNames::StorageConnection));
    if (model) {
        auto sorted = new StorageConnectionsSortModel(this);
        sorted->setSourceModel(model);
        sorted->setSortCaseSensitivity(Qt::CaseInsensitive);
        sorted->sort(0, Qt::AscendingOrder);
        m_list->setModel(sorted, 0);
        connect(sorted, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex& topLeft) { onDataChanged(topLeft); });
    }
    connect(m_list, &EditList::addItem, this, &Storages::onAddItem);
    connect(m_list, &EditList::editItem, this, &Storages::onEditItem);
    connect(m_list, &EditList::removeItem, this, &Storages::onRemoveItem);
    connect(m_list, &EditList::currentItem, this, &Storages::onCurrentChanged);
}

Storages::~Storages() = default;

QWidget* Storages::currentView() const
{
    return stack->currentWidget();
}

void Storages::onAddItem()
{
    if (m_list->view()->selectionModel())
        m_list->view()->selectionModel()->clearSelection();
    if (Application::isStandalon())
        stack->setCurrentIndex(0);
    else if (allowFileSystem())
        onCreateSelected(TWL::Cloud::FileSystem);
}

void Storages::onCreateSelected(int type)
{
    QPointer<Add> dialog = Account::AccountFactory::add(TWL::Cloud::Type(type), this);
    if (!dialog)
        return;
    if (dialog->exec() == QDialog::Accepted && dialog) {
        UpdateWatcher watcher(dialog->accountId(), UpdateWatcher::AddAccount, this);
        watcher.exec();
    }
    delete dialog.data();
}

void Storages::onEditItem(const QModelIndex& index)
{
    QPointer<Add> dialog = Account::AccountFactory::edit(index, this);
    if (!dialog)
        return;
    if (dialog->exec() == QDialog::Accepted && dialog) {
        UpdateWatcher watcher(dialog->accountId(), UpdateWatcher::UpdateAccount, this);
        watcher.exec();
    }
    delete dialog.data();
}

void Storages::onRemoveItem(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    const QString name = index.sibling(index.row(), 0).data().toString();
    const QUuid id(index.sibling(index.row(), 1).data().toString());
    QMessageBox box(QMessageBox::Question, tr("Are you sure?"), tr("Delete \"%1\" account?").arg(name),
        QMessageBox::Ok | QMessageBox::Cancel, this);
    box.setDefaultButton(QMessageBox::Cancel);
    box.setWindowFlags(box.windowFlags() | Qt::Sheet);
    const QPersistentModelIndex row(index);
    if (box.exec() != QMessageBox::Ok || !row.isValid())
        return;
    TWL::TwlDebug("TWB").debug() << "Remove local account:" << name << id.toString();
    const_cast<QAbstractItemModel*>(row.model())->removeRows(row.row(), 1, row.parent());
    UpdateWatcher watcher(id, UpdateWatcher::RemoveAccount, this);
    watcher.exec();
}

void Storages::onCurrentChanged(const QModelIndex& index)
{
    if (!index.isValid()) {
        stack->setCurrentIndex(0);
        return;
    }
    onDataChanged(index);
    const QUuid id(index.sibling(index.row(), 1).data().toString());
    if (Info* view = views.value(id))
        stack->setCurrentWidget(view);
}

void Storages::onDataChanged(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    const QUuid id(index.sibling(index.row(), 1).data().toString());
    if (Info* view = views.value(id)) {
        view->updateItem(index);
        return;
    }
    Info* view = Account::AccountFactory::view(index);
    if (!view)
        return;
    stack->addWidget(view);
    views.insert(id, view);
}

} // namespace TWB::GUI::Settings
