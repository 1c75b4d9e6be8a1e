#include "service/commands/engine_commands.h"

#include "service/commands/command_router.h"
#include "service/commands/params.h"
#include "service/commands/responder.h"
#include "service/engine/engine.h"
#include "service/store/account_store.h"
#include "service/store/plan_store.h"

#include <QJsonArray>

namespace TWB::Service {

EngineCommands::EngineCommands(Database& database, Engine& engine)
    : m_database(database)
    , m_engine(engine)
{ }

void EngineCommands::registerAt(CommandRouter& router)
{
    router.add(QStringLiteral("PlanExecuteStart"),
        [this](const QJsonObject& params, const Responder& respond) { executeStart(params, respond); });
    router.add(QStringLiteral("PlanExecuteStop"),
        [this](const QJsonObject& params, const Responder& respond) { executeStop(params, respond); });
    router.add(QStringLiteral("SynchronizeRepository"),
        [this](const QJsonObject& params, const Responder& respond) { synchronize(params, respond); });
    router.add(QStringLiteral("SynchronizeRepositoryCancel"),
        [this](const QJsonObject& params, const Responder& respond) { synchronizeCancel(params, respond); });
    router.add(QStringLiteral("GetSynchronizeRepositoryList"),
        [this](const QJsonObject& params, const Responder& respond) { synchronizeList(params, respond); });
}

void EngineCommands::executeStart(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    const QUuid id = params.uuid("ID");
    const bool forceFull = params.optionalBool("force_full", false);
    if (!PlanStore(m_database).find(id))
        throw params.fault("ID", QStringLiteral("names no plan: %1").arg(id.toString()));
    m_engine.start(id, forceFull);
    respond.success();
}

void EngineCommands::executeStop(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    const QUuid id = params.uuid("ID");
    if (!PlanStore(m_database).find(id))
        throw params.fault("ID", QStringLiteral("names no plan: %1").arg(id.toString()));
    // A plan that ended meanwhile is stopped already: nothing to do, and nothing to refuse.
    m_engine.stop(id);
    respond.success();
}

void EngineCommands::synchronize(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    const QUuid account = params.uuid("id");
    const QString password = params.optionalString("password");
    if (!AccountStore(m_database).find(account))
        throw params.fault("id", QStringLiteral("names no storage account: %1").arg(account.toString()));
    m_engine.synchronize(account, password);
    respond.success();
}

void EngineCommands::synchronizeCancel(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    m_engine.cancelSynchronize(params.uuid("id"));
    respond.success();
}

void EngineCommands::synchronizeList(const QJsonObject&, const Responder& respond)
{
    QJsonArray list;
    const QList<QUuid> accounts = m_engine.synchronisingAccounts();
    for (const QUuid& account : accounts)
        list.append(QJsonObject {{QStringLiteral("Key"), account.toString()}});
    respond.success({{QStringLiteral("list"), list}});
}

} // namespace TWB::Service
