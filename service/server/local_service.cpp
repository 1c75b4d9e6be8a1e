#include "service/server/local_service.h"

#include "platform/crypt/local_password.h"
#include "platform/logging/twl_debug.h"
#include "service/commands/certificate_commands.h"
#include "service/commands/configuration_commands.h"
#include "service/commands/content_commands.h"
#include "service/commands/notice_commands.h"
#include "service/commands/engine_commands.h"
#include "service/store/database.h"
#include "service/engine/engine.h"
#include "service/engine/run_mailer.h"
#include "service/commands/history_commands.h"
#include "service/commands/plan_commands.h"
#include "service/commands/restore_commands.h"
#include "service/schedule/scheduler.h"
#include "service/commands/settings_commands.h"
#include "service/commands/storage_commands.h"

#include "service/engine/run_places.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace TWB::Service {

LocalService::LocalService(QObject* parent)
    : QObject(parent)
    , m_server(m_router)
{
    connect(&m_notifier, &Notifier::notification, &m_server, &ServiceServer::broadcast);
}

LocalService::~LocalService()
{
    stop();
}

QString LocalService::storeFile(const QString& dataDir)
{
    return dataDir + QStringLiteral("/service.db");
}

namespace {

// The cache holds repository indexes and the rclone configuration, and the run folder the key files
// of runs: both are made private here, before any run writes into them, and put right in a data
// folder of an older version.
void makePrivatePlaces(const QString& dataDir)
{
    const RunPlaces places {dataDir};
    const QString cache = QFileInfo(places.rcloneConfig()).absolutePath();
    const QString runs = QFileInfo(places.runFolder(QUuid())).absolutePath();
    for (const QString& folder : {cache, runs}) {
        if (!QDir().mkpath(folder))
            throw QStringLiteral("Cannot create the folder %1").arg(folder);
        QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }
    QFile config(places.rcloneConfig());
    if (!config.exists() && !config.open(QIODevice::WriteOnly))
        throw QStringLiteral("Cannot create %1").arg(config.fileName());
    config.close();
    config.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

} // namespace

bool LocalService::start(const QString& socketPath, const QString& dataDir, QString* error)
{
    try {
        QString reason;
        if (!SHARED::cryptNS::ensure_local_key(&reason))
            throw reason;
        SettingsCommands::applyLogOptions(RunPlaces {dataDir}.optionsFile());
        m_database = std::make_unique<Database>(storeFile(dataDir));
        m_database->open();

        m_plans = std::make_unique<PlanCommands>(*m_database, m_notifier);
        m_storages = std::make_unique<StorageCommands>(*m_database, m_notifier);
        m_history = std::make_unique<HistoryCommands>(*m_database);
        m_content = std::make_unique<ContentCommands>(*m_database);
        m_certificates = std::make_unique<CertificateCommands>(*m_database, this);
        m_settings = std::make_unique<SettingsCommands>(RunPlaces {dataDir}.optionsFile());
        m_plans->registerAt(m_router);
        m_storages->registerAt(m_router);
        m_history->registerAt(m_router);
        m_content->registerAt(m_router);
        m_certificates->registerAt(m_router);
        m_settings->registerAt(m_router);
        m_notices = std::make_unique<NoticeCommands>(*m_database, RunPlaces {dataDir}.noticeSettingsFile());
        m_notices->registerAt(m_router);
        m_configuration = std::make_unique<ConfigurationCommands>(*m_database, m_notifier, *m_plans, dataDir);
        m_configuration->registerAt(m_router);

        m_engine = std::make_unique<Engine>(*m_database, dataDir);
        m_engineCommands = std::make_unique<EngineCommands>(*m_database, *m_engine);
        m_engineCommands->registerAt(m_router);
        m_restoreCommands = std::make_unique<RestoreCommands>(*m_database, RunPlaces {dataDir});
        m_restoreCommands->registerAt(m_router);
        m_scheduler = std::make_unique<Scheduler>(*m_database, *m_engine);
        Engine* engine = m_engine.get();
        Scheduler* scheduler = m_scheduler.get();
        PlanCommands* plans = m_plans.get();
        connect(engine, &Engine::notification, &m_notifier, &Notifier::send);
        m_mailer = std::make_unique<RunMailer>(*m_database, RunPlaces {dataDir}.noticeSettingsFile());
        connect(engine, &Engine::notification, m_mailer.get(), &RunMailer::onEngineNotification);
        connect(scheduler, &Scheduler::notification, &m_notifier, &Notifier::send);
        m_engine->setPlanRemover([plans](const QUuid& id) { plans->removePlan(id); });
        m_plans->setRunningCheck([engine](const QUuid& id) { return engine->isRunning(id); });
        m_configuration->setRunningCheck([engine](const QUuid& id) { return engine->isRunning(id); });
        m_plans->setChangeListener([scheduler] { scheduler->plansChanged(); });
        m_storages->setSyncCheck([engine](const QUuid& id) { return engine->isSynchronising(id); });

        m_storages->ensureDefaultStorage(dataDir);
    } catch (const QString& text) {
        if (error)
            *error = text;
        return false;
    }
    // Only the service that owns the socket may call earlier runs interrupted and start plans: a
    // second one on the same data folder gives up here.
    if (!m_server.listen(socketPath, error))
        return false;
    try {
        m_engine->recoverInterrupted();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "Cannot record the runs the last stop cut short:" << text;
    }
    // After the recovery, which clears what interrupted runs left in the run folder.
    try {
        makePrivatePlaces(dataDir);
    } catch (const QString& text) {
        m_server.close();
        if (error)
            *error = text;
        return false;
    }
    m_scheduler->start();
    return true;
}

void LocalService::stop()
{
    if (m_plans)
        m_plans->setChangeListener(nullptr);
    m_scheduler.reset();
    if (m_engine)
        m_engine->shutdown();
    m_server.close();
}

} // namespace TWB::Service
