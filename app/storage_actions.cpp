#include "app/storage_actions.h"

#include "app/storage_browse_view.h"

#include "frame/application.h"
#include "platform/cloud/cloud_type.h"
#include "platform/logging/twl_debug.h"
#include "platform/rebranding/rebranding.h"
#include "storages/account_factory.h"
#include "storages/account_select.h"
#include "storages/storages_add.h"
#include "storages/storages_info.h"
#include "storages/storages_update_watcher.h"
#include "widgets/icon_manager.h"

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QItemSelectionModel>
#include <QMenu>
#include <QMessageBox>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include <memory>

namespace TWB::Host {

using TWB::GUI::IconManager;
namespace Settings = TWB::GUI::Settings;

namespace {
const int nameColumn = 0;
const int idColumn = 1;
} // namespace

StorageActions::StorageActions(QTreeView* view, QTabWidget* tabs, QWidget* window)
    : QObject(view)
    , m_view(view)
    , m_tabs(tabs)
    , m_window(window)
{
    m_bar = new QToolBar(tabs);
    m_bar->setObjectName(QStringLiteral("storage-toolbar"));
    m_bar->setIconSize(QSize(16, 16));
    m_bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_add = m_bar->addAction(IconManager::icon(IconManager::Add, IconManager::Small), tr("Add account"));
    m_add->setToolTip(tr("Add a storage account"));
    m_edit = m_bar->addAction(IconManager::icon(IconManager::Edit, IconManager::Small), tr("Edit"));
    m_edit->setToolTip(tr("Change the selected account"));
    m_info = m_bar->addAction(tr("Details"));
    m_info->setToolTip(tr("Show the selected account's settings"));
    m_browse = m_bar->addAction(tr("Browse"));
    m_browse->setToolTip(tr("Show the files and versions the selected account holds, and restore from them"));
    m_remove = m_bar->addAction(IconManager::icon(IconManager::Remove, IconManager::Small), tr("Remove"));
    m_remove->setToolTip(tr("Remove the selected account; the backups it holds stay on the storage"));

    if (TWB::GUI::Application::isStandalon()) {
        // The back-ends come as a menu; the button opens it at a click.
        m_menu = new Settings::Account::SelectStandalon::Menu(m_bar);
        m_add->setMenu(m_menu);
        if (auto button = qobject_cast<QToolButton*>(m_bar->widgetForAction(m_add)))
            button->setPopupMode(QToolButton::InstantPopup);
        connect(m_menu, &QMenu::triggered, this, [this](QAction* action) { add(action->data().toInt()); });
    } else {
        const bool folders = TWB::Defines::Rebranding().value(QStringLiteral("AllowFileSystemAccount")).toBool();
        m_add->setVisible(folders);
        connect(m_add, &QAction::triggered, this, [this] { add(TWL::Cloud::FileSystem); });
    }
    connect(m_edit, &QAction::triggered, this, &StorageActions::edit);
    connect(m_info, &QAction::triggered, this, &StorageActions::info);
    connect(m_browse, &QAction::triggered, this, &StorageActions::browse);
    connect(m_remove, &QAction::triggered, this, &StorageActions::remove);

    tabs->setCornerWidget(m_bar, Qt::TopRightCorner);
    auto followTab = [this] { m_bar->setVisible(m_tabs->currentWidget() == m_view); };
    connect(tabs, &QTabWidget::currentChanged, m_bar, followTab);
    followTab();

    view->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(view, &QTreeView::customContextMenuRequested, this, [this](const QPoint& point) {
        QMenu menu(m_view);
        if (m_view->indexAt(point).isValid())
            menu.addActions({m_browse, m_info, m_edit, m_remove});
        menu.addSeparator();
        menu.addAction(m_add);
        menu.exec(m_view->viewport()->mapToGlobal(point));
    });
    connect(view, &QTreeView::doubleClicked, this, &StorageActions::info);
    if (view->selectionModel())
        connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this, &StorageActions::updateActions);
    if (view->model()) {
        connect(view->model(), &QAbstractItemModel::rowsRemoved, this, &StorageActions::updateActions);
        connect(view->model(), &QAbstractItemModel::modelReset, this, &StorageActions::updateActions);
    }
    updateActions();
}

StorageActions::~StorageActions() = default;

QList<QAction*> StorageActions::leaveCorner()
{
    m_tabs->disconnect(m_bar);
    if (m_tabs->cornerWidget(Qt::TopRightCorner) == m_bar)
        m_tabs->setCornerWidget(nullptr, Qt::TopRightCorner);
    m_bar->hide();
    QList<QAction*> offered;
    for (QAction* action : m_bar->actions()) {
        if (action->isVisible())
            offered.append(action);
    }
    return offered;
}

QModelIndex StorageActions::current() const
{
    const QModelIndex index = m_view->currentIndex();
    return index.isValid() ? index.sibling(index.row(), nameColumn) : QModelIndex();
}

void StorageActions::updateActions()
{
    const bool chosen = current().isValid();
    m_edit->setEnabled(chosen);
    m_info->setEnabled(chosen);
    m_browse->setEnabled(chosen);
    m_remove->setEnabled(chosen);
}

void StorageActions::add(int type)
{
    QPointer<Settings::Storages::Add> dialog = Settings::Account::AccountFactory::add(TWL::Cloud::Type(type), m_window);
    if (!dialog)
        return;
    if (dialog->exec() == QDialog::Accepted && dialog) {
        // The dialog closes once the service took the account; the row follows by notification.
        Settings::Storages::UpdateWatcher watcher(
            dialog->accountId(), Settings::Storages::UpdateWatcher::AddAccount, m_window);
        watcher.exec();
    }
    delete dialog.data();
}

void StorageActions::edit()
{
    QPointer<Settings::Storages::Add> dialog = Settings::Account::AccountFactory::edit(current(), m_window);
    if (!dialog)
        return;
    if (dialog->exec() == QDialog::Accepted && dialog) {
        Settings::Storages::UpdateWatcher watcher(
            dialog->accountId(), Settings::Storages::UpdateWatcher::UpdateAccount, m_window);
        watcher.exec();
    }
    delete dialog.data();
}

void StorageActions::info()
{
    const QModelIndex index = current();
    if (!index.isValid())
        return;
    QDialog dialog(m_window);
    dialog.setWindowTitle(index.data().toString());
    auto layout = new QVBoxLayout(&dialog);
    Settings::Storages::Info* view = Settings::Account::AccountFactory::view(index);
    view->setParent(&dialog);
    layout->addWidget(view);
    auto buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    dialog.setMinimumWidth(360);
    dialog.exec();
}

StorageBrowseView* StorageActions::browse()
{
    const QModelIndex index = current();
    if (!index.isValid())
        return nullptr;
    auto* view = new StorageBrowseView(
        QUuid(index.sibling(index.row(), idColumn).data().toString()), index.data().toString(), m_window);
    view->setAttribute(Qt::WA_DeleteOnClose);
    connect(view, &StorageBrowseView::restoreRequested, this, &StorageActions::restoreRequested);
    view->show();
    return view;
}

void StorageActions::remove()
{
    const QPersistentModelIndex index = current();
    if (!index.isValid())
        return;
    const QString name = index.data().toString();
    const QUuid id(index.sibling(index.row(), idColumn).data().toString());
    QMessageBox box(QMessageBox::Question, tr("Are you sure?"), tr("Delete \"%1\" account?").arg(name),
        QMessageBox::Ok | QMessageBox::Cancel, m_window);
    box.setDefaultButton(QMessageBox::Cancel);
    box.setWindowFlags(box.windowFlags() | Qt::Sheet);
    if (box.exec() != QMessageBox::Ok || !index.isValid())
        return;
    TWL::TwlDebug("TWB").debug() << "Remove local account:" << name << id.toString();
    m_view->model()->removeRows(index.row(), 1, index.parent());
    Settings::Storages::UpdateWatcher watcher(id, Settings::Storages::UpdateWatcher::RemoveAccount, m_window);
    watcher.exec();
}

} // namespace TWB::Host
