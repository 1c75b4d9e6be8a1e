#pragma once

#include <QJsonObject>
#include <QString>
#include <QUuid>

#include <functional>

namespace TWB::Service {

class CommandRouter;
class Database;
class Notifier;
class PlanCommands;
class Responder;

/// "ExportConfiguration" and "ImportConfiguration": the plans, storage accounts and product options of
/// this installation in one password-sealed file, which another machine's service can take in whole.
class ConfigurationCommands final
{
public:
    ConfigurationCommands(Database& database, Notifier& notifier, PlanCommands& plans, const QString& dataDir);
    ConfigurationCommands(const ConfigurationCommands&) = delete;
    ConfigurationCommands& operator=(const ConfigurationCommands&) = delete;

    void registerAt(CommandRouter& router);

    /// Asked before an import replaces a plan: a running plan is not replaced.
    void setRunningCheck(std::function<bool(const QUuid&)> isRunning) { m_isRunning = std::move(isRunning); }

private:
    void exportConfiguration(const QJsonObject& params, const Responder& respond);
    void importConfiguration(const QJsonObject& params, const Responder& respond);
    QJsonObject exportContent(const QJsonObject& params);
    QJsonObject importContent(const QJsonObject& params);

    Database& m_database;
    Notifier& m_notifier;
    PlanCommands& m_plans;
    QString m_dataDir;
    std::function<bool(const QUuid&)> m_isRunning;
};

} // namespace TWB::Service
