#pragma once

#include <QJsonObject>

namespace TWB::Service {

class CommandRouter;
class Database;
class Engine;
class Responder;

/// "PlanExecuteStart", "PlanExecuteStop" and the repository synchronisation commands: they check
/// what they are asked and leave the running to the engine.
class EngineCommands final
{
public:
    EngineCommands(Database& database, Engine& engine);
    EngineCommands(const EngineCommands&) = delete;
    EngineCommands& operator=(const EngineCommands&) = delete;

    void registerAt(CommandRouter& router);

private:
    void executeStart(const QJsonObject& params, const Responder& respond);
    void executeStop(const QJsonObject& params, const Responder& respond);
    void synchronize(const QJsonObject& params, const Responder& respond);
    void synchronizeCancel(const QJsonObject& params, const Responder& respond);
    void synchronizeList(const QJsonObject& params, const Responder& respond);

    Database& m_database;
    Engine& m_engine;
};

} // namespace TWB::Service
