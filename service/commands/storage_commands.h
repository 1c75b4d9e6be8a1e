#pragma once

#include <QJsonObject>
#include <QUuid>

#include <functional>

namespace TWB::Service {

struct Account;
class CommandRouter;
class Database;
class Responder;
class Notifier;

/// Storage accounts: "StorageGetConnection", "SaveStorage" and "StorageDeleteFileSystem", and the
/// account a new user starts with.
class StorageCommands final
{
public:
    StorageCommands(Database& database, Notifier& notifier);
    StorageCommands(const StorageCommands&) = delete;
    StorageCommands& operator=(const StorageCommands&) = delete;

    void registerAt(CommandRouter& router);

    /// On the first start, with no account in the store, makes the file-system account
    /// "Local storage" on <data folder>/storage, so that a new user can back up at once.
    /// Made once: a user who removes it keeps it removed.
    void ensureDefaultStorage(const QString& dataDir);

    /// Asked for the "SyncStatus" of each row: whether the account's repositories are being read.
    void setSyncCheck(std::function<bool(const QUuid&)> syncing) { m_syncing = std::move(syncing); }

    /// An account as the console's storage list shows it.
    QJsonObject row(const Account& account);

private:
    void getConnection(const QJsonObject& params, const Responder& respond);
    void save(const QJsonObject& params, const Responder& respond);
    void remove(const QJsonObject& params, const Responder& respond);

    Database& m_database;
    Notifier& m_notifier;
    std::function<bool(const QUuid&)> m_syncing;
};

} // namespace TWB::Service
