#include "service/commands/storage_commands.h"

#include "platform/communication/notification_types.h"
#include "platform/logging/twl_debug.h"
#include "service/store/account_secrets.h"
#include "service/store/account_store.h"
#include "service/catalog/version_catalog.h"
#include "service/commands/command_router.h"
#include "service/store/database.h"
#include "service/store/option_store.h"
#include "service/commands/notifier.h"
#include "service/commands/params.h"
#include "service/store/plan_store.h"
#include "service/commands/responder.h"
#include "service/store/transaction.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QRegularExpression>
#include <QStorageInfo>
#include <QSysInfo>

namespace TWB::Service {

namespace Type = TWB::Common::Communication::Notification::Type;

namespace {

constexpr int fileSystem = 1;
constexpr int sftp = 33;
constexpr int managedCloud = 38;

bool isKnownType(qint64 type)
{
    return type >= 1 && type <= 38 && type != 32;
}

// Back-ends that keep backups in a named container (bucket): every cloud type but SFTP and the
// managed edition's own.
bool hasContainer(int type)
{
    return type != fileSystem && type != sftp && type != managedCloud;
}

// The characters a prefix may not hold, as the console's prefix field filters them.
const QRegularExpression prefixFault(QStringLiteral("[/\\\\:*?<>|]"));

QString hostPrefix()
{
    QString name = QSysInfo::machineHostName();
    name.remove(prefixFault);
    return name.trimmed().isEmpty() ? QStringLiteral("localhost") : name;
}

// A file-system account's folder must exist and take files, or backups into it would fail later
// and far from the dialog that could fix it.
void prepareFolder(const Params& params, const QString& path)
{
    if (!QDir::isAbsolutePath(path))
        throw params.fault(
            "params", QStringLiteral("holds the folder \"%1\", which is not an absolute path").arg(path));
    if (!QDir().mkpath(path))
        throw params.fault("params", QStringLiteral("holds the folder \"%1\", which cannot be created").arg(path));
    const QFileInfo info(path);
    if (!info.isDir() || !info.isWritable())
        throw params.fault("params", QStringLiteral("holds the folder \"%1\", which cannot be written").arg(path));
}

} // namespace

StorageCommands::StorageCommands(Database& database, Notifier& notifier)
    : m_database(database)
    , m_notifier(notifier)
{ }

void StorageCommands::registerAt(CommandRouter& router)
{
    router.add(QStringLiteral("StorageGetConnection"),
        [this](const QJsonObject& params, const Responder& respond) { getConnection(params, respond); });
    router.add(QStringLiteral("SaveStorage"),
        [this](const QJsonObject& params, const Responder& respond) { save(params, respond); });
    router.add(QStringLiteral("StorageDeleteFileSystem"),
        [this](const QJsonObject& params, const Responder& respond) { remove(params, respond); });
}

void StorageCommands::ensureDefaultStorage(const QString& dataDir)
{
    OptionStore options(m_database);
    AccountStore accounts(m_database);
    if (!options.value(QLatin1String(OptionStore::DefaultStorageMade)).isEmpty() || accounts.count() > 0)
        return;
    const QString folder = dataDir + QStringLiteral("/storage");
    if (!QDir().mkpath(folder))
        throw QStringLiteral("Cannot create the folder %1 of the first storage account").arg(folder);
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    Account account;
    account.id = QUuid::createUuid();
    account.displayName = QStringLiteral("Local storage");
    account.type = fileSystem;
    account.prefix = hostPrefix();
    account.document.insert(QStringLiteral("Path"), folder);
    Transaction transaction(m_database);
    accounts.save(account);
    options.setValue(QLatin1String(OptionStore::DefaultStorageMade), account.id.toString());
    transaction.commit();
    TWL::TwlDebug("TWB").infoH() << "Made the first storage account" << account.id.toString() << "on" << folder;
}

QJsonObject StorageCommands::row(const Account& account)
{
    VersionCatalog catalog(m_database);
    const QString path = account.document.value(QStringLiteral("Path")).toString();
    double limit = 0;
    if (account.type == fileSystem && !path.isEmpty()) {
        const QStorageInfo volume(path);
        if (volume.isValid())
            limit = double(volume.bytesTotal());
    }
    QJsonObject row;
    row.insert(QStringLiteral("DisplayName"), account.displayName);
    row.insert(QStringLiteral("ID"), account.id.toString());
    row.insert(QStringLiteral("Path"), path);
    row.insert(QStringLiteral("Prefix"), account.prefix);
    row.insert(QStringLiteral("PrefixArray"), QJsonArray::fromStringList(catalog.prefixes(account.id)));
    row.insert(QStringLiteral("Type"), account.type);
    row.insert(QStringLiteral("SpaceLimit"), limit);
    row.insert(QStringLiteral("SpaceUsed"), double(catalog.usedSize(account.id)));
    row.insert(QStringLiteral("DetailParams"), account.document);
    row.insert(QStringLiteral("SyncStatus"), m_syncing && m_syncing(account.id));
    return row;
}

void StorageCommands::getConnection(const QJsonObject&, const Responder& respond)
{
    const QList<Account> accounts = AccountStore(m_database).all();
    QJsonArray rows;
    for (const Account& account : accounts)
        rows.append(row(account));
    QJsonObject data;
    data.insert(QStringLiteral("NeedRetry"), false);
    data.insert(QStringLiteral("storageConnection"), rows);
    respond.success(data);
}

void StorageCommands::save(const QJsonObject& request, const Responder& respond)
{
    try {
        const Params params(request, respond.command());
        Account account;
        account.id = params.uuid("ID");
        account.displayName = params.nonEmptyString("displayName").trimmed();
        account.type = int(params.integer("type", 1, 38));
        if (!isKnownType(account.type))
            throw params.fault("type", QStringLiteral("is %1, which is no storage type").arg(account.type));
        account.prefix = params.nonEmptyString("prefix").trimmed();
        if (account.prefix.contains(prefixFault))
            throw params.fault("prefix", QStringLiteral("holds one of the characters / \\ : * ? < > |"));
        QJsonObject document = params.object("params");
        if (account.type == fileSystem) {
            const QString path = document.value(QStringLiteral("Path")).toString();
            if (path.trimmed().isEmpty())
                throw params.fault("params", QStringLiteral("has no \"Path\" for the file-system account"));
            prepareFolder(params, QDir::cleanPath(path));
            document.insert(QStringLiteral("Path"), QDir::cleanPath(path));
        } else if (hasContainer(account.type)
            && document.value(QStringLiteral("ContainerName")).toString().trimmed().isEmpty()) {
            throw params.fault("params", QStringLiteral("has no \"ContainerName\""));
        } else if (account.type == sftp && document.value(QStringLiteral("Address")).toString().trimmed().isEmpty()) {
            throw params.fault("params", QStringLiteral("has no \"Address\" of the SFTP server"));
        }
        account.document = AccountSecrets::seal(account.type, document);

        AccountStore accounts(m_database);
        Transaction transaction(m_database);
        const std::optional<Account> old = accounts.find(account.id);
        if (old && old->type != account.type)
            throw params.fault("type",
                QStringLiteral("is %1, but the account %2 is of type %3; an account keeps its type")
                    .arg(account.type)
                    .arg(account.id.toString())
                    .arg(old->type));
        const bool created = accounts.save(account);
        transaction.commit();

        TWL::TwlDebug("TWB").info() << (created ? "Added" : "Updated") << "storage account" << account.id.toString();
        m_notifier.send(QLatin1String(created ? Type::StorageAdded : Type::StorageUpdated),
            {{QStringLiteral("id"), account.id.toString()}});
        respond.success({{QStringLiteral("SaveStorage"), QStringLiteral("success")}});
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "SaveStorage refused:" << text;
        respond.fail(text, {{QStringLiteral("SaveStorage"), QStringLiteral("error")}, {QStringLiteral("error"), text}});
    }
}

void StorageCommands::remove(const QJsonObject& request, const Responder& respond)
{
    try {
        const Params params(request, respond.command());
        const QUuid id = params.uuid("ID");
        AccountStore accounts(m_database);
        Transaction transaction(m_database);
        if (!accounts.find(id))
            throw params.fault("ID", QStringLiteral("names no storage account: %1").arg(id.toString()));
        const QStringList users = PlanStore(m_database).namesUsingStorage(id);
        if (!users.isEmpty())
            throw QStringLiteral("The storage account %1 is used by the plans \"%2\"; remove them or move them "
                                 "to another account first")
                .arg(id.toString(), users.join(QStringLiteral("\", \"")));
        VersionCatalog(m_database).removeAccount(id);
        accounts.remove(id);
        transaction.commit();

        TWL::TwlDebug("TWB").info() << "Removed storage account" << id.toString();
        m_notifier.send(QLatin1String(Type::StorageRemoved), {{QStringLiteral("id"), id.toString()}});
        respond.success({{QStringLiteral("storageDeleteFileSystem"), QStringLiteral("success")}});
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "StorageDeleteFileSystem refused:" << text;
        respond.fail(text,
            {{QStringLiteral("storageDeleteFileSystem"), QStringLiteral("error")}, {QStringLiteral("error"), text}});
    }
}

} // namespace TWB::Service
