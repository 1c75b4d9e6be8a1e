#include "service/store/option_store.h"

#include "service/store/database.h"

namespace TWB::Service {

QString OptionStore::value(const QString& key, const QString& fallback)
{
    QSqlQuery query = m_database.prepare(QStringLiteral("SELECT value FROM options WHERE key = ?"));
    query.addBindValue(Database::text(key));
    return m_database.scalar(query, fallback).toString();
}

int OptionStore::number(const QString& key, int fallback, int minimum, int maximum)
{
    bool ok = false;
    const int n = value(key).toInt(&ok);
    return ok && n >= minimum && n <= maximum ? n : fallback;
}

void OptionStore::setValue(const QString& key, const QString& value)
{
    QSqlQuery query = m_database.prepare(QStringLiteral(
        "INSERT INTO options (key, value) VALUES (?, ?) ON CONFLICT(key) DO UPDATE SET value = excluded.value"));
    query.addBindValue(Database::text(key));
    query.addBindValue(Database::text(value));
    m_database.exec(query);
}

} // namespace TWB::Service
