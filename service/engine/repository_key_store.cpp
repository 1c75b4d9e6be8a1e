#include "service/engine/repository_key_store.h"

#include "platform/crypt/local_password.h"
#include "service/store/database.h"
#include "service/store/store_time.h"

#include <QRandomGenerator>

namespace TWB::Service {

std::optional<RepositoryKeyStore::Key> RepositoryKeyStore::key(const QUuid& plan)
{
    QSqlQuery query
        = m_database.prepare(QStringLiteral("SELECT key, generated FROM repository_keys WHERE plan_id = ?"));
    query.addBindValue(Database::text(plan.toString()));
    m_database.exec(query);
    if (!query.next())
        return std::nullopt;
    const QString key = SHARED::cryptNS::decrypt_local_password(query.value(0).toString());
    if (key.isEmpty())
        throw QStringLiteral("The key of the repository of plan %1 cannot be deciphered with the key in secret.key")
            .arg(plan.toString());
    return Key {key, query.value(1).toBool()};
}

void RepositoryKeyStore::setKey(const QUuid& plan, const Key& key)
{
    const QString sealed = SHARED::cryptNS::encrypt_local_password(key.text);
    if (sealed.isEmpty())
        throw QStringLiteral("Cannot encipher the key of the repository of plan %1").arg(plan.toString());
    QSqlQuery query = m_database.prepare(
        QStringLiteral("INSERT INTO repository_keys (plan_id, key, generated, updated_utc) VALUES (?, ?, ?, ?) "
                       "ON CONFLICT (plan_id) DO UPDATE SET key = excluded.key, generated = excluded.generated, "
                       "updated_utc = excluded.updated_utc"));
    query.addBindValue(Database::text(plan.toString()));
    query.addBindValue(Database::text(sealed));
    query.addBindValue(key.generated ? 1 : 0);
    query.addBindValue(Database::text(StoreTime::now()));
    m_database.exec(query);
}

QString RepositoryKeyStore::generate()
{
    QByteArray bytes(32, Qt::Uninitialized);
    QRandomGenerator::system()->fillRange(reinterpret_cast<quint32*>(bytes.data()), bytes.size() / 4);
    return QString::fromLatin1(bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

QString RepositoryKeyStore::openKey(const QUuid& plan)
{
    return QStringLiteral("tidewrack-open:") + plan.toString(QUuid::WithoutBraces);
}

} // namespace TWB::Service
