#include "service/local_service.h"

#include "platform/crypt/local_password.h"
#include "platform/logging/twl_debug.h"
#include "service/certificate_commands.h"
#include "service/content_commands.h"
#include "service/database.h"
#include "service/history_commands.h"
#include "service/plan_commands.h"
#include "service/settings_commands.h"
#include "service/storage_commands.h"

namespace TWB::Service {

LocalService::LocalService(QObject* parent)
    : QObject(parent)
    , m_server(m_router)
{ }

LocalService::~LocalService()
{
    stop();
}

QString LocalService::storeFile(const QString& dataDir)
{
    return dataDir + QStringLiteral("/service.db");
}

bool LocalService::start(const QString& socketPath, const QString& dataDir, QString* error)
{
    try {
        QString reason;
        if (!SHARED::cryptNS::ensure_local_key(&reason))
            throw reason;
        m_database = std::make_unique<Database>(storeFile(dataDir));
        m_database->open();

        m_plans = std::make_unique<PlanCommands>(*m_database, m_server);
        m_storages = std::make_unique<StorageCommands>(*m_database, m_server);
        m_history = std::make_unique<HistoryCommands>(*m_database);
        m_content = std::make_unique<ContentCommands>(*m_database);
        m_certificates = std::make_unique<CertificateCommands>(*m_database, this);
        m_settings = std::make_unique<SettingsCommands>();
        m_plans->registerAt(m_router);
        m_storages->registerAt(m_router);
        m_history->registerAt(m_router);
        m_content->registerAt(m_router);
        m_certificates->registerAt(m_router);
        m_settings->registerAt(m_router);

        m_storages->ensureDefaultStorage(dataDir);
    } catch (const QString& text) {
        if (error)
            *error = text;
        return false;
    }
    return m_server.listen(socketPath, error);
}

void LocalService::stop()
{
    m_server.close();
}

} // namespace TWB::Service
