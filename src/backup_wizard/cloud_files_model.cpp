#include "backup_wizard/cloud_files_model.h"

#include "frame/base_model.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "platform/cloud/account_keys.h"
#include "platform/cloud/listing.h"
#include "platform/cloud/listing_object.h"
#include "platform/cloud/operation_manager.h"
#include "platform/cloud/twb2twl.h"
#include "platform/logging/twl_debug.h"
#include "platform/settings/default_settings.h"

#include <QEventLoop>
#include <QJsonArray>
#include <QJsonObject>

namespace TWB::GUI {

namespace {

// The service keeps each computer's backups under a folder of the container named "TWB_<computer>".
const QString computerPrefix = QStringLiteral("TWB_");
const QString delimiter = QStringLiteral("/");
constexpr unsigned short pageSize = 1000;
constexpr int IdColumn = 1;
constexpr int TypeColumn = 5;
constexpr int DetailParamsColumn = 8;
constexpr quint8 ComputerType = 2;
constexpr quint8 FolderType = 1;
constexpr quint8 FileType = 0;

} // namespace

CloudFilesModel::CloudFilesModel(QObject* parent)
    : BaseFilesModel(parent)
{ }

CloudFilesModel::~CloudFilesModel()
{
    dropPending();
}

void CloudFilesModel::dropPending()
{
    for (const Pending& listing : qAsConst(pending)) {
        listing.operation->disconnect(this);
        listing.operation->cancel();
        listing.operation->remove();
    }
    pending.clear();
}

void CloudFilesModel::onSetStorage(const QUuid& storageId)
{
    // Pages still coming belong to the container shown before.
    const bool wasListing = isListing();
    dropPending();
    resetTree();
    config.clear();
    if (wasListing)
        emit listingFinished();
    auto manager = ModelManager::instance();
    BaseModel* storages = manager ? manager->create(ModelNames::StorageConnection) : nullptr;
    if (!storages)
        return;
    const QModelIndexList rows
        = storages->match(storages->index(0, IdColumn), Qt::DisplayRole, storageId.toString(), 1, Qt::MatchExactly);
    if (rows.isEmpty())
        return;
    const int row = rows.first().row();
    const QJsonObject account = storages->index(row, DetailParamsColumn).data().toJsonObject();
    // A view may open the container as soon as it shows: the configuration must be there first.
    config = TWB::DataConverter::StorageConfig::Twb2Twl::fromTwb(
        QJsonObject {{QStringLiteral("Type"), storages->index(row, TypeColumn).data().toInt()},
            {QStringLiteral("DetailParams"), account}});
    auto node = std::make_unique<FileNode>();
    node->name = account.value(TWL::Cloud::Key::ContainerName).toString();
    node->path = QLatin1String("");
    node->type = FolderType;
    node->isChangeable = true;
    node->isExpandable = true;
    appendTopLevel(std::move(node));
}

bool CloudFilesModel::checkCloudConfig()
{
    auto manager = TWL::Cloud::OperationManager::instance();
    const QSharedPointer<TWL::Cloud::IOperation> check = manager ? manager->checkConfig(config) : nullptr;
    if (!check) {
        TWL::TwlDebug("TWB").error() << "Check cloud config operation finished with error:"
                                     << "the storage layer cannot check this account";
        return false;
    }
    QEventLoop loop;
    connect(check.data(), &TWL::Cloud::IOperation::finished, &loop, &QEventLoop::quit);
    check->exec();
    if (!check->isComplite())
        loop.exec();
    check->remove();
    if (!check->isComplite() || check->isError()) {
        TWL::TwlDebug("TWB").error() << "Check cloud config operation finished with error:" << check->errorMessage();
        return false;
    }
    config = check->cloudConfig();
    const QPointer<DefaultSettings> settings = DefaultSettings::instance();
    config.insert(TWL::Cloud::Key::ChunkSize, settings ? settings->getChunkSize().toULongLong(nullptr, 10) : 0ULL);
    return true;
}

bool CloudFilesModel::load(const QStringList& paths, int)
{
    for (const QString& path : paths) {
        if (!startListing(path, path.isEmpty() ? computerPrefix : path, QString())) {
            // The folder would wait for a listing forever; it says why it stays empty instead.
            onListingError(path, tr("This storage account cannot be listed."));
            return false;
        }
    }
    return true;
}

bool CloudFilesModel::startListing(const QString& path, const QString& prefix, const QString& marker)
{
    auto manager = TWL::Cloud::OperationManager::instance();
    const QSharedPointer<TWL::Cloud::IOperation> listing
        = manager ? manager->listing(config, prefix, marker, delimiter, pageSize) : nullptr;
    if (!listing)
        return false;
    connect(listing.data(), &TWL::Cloud::IOperation::finished, this, &CloudFilesModel::onOperationFinished);
    pending.insert(listing->id(), {listing, path});
    listing->exec();
    return true;
}

void CloudFilesModel::onOperationFinished()
{
    auto* operation = qobject_cast<TWL::Cloud::IOperation*>(sender());
    if (!operation)
        return;
    // Ours until the end of this slot, even once out of the manager's list and the map.
    const Pending entry = pending.take(operation->id());
    operation->remove();
    TWL::TwlDebug("TWB").debug() << "Finished listing operation";
    auto* listing = qobject_cast<TWL::Cloud::Operation::Listing*>(operation);
    if (!entry.operation || !listing)
        return;
    if (!operation->isComplite() || operation->isError()) {
        TWL::TwlDebug("TWB").warning() << "Error on listing"
                                       << "code:" << operation->errorCode() << "message:" << operation->errorMessage();
        onListingError(entry.path, operation->errorMessage());
        if (pending.isEmpty())
            emit listingFinished();
        return;
    }
    const bool top = listing->prefix() == computerPrefix;
    auto nodes = FileNodeBatch::create();
    const QJsonArray data = listing->data();
    nodes->reserve(size_t(data.size()));
    for (const QJsonValue& value : data) {
        const TWL::Cloud::Api::ListingObject object(value.toObject());
        const QString fullName = object.name();
        QString name = fullName.mid(listing->prefix().size());
        if (object.isFolder() && name.endsWith(delimiter))
            name.chop(1);
        auto node = std::make_unique<FileNode>();
        node->name = name;
        node->path = fullName;
        node->realPath = fullName;
        node->type = top ? ComputerType : object.isFolder() ? FolderType : FileType;
        node->isChangeable = true;
        // An object holds nothing below it: only folders open.
        node->isExpandable = object.isFolder();
        nodes->push_back(std::move(node));
    }
    onResult(entry.path, nodes);
    // The folder stays listed while further pages add their rows.
    if (!listing->marker().isEmpty() && startListing(entry.path, listing->prefix(), listing->marker()))
        return;
    if (pending.isEmpty())
        emit listingFinished();
}

} // namespace TWB::GUI
