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
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QList<QUuid> changed;
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
                    TWL::TwlDebug("TWB").warning() << "The scheduled run of" << plan.id.toString() << "failed:" << text;
                }
            }
            const QDateTime next = NextRun::after(object->schedule(), now);
            QDateTime nextFull = plan.nextRunFull;
            if (const auto* backup = dynamic_cast<const TWB::Info::Plan::Backup*>(object.get()))
                nextFull = NextRun::after(backup->forceFullSchedule(), now);
            Transaction transaction(m_database);
            store.setNextRun(plan.id, next, nextFull);
            transaction.commit();
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
        wait = qBound<qint64>(0, QDateTime::currentDateTimeUtc().msecsTo(earliest), longestSleepMs());
    m_timer.start(int(wait));
}

} // namespace TWB::Service
