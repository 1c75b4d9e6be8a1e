#include "plans/storage_name_delegate.h"

#include "frame/base_model.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"

namespace TWB::GUI {

StorageNameDelegate::StorageNameDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

StorageNameDelegate::~StorageNameDelegate() = default;

QString StorageNameDelegate::displayText(const QVariant& value, const QLocale& locale) const
{
    return toText(value, locale);
}

QString StorageNameDelegate::toText(const QVariant& value, const QLocale&)
{
    if (!value.isValid())
        return tr("Unknown");
    const QPointer<ModelManager> manager = ModelManager::instance();
    BaseModel* model = manager ? manager->create(ModelNames::StorageConnection) : nullptr;
    // match() from a row that does not exist would look nowhere; an empty list holds no name.
    if (!model || model->rowCount(QModelIndex()) == 0)
        return tr("Unknown");
    const QModelIndexList hits = model->match(model->index(0, 1, QModelIndex()), Qt::DisplayRole, value, 1);
    if (hits.isEmpty())
        return tr("Unknown");
    return model->index(hits.first().row(), 0, QModelIndex()).data(Qt::DisplayRole).toString();
}

} // namespace TWB::GUI
