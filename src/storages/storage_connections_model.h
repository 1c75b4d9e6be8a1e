#pragma once

#include "frame/base_model.h"
#include "platform/cloud/cloud_type.h"
#include "twbconsole_export.h"
#include "widgets/icon_manager.h"

#include <QIcon>
#include <QJsonDocument>
#include <QMap>
#include <QUuid>
#include <QVariant>
#include <QVector>

class QTimer;

namespace TWB::GUI {

/// The console's one list of storage accounts, registered as "TwbStorageConnectionModel". Loaded whole by
/// init(); from then on it follows the service's storage notifications. Screens look at it through the
/// StorageConnections*Model proxies.
class TWBCONSOLE_EXPORT StorageConnectionsModel final : public BaseModel
{
    Q_OBJECT
    Q_DISABLE_COPY(StorageConnectionsModel)
public:
    /// Column number to the account's key.
    static const QMap<int, QString> KEY;

    explicit StorageConnectionsModel(QObject* parent = nullptr);
    ~StorageConnectionsModel() override;

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Asks the service to delete the accounts of these rows. The rows stay until the service reports
    /// each removal. True when every request went out.
    bool removeRows(int row, int count, const QModelIndex& parent = QModelIndex()) override;

    /// Asks the service for every account and brings the table in line with the answer.
    bool init() override;

    /// Fetches the list again to add or refresh this one account.
    void editStorage(QUuid id);
    /// Drops the account's row; the service is not asked.
    void removeStorage(QUuid id);
    /// Marks whether the account's repository is being synchronised.
    void updateOnSyncReposytory(const QUuid& id, bool running);

    /// The back-end's icon, as every list of accounts shows it.
    static QIcon storageIcon(TWL::Cloud::Type type, IconManager::Size size);

public Q_SLOTS:
    void onGetConnectionResult();
    void onEditStorage();
    void onRemovedResult();
    void onNotification(const QJsonDocument& document);

private:
    /// Each account's map, exactly as the service sent it.
    QMap<QUuid, QVariantMap> storages;
    /// Row N shows order[N]; accounts keep the place where they were first seen.
    QVector<QUuid> order;
    /// Accounts whose refresh was asked for and not answered yet.
    QVector<QUuid> pendingEdits;
    /// Asks again after the service said it cannot answer yet.
    QTimer* retryTimer; // owned
};

} // namespace TWB::GUI
