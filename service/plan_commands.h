#pragma once

#include <QHash>
#include <QJsonObject>
#include <QUuid>

#include <memory>

namespace TWB::Info::Plan {
class Base;
}

namespace TWB::Service {

struct PlanRecord;
class CommandRouter;
class Database;
class Responder;
class ServiceServer;

/// Plans: "PlanGetList", "PlanGetInfo", "PlanGetXML", "PlanUpdate", "PlanRemove" and
/// "GetUsedShare", and the answer to "PlanExecuteStart" and "PlanExecuteStop" until plans run.
class PlanCommands final
{
public:
    PlanCommands(Database& database, ServiceServer& server);
    ~PlanCommands();
    PlanCommands(const PlanCommands&) = delete;
    PlanCommands& operator=(const PlanCommands&) = delete;

    void registerAt(CommandRouter& router);

    /// A plan as the plan table shows it. The run summary keys stay empty until a run.
    static QJsonObject info(const PlanRecord& plan);

    /// The share root a plan path lies on: "/TWB_SHARES/<name>" for paths under it, else the mount
    /// point of the network file system that holds the path; empty for local paths.
    static QString shareRoot(const QString& path);

private:
    void getList(const QJsonObject& params, const Responder& respond);
    void getInfo(const QJsonObject& params, const Responder& respond);
    void getXml(const QJsonObject& params, const Responder& respond);
    void update(const QJsonObject& params, const Responder& respond);
    void remove(const QJsonObject& params, const Responder& respond);
    void usedShare(const QJsonObject& params, const Responder& respond);
    void notRunning(const QJsonObject& params, const Responder& respond);

    /// Moves the next run of plans whose next run has passed; writes the new times back.
    void refreshNextRuns(QList<PlanRecord>& plans);
    /// The parsed plan, kept until the plan changes; null when it cannot be read.
    std::shared_ptr<TWB::Info::Plan::Base> parsed(const QUuid& id);

    Database& m_database;
    ServiceServer& m_server;
    QHash<QUuid, std::shared_ptr<TWB::Info::Plan::Base>> m_parsed;
};

} // namespace TWB::Service
