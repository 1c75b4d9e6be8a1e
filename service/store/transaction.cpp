#include "service/store/transaction.h"

#include "platform/logging/twl_debug.h"
#include "service/store/database.h"

namespace TWB::Service {

Transaction::Transaction(Database& database)
    : m_database(database)
{
    m_database.exec(QStringLiteral("BEGIN IMMEDIATE"));
}

Transaction::~Transaction()
{
    if (m_done)
        return;
    QSqlQuery rollback(m_database.handle());
    if (!rollback.exec(QStringLiteral("ROLLBACK")))
        TWL::TwlDebug("TWB").warning() << "Cannot roll back a transaction of" << m_database.file();
}

void Transaction::commit()
{
    m_database.exec(QStringLiteral("COMMIT"));
    m_done = true;
}

} // namespace TWB::Service
