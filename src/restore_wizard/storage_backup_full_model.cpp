#include "restore_wizard/storage_backup_full_model.h"

#include "plans/date_time_delegate.h"

#include <QJsonObject>
#include <QLocale>

namespace TWB::GUI {

namespace {

constexpr int FirstValueColumn = 4;
constexpr int LastValueColumn = 12;
constexpr int TypeColumn = 2;
constexpr int DateColumn = 6;

} // namespace

StorageBackupFullModel::StorageBackupFullModel(QObject* parent)
    : StorageBackupModel(parent)
{
    keys.insert(1004, QStringLiteral("size"));
    keys.insert(1005, QStringLiteral("original_size"));
    keys.insert(1006, QStringLiteral("date_modified_utc"));
    keys.insert(1007, QStringLiteral("is_encrypted"));
    keys.insert(1008, QStringLiteral("is_compressed"));
    keys.insert(1009, QStringLiteral("is_full"));
    keys.insert(1010, QStringLiteral("bl_revision"));
    keys.insert(1011, QStringLiteral("attribute"));
    keys.insert(1012, QStringLiteral("delimiter"));
}

StorageBackupFullModel::~StorageBackupFullModel() = default;

int StorageBackupFullModel::columnCount(const QModelIndex&) const
{
    // Column 13 stays empty: views of the full tree count on fourteen columns.
    return 14;
}

bool StorageBackupFullModel::load(const QUuid& destination, const QString& path, int type, int currentPart)
{
    Q_EMIT updated();
    try {
        sendListing(QStringLiteral("GetRestoreContentManualMode"), QStringLiteral("Communication manager is 0x00"),
            destination, path, type, currentPart, QJsonObject());
        return true;
    } catch (const QString& text) {
        fail(text);
        return false;
    }
}

QVariant StorageBackupFullModel::data(const QModelIndex& index, int role) const
{
    const Node* node = nodeOf(index);
    if (!node)
        return QVariant();
    const int column = index.column();
    if (column >= FirstValueColumn && column <= LastValueColumn)
        return role == Qt::DisplayRole ? value(node, 1000 + column) : QVariant();
    if (column == 0 && role == Qt::DisplayRole && node->parent) {
        const int type = index.siblingAtColumn(TypeColumn).data().toInt();
        if (type == 10 || type == 1) {
            const QString date = DateTimeDelegate::toText(index.siblingAtColumn(DateColumn).data(), QLocale());
            if (type == 1)
                return QStringLiteral("[%1]").arg(date);
            // Only a block-level version is marked; a full one reads as a plain version.
            const QString suffix = value(node, 1009).toBool() ? QString() : tr(" [Block]");
            return QStringLiteral("[%1] # %2 %3").arg(date, QString::number(value(node, 1010).toLongLong()), suffix);
        }
    }
    if (column == 13)
        return QVariant();
    return StorageBackupModel::data(index, role);
}

} // namespace TWB::GUI
