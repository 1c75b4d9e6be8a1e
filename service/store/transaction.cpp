#include "service/store/transaction.h"

#include "platform/logging/twl_debug.h"
#include "service/store/database.h"

namespace TWB::Service {

namespace {
QString savepoint(int level)
{
    return QStringLiteral("twb_%1").arg(level);
}
} // namespace

Transaction::Transaction(Database& database)
    : m_database(database)
{
    int& depth = m_database.transactionDepth();
    if (depth == 0)
        m_database.exec(QStringLiteral("BEGIN IMMEDIATE"));
    else
        m_database.exec(QStringLiteral("SAVEPOINT %1").arg(savepoint(depth + 1)));
    m_level = ++depth;
}

Transaction::~Transaction()
{
    if (m_done)
        return;
    // What was kept of the tables may hold the changes now undone.
    m_database.dropCaches();
    --m_database.transactionDepth();
    QSqlQuery rollback(m_database.handle());
    const bool undone = m_level == 1 ? rollback.exec(QStringLiteral("ROLLBACK"))
                                     : rollback.exec(QStringLiteral("ROLLBACK TO %1").arg(savepoint(m_level)))
            && rollback.exec(QStringLiteral("RELEASE %1").arg(savepoint(m_level)));
    if (!undone)
        TWL::TwlDebug("TWB").warning() << "Cannot roll back a transaction of" << m_database.file();
}

void Transaction::commit()
{
    m_database.exec(m_level == 1 ? QStringLiteral("COMMIT") : QStringLiteral("RELEASE %1").arg(savepoint(m_level)));
    m_done = true;
    --m_database.transactionDepth();
}

} // namespace TWB::Service
