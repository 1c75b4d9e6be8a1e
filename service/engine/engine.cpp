#include "service/engine/engine.h"

#include "platform/communication/notification_types.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/factory.h"
#include "platform/plan/restore_file.h"
#include "service/store/account_store.h"
#include "service/engine/backup_run.h"
#include "service/engine/power_source.h"
#include "service/store/database.h"
#include "service/store/history_store.h"
#include "service/store/plan_store.h"
#include "service/store/product_options.h"
#include "service/store/store_time.h"
#include "service/engine/repository_sync.h"
#include "service/engine/restore_run.h"
#include "service/engine/run_state.h"
#include "service/store/transaction.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>

namespace TWB::Service {

namespace Type = TWB::Common::Communication::Notification::Type;

Engine::Engine(Database& database, const QString& dataDir, QObject* parent)
    : QObject(parent)
    , m_database(database)
    , m_places {dataDir}
{ }

Engine::~Engine()
{
    shutdown();
}

void Engine::recoverInterrupted()
{
    // Lists and key files of runs that never ended hold secrets; they go first.
    QDir(m_places.dataDir + QStringLiteral("/run")).removeRecursively();
    HistoryStore history(m_database);
    PlanStore plans(m_database);
    const QList<RunRecord> cut = history.unfinishedRuns();
    Transaction transaction(m_database);
    for (RunRecord run : cut) {
        run.result = RunState::Interrupted;
        run.errorMessage = QStringLiteral("The service stopped during the run");
        history.updateRun(run);
        PlanRecord::LastRun last;
        last.status = RunState::Interrupted;
        last.message = run.errorMessage;
        last.time = run.start;
        plans.setLastRun(run.plan, last);
    }
    // One statement: reading every plan here made the first commands after a start wait.
    plans.setAllIdle();
    transaction.commit();
    if (!cut.isEmpty())
        TWL::TwlDebug("TWB").infoH() << cut.size() << "runs were cut short by the service's stop";
}

void Engine::shutdown()
{
    const QList<QUuid> running = m_runs.keys();
    for (const QUuid& id : running) {
        PlanRun* run = m_runs.value(id);
        if (!run)
            continue;
        // The service is going: the run is written as interrupted now, and its processes end
        // with it, without waiting for them to report.
        run->stop(PlanRun::StopReason::Shutdown);
        disconnect(run, nullptr, this, nullptr);
        try {
            record(run, false);
        } catch (const QString& text) {
            TWL::TwlDebug("TWB").warning() << "Cannot record the end of the run of" << id.toString() << ":" << text;
        }
        delete run;
    }
    m_runs.clear();
    const QList<QPointer<RepositorySync>> syncs = m_syncs.values();
    for (const QPointer<RepositorySync>& sync : syncs)
        delete sync.data();
    m_syncs.clear();
}

void Engine::start(const QUuid& id, bool forceFull, bool scheduled, const QDateTime& missedTime)
{
    if (m_runs.contains(id))
        throw QStringLiteral("The plan %1 is running already").arg(id.toString());
    const std::optional<PlanRecord> record = PlanStore(m_database).find(id);
    if (!record)
        throw QStringLiteral("No plan %1").arg(id.toString());
    QString error;
    std::shared_ptr<const TWB::Info::Plan::Base> plan(TWB::Info::Plan::Factory::create(record->xml, &error));
    if (!plan)
        throw QStringLiteral("The plan %1 no longer reads: %2").arg(id.toString(), error);
    // What can never run is refused at once, so that whoever asked hears why.
    if (plan->storage().isNull())
        throw QStringLiteral("The plan \"%1\" has no storage account").arg(plan->name());
    if (!AccountStore(m_database).find(plan->storage()))
        throw QStringLiteral("The storage account of the plan \"%1\" does not exist").arg(plan->name());
    // A synchronisation rebuilds the catalogs of the account's plans: no backup may add to them meanwhile.
    if (isSynchronising(plan->storage()))
        throw QStringLiteral("The storage account of the plan \"%1\" is being synchronised").arg(plan->name());
    const auto* backupFiles = dynamic_cast<const TWB::Info::Plan::BackupFile*>(plan.get());
    const auto* restoreFiles = dynamic_cast<const TWB::Info::Plan::RestoreFile*>(plan.get());
    if ((backupFiles && backupFiles->items().isEmpty()) || (restoreFiles && restoreFiles->restoreItems().isEmpty()))
        throw QStringLiteral("The plan \"%1\" names no files or folders").arg(plan->name());
    const bool backup = plan->subtype() == TWB::Info::Plan::Base::KindBackup;
    const bool guardPower = scheduled && backup && !ProductOptions(m_places.optionsFile()).backUpOnBattery();
    if (guardPower && PowerSource::onBattery())
        throw QStringLiteral("The computer runs on battery power, and backups on battery power are turned off");

    PlanRun* run = nullptr;
    if (backup)
        run = new BackupRun(m_database, m_places, plan, this);
    else
        run = new RestoreRun(m_database, m_places, plan, this);
    if (guardPower)
        run->stopOnBattery();

    RunRecord history;
    history.plan = id;
    history.planName = record->name;
    history.operation = backup ? 0 : 1;
    history.result = RunState::Running;
    history.start = QDateTime::currentDateTimeUtc();
    {
        Transaction transaction(m_database);
        const qint64 runId = HistoryStore(m_database).addRun(history);
        PlanStore(m_database).setStatus(id, 1);
        transaction.commit();
        m_runIds.insert(id, runId);
    }
    m_runs.insert(id, run);
    connect(run, &PlanRun::progressed, this,
        [this](const QJsonObject& message) { Q_EMIT notification(QLatin1String(Type::PlanProgress), message); });
    connect(run, &PlanRun::finished, this, [this, run] { onRunFinished(run); });
    TWL::TwlDebug("TWB").info() << "Run of plan" << id.toString() << record->name << "starts"
                                << (forceFull ? "reading every file" : "");
    QJsonObject started {{QStringLiteral("id"), id.toString()}, {QStringLiteral("state"), 1}};
    if (missedTime.isValid())
        started.insert(QStringLiteral("missed"), StoreTime::toText(missedTime));
    Q_EMIT notification(QLatin1String(Type::PlanStateChanged), started);
    run->start(forceFull);
}

void Engine::recordRefused(const QUuid& id, const QString& reason)
{
    PlanStore plans(m_database);
    const std::optional<PlanRecord> plan = plans.find(id);
    if (!plan)
        return;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    RunRecord history;
    history.plan = id;
    history.planName = plan->name;
    history.operation = plan->subtype == 2 ? 1 : 0;
    history.result = RunState::Fail;
    history.start = now;
    history.errorMessage = QStringLiteral("The scheduled run did not start: %1").arg(reason);
    PlanRecord::LastRun last;
    last.status = RunState::Fail;
    last.message = history.errorMessage;
    last.time = now;
    Transaction transaction(m_database);
    HistoryStore store(m_database);
    store.addRun(history);
    plans.setLastRun(id, last);
    transaction.commit();
    TWL::TwlDebug("TWB").warning() << "The scheduled run of" << id.toString() << "did not start:" << reason;
}

void Engine::record(PlanRun* run, bool notify)
{
    const QUuid id = run->planId();
    RunResult result = run->result();
    if (!run->isFinished()) {
        result.state = RunState::Interrupted;
        result.message = QStringLiteral("The service stopped during the run");
        result.duration = result.start.isValid() ? result.start.secsTo(QDateTime::currentDateTimeUtc()) : 0;
    }
    RunRecord history;
    history.id = m_runIds.take(id);
    history.plan = id;
    history.result = result.state;
    history.duration = result.duration;
    history.fileCount = result.operations.size();
    history.size = result.uploadedSize;
    history.errorMessage = result.state == RunState::Success ? QString() : result.message;

    PlanRecord::LastRun last;
    last.status = result.state;
    last.message = result.message;
    last.time = result.start;
    last.duration = result.duration;
    last.uploadedCount = result.uploadedCount;
    last.failedCount = result.failedCount;
    last.uploadedSize = result.uploadedSize;
    last.fileCount = result.fileCount;
    last.fileSize = result.fileSize;

    PlanStore plans(m_database);
    HistoryStore store(m_database);
    Transaction transaction(m_database);
    if (history.id > 0) {
        store.updateRun(history);
        store.addFileOperations(history.id, result.operations);
    }
    const bool exists = plans.find(id).has_value();
    if (exists) {
        plans.setLastRun(id, last);
        plans.setStatus(id, 2);
    }
    transaction.commit();
    if (!notify || !exists)
        return;
    Q_EMIT notification(QLatin1String(Type::PlanStateChanged),
        {{QStringLiteral("id"), id.toString()}, {QStringLiteral("state"), 2},
            {QStringLiteral("last_state"), result.state}});
    Q_EMIT notification(QLatin1String(Type::PlanUpdated), {{QStringLiteral("id"), id.toString()}});
}

void Engine::onRunFinished(PlanRun* run)
{
    const QUuid id = run->planId();
    m_runs.remove(id);
    QElapsedTimer clock;
    clock.start();
    try {
        record(run, true);
        TWL::TwlDebug("TWB").debug() << "Recorded the run of" << id.toString() << "with"
                                     << run->result().operations.size() << "file operations in" << clock.elapsed()
                                     << "ms";
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "Cannot record the end of the run of" << id.toString() << ":" << text;
    }
    const auto* restore = dynamic_cast<const TWB::Info::Plan::Restore*>(&run->plan());
    if (restore && restore->deletePlan() == TWB::Info::Plan::Restore::DeleteAfterRun && m_removePlan) {
        try {
            m_removePlan(id);
        } catch (const QString& text) {
            TWL::TwlDebug("TWB").warning() << "Cannot remove the run-once plan" << id.toString() << ":" << text;
        }
    }
    run->deleteLater();
    Q_EMIT runFinished(id);
}

void Engine::stop(const QUuid& id)
{
    if (PlanRun* run = m_runs.value(id))
        run->stop(PlanRun::StopReason::User);
}

void Engine::synchronize(const QUuid& account, const QString& password)
{
    if (m_syncs.value(account))
        throw QStringLiteral("The storage account %1 is being synchronised already").arg(account.toString());
    for (const QPointer<PlanRun>& run : qAsConst(m_runs)) {
        if (run && run->plan().storage() == account)
            throw QStringLiteral("The plan \"%1\" of the storage account is running; synchronise when it has ended")
                .arg(run->plan().name());
    }
    auto* sync = new RepositorySync(m_database, m_places, account, password, this);
    m_syncs.insert(account, sync);
    connect(sync, &RepositorySync::notification, this, &Engine::notification);
    connect(sync, &RepositorySync::finished, this, [this, account, sync] {
        m_syncs.remove(account);
        sync->deleteLater();
    });
    sync->start();
}

void Engine::cancelSynchronize(const QUuid& account)
{
    if (RepositorySync* sync = m_syncs.value(account))
        sync->cancel();
}

QList<QUuid> Engine::synchronisingAccounts() const
{
    QList<QUuid> accounts;
    for (auto it = m_syncs.constBegin(); it != m_syncs.constEnd(); ++it) {
        if (it.value())
            accounts.append(it.key());
    }
    return accounts;
}

} // namespace TWB::Service
