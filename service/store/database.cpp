#include "service/store/database.h"

#include "platform/logging/twl_debug.h"
#include "service/store/migrations.h"
#include "service/store/transaction.h"

#include <QAtomicInt>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>

namespace TWB::Service {

namespace {
QAtomicInt connectionCounter;

QString reasonOf(const QSqlError& error)
{
    const QString text = error.text().trimmed();
    return text.isEmpty() ? QStringLiteral("unknown SQLite error") : text;
}
} // namespace

Database::Database(const QString& file)
    : m_file(file)
    , m_connection(QStringLiteral("twb-store-%1").arg(connectionCounter.fetchAndAddRelaxed(1)))
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    db.setDatabaseName(file);
    // Another connection may hold the write lock for a moment (a test, a tool, a second reader);
    // wait for it rather than fail the command.
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000"));
}

Database::~Database()
{
    {
        QSqlDatabase db = QSqlDatabase::database(m_connection, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_connection);
}

QSqlDatabase Database::handle() const
{
    return QSqlDatabase::database(m_connection, false);
}

bool Database::isOpen() const
{
    return handle().isOpen();
}

void Database::open()
{
    QSqlDatabase db = handle();
    if (!db.open())
        throw QStringLiteral("Cannot open the store %1: %2").arg(m_file, reasonOf(db.lastError()));
    QFile::setPermissions(m_file, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    {
        QSqlQuery journal(db);
        if (!journal.exec(QStringLiteral("PRAGMA journal_mode=WAL")) || !journal.next()
            || journal.value(0).toString().compare(QLatin1String("wal"), Qt::CaseInsensitive) != 0)
            throw QStringLiteral("Cannot switch the store %1 to WAL mode: %2")
                .arg(m_file, reasonOf(journal.lastError()));
    }
    // FULL makes each commit reach the disk before the command is answered, so that a reply
    // promises durability even across a power cut, not only across a killed process.
    exec(QStringLiteral("PRAGMA synchronous=FULL"));
    exec(QStringLiteral("PRAGMA foreign_keys=ON"));
    migrate();
}

int Database::currentSchemaVersion()
{
    return Migrations::count();
}

int Database::schemaVersion()
{
    QSqlQuery query = prepare(QStringLiteral("PRAGMA user_version"));
    return scalar(query, 0).toInt();
}

void Database::migrate()
{
    const int latest = currentSchemaVersion();
    int version = schemaVersion();
    if (version > latest)
        throw QStringLiteral("The store %1 has schema version %2, newer than the %3 this service knows; "
                             "a newer twbd wrote it")
            .arg(m_file)
            .arg(version)
            .arg(latest);
    while (version < latest) {
        Transaction transaction(*this);
        // Another process may have migrated while this one waited for the write lock.
        version = schemaVersion();
        if (version >= latest)
            break;
        const int next = version + 1;
        const QStringList statements = Migrations::step(next);
        for (const QString& statement : statements)
            exec(statement);
        exec(QStringLiteral("PRAGMA user_version=%1").arg(next));
        transaction.commit();
        TWL::TwlDebug("TWB").info() << "Store" << m_file << "migrated to schema version" << next;
        version = next;
    }
}

QSqlQuery Database::prepare(const QString& statement)
{
    QSqlQuery query(handle());
    if (!query.prepare(statement))
        throw QStringLiteral("The store refused \"%1\": %2").arg(statement.simplified(), reasonOf(query.lastError()));
    return query;
}

void Database::exec(QSqlQuery& query)
{
    if (!query.exec())
        throw QStringLiteral("The store failed \"%1\": %2")
            .arg(query.lastQuery().simplified(), reasonOf(query.lastError()));
}

void Database::exec(const QString& statement)
{
    QSqlQuery query(handle());
    if (!query.exec(statement))
        throw QStringLiteral("The store failed \"%1\": %2").arg(statement.simplified(), reasonOf(query.lastError()));
}

qint64 Database::dataVersion()
{
    QSqlQuery query(handle());
    if (!query.exec(QStringLiteral("PRAGMA data_version")) || !query.next())
        throw QStringLiteral("Cannot read the data version of the store %1: %2")
            .arg(m_file, reasonOf(query.lastError()));
    return query.value(0).toLongLong();
}

QVariant Database::scalar(QSqlQuery& query, const QVariant& fallback)
{
    exec(query);
    const QVariant value = query.next() ? query.value(0) : fallback;
    // A statement left open would keep the next COMMIT from completing.
    query.finish();
    return value;
}

} // namespace TWB::Service
