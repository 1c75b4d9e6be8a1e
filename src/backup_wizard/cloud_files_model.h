#pragma once

#include "backup_wizard/base_files_model.h"
#include "twbconsole_export.h"

#include <QMap>
#include <QSharedPointer>
#include <QUuid>
#include <QVariantMap>

namespace TWL::Cloud {
class IOperation;
}

namespace TWB::GUI {

/// What a storage account's container holds, as a checked tree: the container at the top, the computers
/// that back up into it ("TWB_" folders) below, then their folders and objects. Folders are listed from
/// the storage when opened, a thousand names a page, each page adding its rows as it arrives.
class TWBCONSOLE_EXPORT CloudFilesModel : public BaseFilesModel
{
    Q_OBJECT
    Q_DISABLE_COPY(CloudFilesModel)
public:
    explicit CloudFilesModel(QObject* parent = nullptr);
    ~CloudFilesModel() override;

    /// Lists each folder of the container; an empty path is the container's top. False when the storage
    /// layer cannot make a listing; the folders asked before that are listed all the same.
    bool load(const QStringList& paths, int option) override;
    /// Checks the account, waiting in a local event loop, and keeps the configuration it worked with.
    bool checkCloudConfig();
    /// The account's configuration the listings use.
    QVariantMap cloudConfig() const { return config; }
    /// Whether a listing is still under way.
    bool isListing() const { return !pending.isEmpty(); }

public slots:
    /// Shows the container of the account with this id, from the shared storage list.
    void onSetStorage(const QUuid& storageId);
    void onOperationFinished();

signals:
    /// No listing is left under way.
    void listingFinished();

private:
    /// The listing of one page of a folder, and the real path of the folder's node.
    struct Pending
    {
        QSharedPointer<TWL::Cloud::IOperation> operation;
        QString path;
    };

    bool startListing(const QString& path, const QString& prefix, const QString& marker);
    void dropPending();

    QVariantMap config;
    QMap<QUuid, Pending> pending;
};

} // namespace TWB::GUI
