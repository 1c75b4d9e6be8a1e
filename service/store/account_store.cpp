#include "service/store/account_store.h"

#include "service/store/database.h"
#include "service/store/store_time.h"

#include <QJsonDocument>

namespace TWB::Service {

namespace {
const QString columns = QStringLiteral("id, display_name, type, prefix, document, created_utc, updated_utc");

Account fromRow(const QSqlQuery& row)
{
    Account account;
    account.id = QUuid(row.value(0).toString());
    account.displayName = row.value(1).toString();
    account.type = row.value(2).toInt();
    account.prefix = row.value(3).toString();
    account.document = QJsonDocument::fromJson(row.value(4).toByteArray()).object();
    account.created = StoreTime::fromText(row.value(5).toString());
    account.updated = StoreTime::fromText(row.value(6).toString());
    return account;
}
} // namespace

QList<Account> AccountStore::all()
{
    QSqlQuery query
        = m_database.prepare(QStringLiteral("SELECT %1 FROM accounts ORDER BY created_utc, rowid").arg(columns));
    m_database.exec(query);
    QList<Account> accounts;
    while (query.next())
        accounts.append(fromRow(query));
    return accounts;
}

std::optional<Account> AccountStore::find(const QUuid& id)
{
    QSqlQuery query = m_database.prepare(QStringLiteral("SELECT %1 FROM accounts WHERE id = ?").arg(columns));
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
    if (!query.next())
        return std::nullopt;
    return fromRow(query);
}

int AccountStore::count()
{
    QSqlQuery query = m_database.prepare(QStringLiteral("SELECT count(*) FROM accounts"));
    return m_database.scalar(query, 0).toInt();
}

bool AccountStore::save(const Account& account)
{
    const QString now = StoreTime::now();
    const QString document = QString::fromUtf8(QJsonDocument(account.document).toJson(QJsonDocument::Compact));
    QSqlQuery update = m_database.prepare(
        QStringLiteral("UPDATE accounts SET display_name = ?, type = ?, prefix = ?, document = ?, updated_utc = ? "
                       "WHERE id = ?"));
    update.addBindValue(Database::text(account.displayName));
    update.addBindValue(account.type);
    update.addBindValue(Database::text(account.prefix));
    update.addBindValue(Database::text(document));
    update.addBindValue(Database::text(now));
    update.addBindValue(Database::text(account.id.toString()));
    m_database.exec(update);
    if (update.numRowsAffected() > 0)
        return false;
    QSqlQuery insert
        = m_database.prepare(QStringLiteral("INSERT INTO accounts (%1) VALUES (?, ?, ?, ?, ?, ?, ?)").arg(columns));
    insert.addBindValue(Database::text(account.id.toString()));
    insert.addBindValue(Database::text(account.displayName));
    insert.addBindValue(account.type);
    insert.addBindValue(Database::text(account.prefix));
    insert.addBindValue(Database::text(document));
    insert.addBindValue(Database::text(now));
    insert.addBindValue(Database::text(now));
    m_database.exec(insert);
    return true;
}

bool AccountStore::remove(const QUuid& id)
{
    QSqlQuery query = m_database.prepare(QStringLiteral("DELETE FROM accounts WHERE id = ?"));
    query.addBindValue(Database::text(id.toString()));
    m_database.exec(query);
    return query.numRowsAffected() > 0;
}

} // namespace TWB::Service
