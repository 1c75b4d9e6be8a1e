#include "wizard/page_cloud.h"

#include "frame/application.h"
#include "frame/base_model.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/base.h"
#include "platform/rebranding/rebranding.h"
#include "storages/account_factory.h"
#include "storages/account_select.h"
#include "storages/storage_connections_sort_model.h"
#include "storages/storages_add.h"
#include "storages/storages_edit_list.h"
#include "storages/storages_update_watcher.h"

#include <QApplication>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPointer>
#include <QVBoxLayout>

namespace TWB::GUI {

const char* PlanWizardBase::PageCloud::FieldId = "Field_CloudId";
const char* PlanWizardBase::PageCloud::FieldType = "Field_CloudType";
const char* PlanWizardBase::PageCloud::FieldName = "Field_CloudName";
const char* PlanWizardBase::PageCloud::FieldPrefix = "Field_CloudPrefix";

namespace {

bool allowFileSystem()
{
    return TWB::Defines::Rebranding().value(QStringLiteral("AllowFileSystemAccount")).toBool();
}

Settings::Storages::EditList* asList(QWidget* widget)
{
    return static_cast<Settings::Storages::EditList*>(widget);
}

// Runs an account dialog and, once the service took the account, waits for the list to show it.
void runAccountDialog(QDialog* dialog, int watcherMode)
{
    if (!dialog)
        return;
    QPointer<QDialog> guard(dialog);
    const int result = dialog->exec();
    if (guard && result == QDialog::Accepted) {
        if (auto added = dynamic_cast<Settings::Storages::AddBase*>(dialog)) {
            Settings::Storages::UpdateWatcher watcher(added->accountId(), watcherMode, QApplication::activeWindow());
            watcher.exec();
        }
    }
    delete guard.data();
}

} // namespace

PlanWizardBase::PageCloud::PageCloud(QWidget* parent)
    : PageBase(tr("Cloud storage"), parent)
{
    setSubTitle(tr("Select cloud storage"));
    auto layout = new QVBoxLayout(this);
    Settings::Storages::EditList* list;
    if (Application::isStandalon()) {
        list = new Settings::Storages::EditList(false, nullptr);
        auto menu = new Settings::Account::SelectStandalon::Menu(list);
        list->setAddButtonMenu(menu);
        connect(menu, &QMenu::triggered, this, &PageCloud::onAddDestinationMenu);
    } else {
        list = new Settings::Storages::EditList(!allowFileSystem(), nullptr);
        connect(list, &Settings::Storages::EditList::addItem, this, &PageCloud::onAddDesctinationClicked);
    }
    editList = list;
    connect(list, &Settings::Storages::EditList::removeItem, this, &PageCloud::onRemoveDestinationClicked);
    connect(list, &Settings::Storages::EditList::editItem, this, &PageCloud::onEditDestinationClicked);
    list->setMaximumWidth(99999);
    list->setMinimumWidth(0);

    QAbstractItemModel* model = nullptr;
    if (auto manager = ModelManager::instance())
        model = manager->create(QLatin1String(ModelNames::StorageConnection));
    if (model) {
        auto sorted = new StorageConnectionsSortModel(list);
        sorted->setSourceModel(model);
        sorted->sort(0, Qt::AscendingOrder);
        sorted->setSortCaseSensitivity(Qt::CaseInsensitive);
        list->setModel(sorted, 0);
    }
    connect(list, &Settings::Storages::EditList::currentItem, this, &PageCloud::onCurrentItem);
    layout->addWidget(list);

    for (const char* name : {FieldId, FieldType, FieldName, FieldPrefix}) {
        auto edit = new QLineEdit(this);
        edit->hide();
        layout->addWidget(edit);
        registerField(QLatin1String(name), edit, nullptr, nullptr);
    }

    if (Application::isFbs() && model && model->rowCount() == 1 && !allowFileSystem())
        single = true;
}

QWidget* PlanWizardBase::PageCloud::list() const
{
    return editList;
}

int PlanWizardBase::PageCloud::nextId() const
{
    return 1;
}

void PlanWizardBase::PageCloud::initializePage()
{
    PageBase::initializePage();
}

bool PlanWizardBase::PageCloud::isComplete() const
{
    return !field(QLatin1String(FieldId)).toString().isEmpty();
}

bool PlanWizardBase::PageCloud::validatePage()
{
    return isComplete();
}

bool PlanWizardBase::PageCloud::initPlan(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return false;
    plan->setStorage(QUuid(field(QLatin1String(FieldId)).toString()));
    return true;
}

bool PlanWizardBase::PageCloud::fromPlan(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return false;
    QListView* view = asList(editList)->view();
    QAbstractItemModel* model = view->model();
    if (!model)
        return true;
    const QUuid storage = plan->storage();
    if (!storage.isNull()) {
        const QModelIndexList hits
            = model->match(model->index(0, 1), Qt::DisplayRole, QVariant(storage.toString()), 1, Qt::MatchExactly);
        if (!hits.isEmpty())
            view->setCurrentIndex(model->index(hits.first().row(), 0));
    } else if (single && Application::isFbs() && model->rowCount() > 0) {
        view->setCurrentIndex(model->index(0, 0));
    }
    return true;
}

QString PlanWizardBase::PageCloud::summary()
{
    const QString row = QStringLiteral("<tr><td>%1</td><td>%2</td></tr>");
    return row.arg(tr("Backup storage:"), field(QLatin1String(FieldName)).toString().toHtmlEscaped())
        + row.arg(tr("Backup prefix:"), field(QLatin1String(FieldPrefix)).toString().toHtmlEscaped());
}

void PlanWizardBase::PageCloud::onAddDesctinationClicked()
{
    // The one kind of account this path adds is a local folder.
    onAddDestination(TWL::Cloud::FileSystem);
}

void PlanWizardBase::PageCloud::onAddDestinationMenu(QAction* action)
{
    if (action)
        onAddDestination(action->data().toInt());
}

void PlanWizardBase::PageCloud::onAddDestination(int type)
{
    runAccountDialog(Settings::Account::AccountFactory::add(TWL::Cloud::Type(type), QApplication::activeWindow()),
        Settings::Storages::UpdateWatcher::AddAccount);
}

void PlanWizardBase::PageCloud::onEditDestinationClicked(const QModelIndex& index)
{
    runAccountDialog(Settings::Account::AccountFactory::edit(index, QApplication::activeWindow()),
        Settings::Storages::UpdateWatcher::UpdateAccount);
}

void PlanWizardBase::PageCloud::onRemoveDestinationClicked(const QModelIndex& index)
{
    if (!index.isValid() || !index.model())
        return;
    // The list may change while the question is open: keep hold of the row itself.
    const QPersistentModelIndex row(index);
    auto model = const_cast<QAbstractItemModel*>(index.model());
    const QString name = index.sibling(index.row(), 0).data().toString();
    const QUuid id(index.sibling(index.row(), 1).data().toString());
    QMessageBox box(QMessageBox::Question, tr("Are you sure?"), tr("Delete \"%1\" account?").arg(name),
        QMessageBox::Ok | QMessageBox::Cancel, QApplication::activeWindow());
    box.setDefaultButton(QMessageBox::Cancel);
    box.setWindowFlags(box.windowFlags() | Qt::Sheet);
    if (box.exec() != QMessageBox::Ok || !row.isValid())
        return;
    TWL::TwlDebug("TWB").debug() << "Remove local account:" << name;
    model->removeRows(row.row(), 1, row.parent());
    // The service refuses to remove an account that plans use; the watcher tells the user so rather than
    // leaving the row standing without a word.
    Settings::Storages::UpdateWatcher watcher(
        id, Settings::Storages::UpdateWatcher::RemoveAccount, QApplication::activeWindow());
    watcher.exec();
    Q_EMIT completeChanged();
}

void PlanWizardBase::PageCloud::onCurrentItem(const QModelIndex&)
{
    const QModelIndex index = asList(editList)->view()->currentIndex();
    if (!index.isValid() || !index.model())
        return;
    const int row = index.row();
    const QAbstractItemModel* model = index.model();
    setField(QLatin1String(FieldId), model->index(row, 1, index.parent()).data().toString());
    setField(QLatin1String(FieldType), model->index(row, 5, index.parent()).data().toString());
    setField(QLatin1String(FieldName), model->index(row, 0, index.parent()).data().toString());
    setField(QLatin1String(FieldPrefix), model->index(row, 3, index.parent()).data().toString());
    Q_EMIT completeChanged();
}

} // namespace TWB::GUI
