#pragma once

#include <QString>
#include <QUuid>

#include <optional>

namespace TWB::Service {

class Database;

/// The password that opens each plan's repository now, sealed with the local cipher. A plan
/// without encryption of its own gets a key that the service generates; a plan whose password
/// changed is told by comparing its password with the one kept here.
class RepositoryKeyStore final
{
public:
    struct Key
    {
        QString text;
        bool generated = false; // made by the service for a plan without a password
    };

    explicit RepositoryKeyStore(Database& database)
        : m_database(database)
    { }

    std::optional<Key> key(const QUuid& plan);
    /// Writes the key; stands alone or inside a Transaction.
    void setKey(const QUuid& plan, const Key& key);

    /// A new random key of 256 bits, as text.
    static QString generate();
    /// The second key of a repository whose plan has no encryption: it follows from the plan's id,
    /// so that another machine can open what the user chose not to protect.
    static QString openKey(const QUuid& plan);
    /// The user name restic records with that second key, by which it is found again.
    static QString openKeyUser() { return QStringLiteral("tidewrack-open"); }

private:
    Database& m_database;
};

} // namespace TWB::Service
