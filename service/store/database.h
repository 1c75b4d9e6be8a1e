#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include <memory>

namespace TWB::Service {

struct PlanListCache;

/// One connection to the service's SQLite store: WAL journal, full syncs, foreign keys on, and the
/// schema brought up to date when it opens. Statements that fail throw a QString that names the
/// statement and SQLite's reason; the command that ran them answers with it.
class Database final
{
public:
    /// A connection of its own to the file; several may be open on one file, in one process or many.
    explicit Database(const QString& file);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Opens the file, making it if needed, and runs the migrations. Throws on failure.
    void open();
    bool isOpen() const;
    QString file() const { return m_file; }

    /// The version the schema has now; 0 for a new file.
    int schemaVersion();
    /// The version this service writes.
    static int currentSchemaVersion();

    /// A prepared statement; throws when SQLite refuses the text.
    QSqlQuery prepare(const QString& statement);
    /// Runs a prepared statement; throws with the statement and the reason on failure.
    void exec(QSqlQuery& query);
    /// Runs one statement without bound values.
    void exec(const QString& statement);
    /// The first column of the first row of a statement, or `fallback` without rows.
    QVariant scalar(QSqlQuery& query, const QVariant& fallback = QVariant());

    QSqlDatabase handle() const;

    /// SQLite's count of what other connections committed: what was read before it moved is stale.
    qint64 dataVersion();
    /// The plan list PlanStore keeps between calls on this connection; null until it is first read.
    std::shared_ptr<PlanListCache>& planListCache() { return m_planList; }
    /// Transactions open on this connection now: the first is SQLite's, the others savepoints in it.
    int& transactionDepth() { return m_transactionDepth; }
    /// Forgets whatever was kept of the tables, as after a rollback.
    void dropCaches() { m_planList.reset(); }

    /// A text to bind: Qt binds a null QString as SQL NULL, which NOT NULL columns refuse.
    static QString text(const QString& value) { return value.isNull() ? QStringLiteral("") : value; }

private:
    void migrate();

    QString m_file;
    QString m_connection;
    std::shared_ptr<PlanListCache> m_planList;
    int m_transactionDepth = 0;
};

} // namespace TWB::Service
