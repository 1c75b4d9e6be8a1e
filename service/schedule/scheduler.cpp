#include "service/schedule/scheduler.h"

#include "platform/communication/notification_types.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/backup.h"
#include "platform/plan/factory.h"
#include "service/store/database.h"
#include "service/engine/engine.h"
#include "service/schedule/next_run.h"
#include "service/store/plan_store.h"
#include "service/server/service_server.h"
#include "service/store/transaction.h"

#include <memory>

namespace TWB::Service {

namespace Type = TWB::Common::Communication::Notification::Type;

Scheduler::Scheduler(Database& database, Engine& engine, ServiceServer& server, QObject* parent)
    : QObject(parent)
    , m_database(database)
    , m_engine(engine)
    , m_server(server)
    , m_clock([] { return QDateTime::currentDateTimeUtc(); })
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] { pass(false); });
}

void Scheduler::start()
{
    pass(true);
}

void Scheduler::plansChanged()
{
    arm();
}

void Scheduler::pass(bool atStart)
{
    const QDateTime now = m_clock();
    // A clock that went back since the last pass, or one that was wrong when the times were
    // stored before the service's start, leaves times the schedules would not give now.
    const bool movedBack = m_lastPass.isValid() && now < m_lastPass.addSecs(-2);
    m_lastPass = now;
    QList<QUuid> changed;
    if (atStart || movedBack)
        changed = settle(now);
    try {
        PlanStore store(m_database);
        const QList<PlanRecord> plans = store.all();
        for (const PlanRecord& plan : plans) {
            const bool due = plan.nextRun.isValid() && plan.nextRun <= now;
            const bool fullDue = plan.nextRunFull.isValid() && plan.nextRunFull <= now;
            if (!due && !fullDue)
                continue;
            const std::optional<PlanRecord> full = store.find(plan.id);
            std::unique_ptr<TWB::Info::Plan::Base> object(full ? TWB::Info::Plan::Factory::create(full->xml) : nullptr);
            if (!object)
                continue;
            // A time that passed while the service was down counts only for plans that ask for it.
            const bool run = !atStart || object->runMuissedPlan();
            if (run && m_engine.isRunning(plan.id)) {
                TWL::TwlDebug("TWB").info() << "Plan" << plan.id.toString() << "is due but runs already";
            } else if (run) {
                try {
                    TWL::TwlDebug("TWB").info()
                        << (atStart ? "Running the missed plan" : "Running the scheduled plan") << plan.id.toString();
                    m_engine.start(plan.id, fullDue);
                } catch (const QString& text) {
                    // A run that could not start is a result of its own: the plan list shows it.
                    try {
                        m_engine.recordRefused(plan.id, text);
                    } catch (const QString& why) {
                        TWL::TwlDebug("TWB").warning()
                            << "Cannot record the refused run of" << plan.id.toString() << ":" << why;
                    }
                }
            }
            const QDateTime next = NextRun::after(object->schedule(), now);
            QDateTime nextFull = plan.nextRunFull;
            if (const auto* backup = dynamic_cast<const TWB::Info::Plan::Backup*>(object.get()))
                nextFull = NextRun::after(backup->forceFullSchedule(), now);
            Transaction transaction(m_database);
            store.setNextRun(plan.id, next, nextFull);
            transaction.commit();
            if (!changed.contains(plan.id))
                changed << plan.id;
        }
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "The scheduler could not read the plans:" << text;
    }
    for (const QUuid& id : qAsConst(changed))
        m_server.broadcast(QLatin1String(Type::PlanUpdated), {{QStringLiteral("id"), id.toString()}});
    arm();
}

void Scheduler::arm()
{
    QDateTime earliest;
    try {
        const QList<PlanRecord> plans = PlanStore(m_database).all();
        for (const PlanRecord& plan : plans) {
            for (const QDateTime& at : {plan.nextRun, plan.nextRunFull}) {
                if (at.isValid() && (!earliest.isValid() || at < earliest))
                    earliest = at;
            }
        }
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "The scheduler could not read the plans:" << text;
    }
    qint64 wait = longestSleepMs();
    if (earliest.isValid())
        wait = qBound<qint64>(0, m_clock().msecsTo(earliest), longestSleepMs());
    m_timer.start(int(wait));
}

QList<QUuid> Scheduler::settle(const QDateTime& now)
{
    QList<QUuid> changed;
    try {
        PlanStore store(m_database);
        const QList<PlanRecord> plans = store.all();
        for (const PlanRecord& plan : plans) {
            if (!(plan.nextRun.isValid() && plan.nextRun > now)
                && !(plan.nextRunFull.isValid() && plan.nextRunFull > now))
                continue;
            const std::optional<PlanRecord> full = store.find(plan.id);
            std::unique_ptr<TWB::Info::Plan::Base> object(full ? TWB::Info::Plan::Factory::create(full->xml) : nullptr);
            if (!object)
                continue;
            QDateTime next = plan.nextRun;
            QDateTime nextFull = plan.nextRunFull;
            const QDateTime expected = NextRun::after(object->schedule(), now);
            if (next.isValid() && next > now && expected.isValid() && expected < next)
                next = expected;
            if (const auto* backup = dynamic_cast<const TWB::Info::Plan::Backup*>(object.get())) {
                const QDateTime expectedFull = NextRun::after(backup->forceFullSchedule(), now);
                if (nextFull.isValid() && nextFull > now && expectedFull.isValid() && expectedFull < nextFull)
                    nextFull = expectedFull;
            }
            if (next == plan.nextRun && nextFull == plan.nextRunFull)
                continue;
            TWL::TwlDebug("TWB").info() << "The clock went back: plan" << plan.id.toString() << "runs next at"
                                        << next.toString(Qt::ISODate) << "instead of"
                                        << plan.nextRun.toString(Qt::ISODate);
            Transaction transaction(m_database);
            store.setNextRun(plan.id, next, nextFull);
            transaction.commit();
            changed << plan.id;
        }
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "The scheduler could not read the plans:" << text;
    }
    return changed;
}

} // namespace TWB::Service
