#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

namespace TWB::Service {

class Database;

/// A storage account as the store keeps it: the saved document of its dialog, secrets enciphered.
struct Account
{
    QUuid id;
    QString displayName;
    int type = 0;
    QString prefix;
    QJsonObject document;
    QDateTime created;
    QDateTime updated;
};

/// The accounts table. Writes belong inside a Transaction; failures throw a QString.
class AccountStore final
{
public:
    explicit AccountStore(Database& database)
        : m_database(database)
    { }

    /// Every account, oldest first, which is the order the console shows them in.
    QList<Account> all();
    std::optional<Account> find(const QUuid& id);
    int count();
    /// Creates or replaces the account; true when it was new.
    bool save(const Account& account);
    /// False when there was no such account.
    bool remove(const QUuid& id);

private:
    Database& m_database;
};

} // namespace TWB::Service
