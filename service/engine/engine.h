#pragma once

#include "service/engine/plan_run.h"

#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QUuid>

namespace TWB::Service {

class CommandRouter;
class Database;
class PlanCommands;
class RepositorySync;
class Responder;
class ServiceServer;

/// Runs plans: "PlanExecuteStart" and "PlanExecuteStop", the scheduler's starts, and repository
/// synchronisation. One run per plan at a time. A run's start and end are written to the store
/// before anyone hears of them, with its history and the plan table's summary of it.
class Engine final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Engine)
public:
    Engine(Database& database, ServiceServer& server, PlanCommands& plans, const QString& dataDir,
        QObject* parent = nullptr);
    ~Engine() override;

    void registerAt(CommandRouter& router);

    /// Marks as interrupted the runs that the service's own death cut short, and clears what
    /// they left in the data folder. Called once, before the first command.
    void recoverInterrupted();
    /// Ends every run as interrupted by the service's stop, and their processes with them.
    void shutdown();

    /// Starts a run; throws the reason when the plan cannot run now.
    void start(const QUuid& plan, bool forceFull);
    bool isRunning(const QUuid& plan) const { return m_runs.contains(plan); }
    /// Writes down a run that was due but could not start: a history entry that failed with the
    /// reason, which becomes the plan's last result.
    void recordRefused(const QUuid& plan, const QString& reason);
    int runningCount() const { return m_runs.size(); }
    bool isSynchronising(const QUuid& account) const { return !m_syncs.value(account).isNull(); }

Q_SIGNALS:
    void runFinished(const QUuid& plan);

private:
    void executeStart(const QJsonObject& params, const Responder& respond);
    void executeStop(const QJsonObject& params, const Responder& respond);
    void synchronize(const QJsonObject& params, const Responder& respond);
    void synchronizeCancel(const QJsonObject& params, const Responder& respond);
    void synchronizeList(const QJsonObject& params, const Responder& respond);
    void onRunFinished(PlanRun* run);
    void record(PlanRun* run, bool notify);

    Database& m_database;
    ServiceServer& m_server;
    PlanCommands& m_plans;
    RunPlaces m_places;
    QHash<QUuid, QPointer<PlanRun>> m_runs;
    QHash<QUuid, qint64> m_runIds; // history entry of each run
    QHash<QUuid, QPointer<RepositorySync>> m_syncs; // by account
};

} // namespace TWB::Service
