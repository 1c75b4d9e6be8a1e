#include "storages/storages_update_watcher.h"

#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "frame/base_model.h"
#include "platform/logging/twl_debug.h"
#include "widgets/elided_label.h"
#include "widgets/progress_wheel.h"

#include <QAbstractItemModel>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMessageBox>

namespace TWB::GUI::Settings {

namespace {
constexpr int idColumn = 1;
} // namespace

Storages::UpdateWatcher::UpdateWatcher(const QUuid& id, int type, QWidget* parent)
    : QDialog(parent)
    , m_id(id)
    , m_type(type)
    , wheel(new ProgressWheel(ProgressWheel::Dialog, this))
{
    setModal(true);
    setWindowFlags(windowFlags() & ~Qt::WindowCloseButtonHint & ~Qt::WindowContextHelpButtonHint);
    switch (type) {
    case AddAccount:
        setWindowTitle(tr("Add New Account"));
        break;
    case UpdateAccount:
        setWindowTitle(tr("Update Account"));
        break;
    default:
        setWindowTitle(tr("Remove Account"));
        break;
    }
    auto layout = new QHBoxLayout(this);
    layout->addWidget(wheel);
    auto label = new ElidedLabel(this);
    label->setText(windowTitle());
    label->setMinimumWidth(200);
    layout->addWidget(label, 1);
    wheel->animate(true);

    if (auto manager = ModelManager::instance())
        model = manager->create(QLatin1String(ModelNames::StorageConnection));
    if (!model) {
        TWL::TwlDebug("TWB").warning() << "UpdateWatcher: no storage model to watch";
        return;
    }
    if (type == AddAccount || type == UpdateAccount)
        connect(model, &QAbstractItemModel::rowsInserted, this, &UpdateWatcher::onRowsInserted);
    if (type == UpdateAccount)
        connect(model, &QAbstractItemModel::dataChanged, this, &UpdateWatcher::onDataChanged);
    if (type == RemoveAccount)
        connect(model, &QAbstractItemModel::rowsRemoved, this, &UpdateWatcher::onRowsRemoved);
    if (auto list = qobject_cast<BaseModel*>(model.data()))
        connect(list, &BaseModel::error, this, &UpdateWatcher::onModelError);
}

void Storages::UpdateWatcher::onModelError(const QString& text)
{
    if (!m_failure.isEmpty())
        return;
    m_failure = text;
    TWL::TwlDebug("TWB").warning() << "Storage change failed:" << m_id.toString() << text;
    hide();
    QMessageBox box(QMessageBox::Warning, windowTitle(), text, QMessageBox::Ok, parentWidget());
    box.setWindowFlags(box.windowFlags() | Qt::Sheet);
    box.exec();
    reject();
}

Storages::UpdateWatcher::~UpdateWatcher() = default;

bool Storages::UpdateWatcher::rowShowsId(int row) const
{
    return model && QUuid(model->index(row, idColumn).data().toString()) == m_id;
}

void Storages::UpdateWatcher::onRowsInserted(const QModelIndex& parent, int first, int last)
{
    if (parent.isValid())
        return;
    for (int row = first; row <= last; ++row) {
        if (rowShowsId(row)) {
            TWL::TwlDebug("TWB").debug() << "Add new storage complite:" << m_id.toString();
            accept();
            return;
        }
    }
}

void Storages::UpdateWatcher::onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight)
{
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row) {
        if (rowShowsId(row)) {
            TWL::TwlDebug("TWB").debug() << "Update storage complite:" << m_id.toString();
            accept();
            return;
        }
    }
}

void Storages::UpdateWatcher::onRowsRemoved()
{
    const QModelIndexList hits
        = model->match(model->index(0, idColumn), Qt::DisplayRole, m_id.toString(), 1, Qt::MatchExactly);
    if (hits.isEmpty()) {
        TWL::TwlDebug("TWB").debug() << "Remove storage complite:" << m_id.toString();
        accept();
    }
}

void Storages::UpdateWatcher::keyPressEvent(QKeyEvent* event)
{
    // The wait ends when the list changes, never by the user's hand.
    if (event->key() == Qt::Key_Escape) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

} // namespace TWB::GUI::Settings
