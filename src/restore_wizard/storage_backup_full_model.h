#pragma once

#include "restore_wizard/storage_backup_model.h"
#include "twbconsole_export.h"

namespace TWB::GUI {

/// The storage tree with every object, its sizes and flags, and each file's versions below it,
/// registered as "TwbStorageBackupFullModel". Columns 4 to 12 hold the raw values; the plan view
/// delegates format them.
class TWBCONSOLE_EXPORT StorageBackupFullModel final : public StorageBackupModel
{
    Q_OBJECT
    Q_DISABLE_COPY(StorageBackupFullModel)
public:
    explicit StorageBackupFullModel(QObject* parent = nullptr);
    ~StorageBackupFullModel() override;

    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    bool load(const QUuid& destination, const QString& path, int type, int currentPart) override;
};

} // namespace TWB::GUI
