#pragma once

#include "service/engine/plan_run.h"

#include <QDateTime>
#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QUuid>

#include <functional>

namespace TWB::Service {

class Database;
class RepositorySync;

/// Runs plans, for the consoles and the scheduler, and synchronises repositories. One run per plan
/// at a time. A run's start and end are written to the store before anyone hears of them, with its
/// history and the plan table's summary of it. What changes is told by notification(), for whoever
/// owns the consoles to pass on.
class Engine final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Engine)
public:
    Engine(Database& database, const QString& dataDir, QObject* parent = nullptr);
    ~Engine() override;

    /// Removes a plan that asked to go after its run; it throws the reason when it cannot.
    void setPlanRemover(std::function<void(const QUuid&)> remove) { m_removePlan = std::move(remove); }

    /// Marks as interrupted the runs that the service's own death cut short, and clears what
    /// they left in the data folder. Called once, before the first command.
    void recoverInterrupted();
    /// Ends every run as interrupted by the service's stop, and their processes with them.
    void shutdown();

    /// Starts a run; throws the reason when the plan cannot run now. A scheduled backup does not start
    /// on battery power, and stops when the machine goes on battery, while "BackUpOnBattery" is
    /// "false"; a run the user asked for is the user's choice and runs to its end. `missedTime` is the
    /// scheduled time of a run that starts late, which the start notification tells the consoles.
    void start(const QUuid& plan, bool forceFull, bool scheduled = false, const QDateTime& missedTime = QDateTime());
    bool isRunning(const QUuid& plan) const { return m_runs.contains(plan); }
    /// Asks a run to stop; a plan that is not running is left as it is.
    void stop(const QUuid& plan);
    /// Writes down a run that was due but could not start: a history entry that failed with the
    /// reason, which becomes the plan's last result.
    void recordRefused(const QUuid& plan, const QString& reason);
    int runningCount() const { return m_runs.size(); }
    bool isSynchronising(const QUuid& account) const { return !m_syncs.value(account).isNull(); }
    /// Starts synchronising an account's repositories; throws the reason when it cannot now.
    void synchronize(const QUuid& account, const QString& password);
    void cancelSynchronize(const QUuid& account);
    QList<QUuid> synchronisingAccounts() const;

Q_SIGNALS:
    void runFinished(const QUuid& plan);
    void notification(const QString& type, const QJsonObject& data);

private:
    void onRunFinished(PlanRun* run);
    void record(PlanRun* run, bool notify);

    Database& m_database;
    std::function<void(const QUuid&)> m_removePlan;
    RunPlaces m_places;
    QHash<QUuid, QPointer<PlanRun>> m_runs;
    QHash<QUuid, qint64> m_runIds; // history entry of each run
    QHash<QUuid, QPointer<RepositorySync>> m_syncs; // by account
};

} // namespace TWB::Service
