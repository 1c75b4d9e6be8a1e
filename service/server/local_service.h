#pragma once

#include "service/commands/command_router.h"
#include "service/commands/notifier.h"
#include "service/server/service_server.h"

#include <QObject>
#include <QString>

#include <memory>

namespace TWB::Service {

class CertificateCommands;
class ConfigurationCommands;
class ContentCommands;
class Database;
class NoticeCommands;
class Engine;
class EngineCommands;
class RestoreCommands;
class HistoryCommands;
class Scheduler;
class PlanCommands;
class RunMailer;
class SettingsCommands;
class StorageCommands;

/// The whole service: the store in the data folder, the commands it answers and the socket.
class LocalService final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(LocalService)
public:
    explicit LocalService(QObject* parent = nullptr);
    ~LocalService() override;

    /// Opens (and migrates) <dataDir>/service.db, makes the cipher key and the first storage
    /// account when they are missing, and listens on `socketPath`. False with a reason in `error`.
    bool start(const QString& socketPath, const QString& dataDir, QString* error);
    /// Drops the clients and closes the socket and the store.
    void stop();

    ServiceServer& server() { return m_server; }
    static QString storeFile(const QString& dataDir);

private:
    CommandRouter m_router;
    ServiceServer m_server;
    Notifier m_notifier;
    std::unique_ptr<Database> m_database;
    std::unique_ptr<PlanCommands> m_plans;
    std::unique_ptr<StorageCommands> m_storages;
    std::unique_ptr<HistoryCommands> m_history;
    std::unique_ptr<ContentCommands> m_content;
    std::unique_ptr<CertificateCommands> m_certificates;
    std::unique_ptr<SettingsCommands> m_settings;
    std::unique_ptr<NoticeCommands> m_notices;
    std::unique_ptr<ConfigurationCommands> m_configuration;
    std::unique_ptr<Engine> m_engine;
    std::unique_ptr<EngineCommands> m_engineCommands;
    std::unique_ptr<RestoreCommands> m_restoreCommands;
    std::unique_ptr<RunMailer> m_mailer;
    std::unique_ptr<Scheduler> m_scheduler;
};

} // namespace TWB::Service
