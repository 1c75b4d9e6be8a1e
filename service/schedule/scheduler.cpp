#include "service/schedule/scheduler.h"

#include "platform/communication/notification_types.h"
#include "platform/logging/twl_debug.h"
#include "platform/plan/schedule.h"
#include "platform/plan/base.h"
#include "platform/plan/factory.h"
#include "service/store/database.h"
#include "service/engine/engine.h"
#include "service/schedule/local_offsets.h"
#include "service/schedule/next_run.h"
#include "service/schedule/schedule_timing.h"
#include "service/store/plan_store.h"
#include "service/store/transaction.h"

#include <QElapsedTimer>
#include <QHash>
#include <QSet>
#include <QVector>

#include <memory>
#include <optional>

namespace TWB::Service {

namespace Type = TWB::Common::Communication::Notification::Type;

Scheduler::Scheduler(Database& database, Engine& engine, QObject* parent)
    : QObject(parent)
    , m_database(database)
    , m_engine(engine)
    , m_clock([] { return QDateTime::currentDateTimeUtc(); })
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &Scheduler::pass);
    // Saved plans move the timer a moment later, once for a burst (an import saves thousands), and
    // after the reply of the save has gone out: finding the earliest time reads every plan.
    m_rearm.setSingleShot(true);
    m_rearm.setInterval(20);
    connect(&m_rearm, &QTimer::timeout, this, &Scheduler::arm);
}

Scheduler::~Scheduler() = default;

void Scheduler::start()
{
    const QDateTime now = m_clock();
    m_lastPass = now;
    m_startPass = std::make_unique<StartPass>(now);
    // From the event loop, so that the service listens first and answers between the slices.
    QTimer::singleShot(0, this, &Scheduler::continueStart);
}

void Scheduler::plansChanged()
{
    if (!m_rearm.isActive())
        m_rearm.start();
}

namespace {

/// A run that starts more than this after its time is told to the consoles as missed and late.
constexpr qint64 lateAfterSeconds = 5 * 60;

/// Next runs worked out once per schedule and moment: plans made alike share their schedules.
class NextRuns final
{
public:
    explicit NextRuns(const QDateTime& now)
        : m_now(now)
    { }

    /// The next run of a schedule in its short text; none when the text does not read.
    std::optional<QDateTime> of(const QString& scheduleText)
    {
        const auto known = m_known.constFind(scheduleText);
        if (known != m_known.constEnd())
            return known.value();
        std::optional<QDateTime> next;
        TWB::Info::Plan::Schedule schedule;
        if (ScheduleTiming::readSchedule(scheduleText, &schedule))
            next = NextRun::after(schedule, m_now, m_offsets);
        m_known.insert(scheduleText, next);
        return next;
    }

private:
    QDateTime m_now;
    LocalOffsets m_offsets;
    QHash<QString, std::optional<QDateTime>> m_known;
};

/// A plan's next runs at `now`, from its timing; false when the timing is unknown or does not read.
bool nextRunsOf(const ScheduleTiming& timing, NextRuns& memo, QDateTime* next, QDateTime* nextFull)
{
    const std::optional<QDateTime> plain = memo.of(timing.schedule);
    if (!plain)
        return false;
    *next = *plain;
    if (!timing.full.isEmpty()) {
        const std::optional<QDateTime> full = memo.of(timing.full);
        if (!full)
            return false;
        *nextFull = *full;
    }
    return true;
}

/// One of the plan's times has passed by `now`.
bool isDue(const PlanRecord& plan, const QDateTime& now)
{
    return (plan.nextRun.isValid() && plan.nextRun <= now) || (plan.nextRunFull.isValid() && plan.nextRunFull <= now);
}

/// The plan's timing as the store keeps it, or read from its document when the store has none.
bool timingOf(PlanStore& store, const PlanRecord& plan, ScheduleTiming* timing)
{
    if (ScheduleTiming::read(plan.timing, timing))
        return true;
    // Saved before the store kept timings: read from the document once, and kept from now on.
    const std::optional<PlanRecord> full = store.find(plan.id);
    std::unique_ptr<TWB::Info::Plan::Base> object(full ? TWB::Info::Plan::Factory::create(full->xml) : nullptr);
    if (!object)
        return false;
    const QString text = ScheduleTiming::of(*object);
    store.setTiming(plan.id, text);
    return ScheduleTiming::read(text, timing);
}

/// Starts the plan if one of its times passed by `now` and works out its next times into `moved`.
/// At the service's start, a time that passed while it was down counts only for plans that ask
/// for it. False when nothing was due or the plan's timing does not read.
bool runIfDue(Engine& engine, PlanStore& store, const PlanRecord& plan, const QDateTime& now, bool atStart,
    NextRuns& memo, QVector<PlanStore::NextRuns>& moved)
{
    if (!isDue(plan, now))
        return false;
    const bool due = plan.nextRun.isValid() && plan.nextRun <= now;
    const bool fullDue = plan.nextRunFull.isValid() && plan.nextRunFull <= now;
    ScheduleTiming timing;
    QDateTime next;
    QDateTime nextFull = plan.nextRunFull;
    if (!timingOf(store, plan, &timing) || !nextRunsOf(timing, memo, &next, &nextFull))
        return false;
    const bool run = !atStart || timing.runMissed;
    if (run && engine.isRunning(plan.id)) {
        TWL::TwlDebug("TWB").info() << "Plan" << plan.id.toString() << "is due but runs already";
    } else if (run) {
        try {
            TWL::TwlDebug("TWB").info() << (atStart ? "Running the missed plan" : "Running the scheduled plan")
                                        << plan.id.toString();
            // Due while the service was down, or long before this pass (the machine slept): late.
            const QDateTime dueAt = due ? plan.nextRun : plan.nextRunFull;
            const bool late = atStart || dueAt.secsTo(now) > lateAfterSeconds;
            engine.start(plan.id, fullDue, true, late ? dueAt : QDateTime());
        } catch (const QString& text) {
            // A run that could not start is a result of its own: the plan list shows it.
            try {
                engine.recordRefused(plan.id, text);
            } catch (const QString& why) {
                TWL::TwlDebug("TWB").warning()
                    << "Cannot record the refused run of" << plan.id.toString() << ":" << why;
            }
        }
    }
    moved.append({plan.id, next, nextFull});
    return true;
}

/// Moved next runs, with one durable commit.
void recordNextRuns(Database& database, PlanStore& store, const QVector<PlanStore::NextRuns>& moved)
{
    if (moved.isEmpty())
        return;
    Transaction transaction(database);
    store.setNextRuns(moved);
    transaction.commit();
}

} // namespace

void Scheduler::tellUpdated(const QList<QUuid>& plans)
{
    for (const QUuid& id : plans)
        Q_EMIT notification(QLatin1String(Type::PlanUpdated), {{QStringLiteral("id"), id.toString()}});
}

/// The first pass, done a slice at a time.
struct Scheduler::StartPass
{
    explicit StartPass(const QDateTime& now)
        : now(now)
        , memo(now)
    { }

    QDateTime now;
    NextRuns memo;
    bool settled = false;
    /// Plans whose times had passed when the pass began, and how many of them are done.
    QVector<QUuid> due;
    int done = 0;
};

void Scheduler::continueStart()
{
    StartPass& start = *m_startPass;
    QList<QUuid> changed;
    if (!start.settled) {
        start.settled = true;
        changed = settle(start.now);
        try {
            const QList<PlanRecord> plans = PlanStore(m_database).all();
            for (const PlanRecord& plan : plans) {
                if (isDue(plan, start.now))
                    start.due.append(plan.id);
            }
        } catch (const QString& text) {
            TWL::TwlDebug("TWB").warning() << "The scheduler could not read the plans:" << text;
        }
    } else {
        // Plans are taken for this long; recording their next runs takes about as long again.
        constexpr qint64 sliceMs = 8;
        QElapsedTimer clock;
        clock.start();
        try {
            PlanStore store(m_database);
            QVector<PlanStore::NextRuns> moved;
            while (start.done < start.due.size() && clock.elapsed() < sliceMs) {
                // Read again: a command may have changed or removed the plan since the pass began.
                const std::optional<PlanRecord> plan = store.listed(start.due.at(start.done++));
                if (plan && runIfDue(m_engine, store, *plan, start.now, true, start.memo, moved))
                    changed << plan->id;
            }
            recordNextRuns(m_database, store, moved);
        } catch (const QString& text) {
            TWL::TwlDebug("TWB").warning() << "The scheduler could not record the first pass:" << text;
            start.done = start.due.size();
        }
    }
    tellUpdated(changed);
    if (start.done < start.due.size()) {
        // A timer, not a queued call: queued calls go before the sockets, timers after them.
        QTimer::singleShot(1, this, &Scheduler::continueStart);
        return;
    }
    m_startPass.reset();
    arm();
}

void Scheduler::pass()
{
    const QDateTime now = m_clock();
    // A clock that went back since the last pass leaves times the schedules would not give now.
    const bool movedBack = m_lastPass.isValid() && now < m_lastPass.addSecs(-2);
    m_lastPass = now;
    QList<QUuid> changed;
    if (movedBack)
        changed = settle(now);
    QSet<QUuid> noted(changed.cbegin(), changed.cend());
    try {
        PlanStore store(m_database);
        const QList<PlanRecord> plans = store.all();
        NextRuns memo(now);
        QVector<PlanStore::NextRuns> moved;
        for (const PlanRecord& plan : plans) {
            if (runIfDue(m_engine, store, plan, now, false, memo, moved) && !noted.contains(plan.id)) {
                noted.insert(plan.id);
                changed << plan.id;
            }
        }
        recordNextRuns(m_database, store, moved);
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "The scheduler could not read the plans:" << text;
    }
    tellUpdated(changed);
    arm();
}

void Scheduler::arm()
{
    // The first pass arms the timer when it ends: a timer pass before would run what it skips.
    if (m_startPass)
        return;
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
        NextRuns memo(now);
        QVector<PlanStore::NextRuns> moved;
        for (const PlanRecord& plan : plans) {
            if (!(plan.nextRun.isValid() && plan.nextRun > now)
                && !(plan.nextRunFull.isValid() && plan.nextRunFull > now))
                continue;
            ScheduleTiming timing;
            QDateTime expected;
            QDateTime expectedFull;
            if (!timingOf(store, plan, &timing) || !nextRunsOf(timing, memo, &expected, &expectedFull))
                continue;
            QDateTime next = plan.nextRun;
            QDateTime nextFull = plan.nextRunFull;
            if (next.isValid() && next > now && expected.isValid() && expected < next)
                next = expected;
            if (!timing.full.isEmpty() && nextFull.isValid() && nextFull > now && expectedFull.isValid()
                && expectedFull < nextFull)
                nextFull = expectedFull;
            if (next == plan.nextRun && nextFull == plan.nextRunFull)
                continue;
            TWL::TwlDebug("TWB").info() << "The clock went back: plan" << plan.id.toString() << "runs next at"
                                        << next.toString(Qt::ISODate) << "instead of"
                                        << plan.nextRun.toString(Qt::ISODate);
            moved.append({plan.id, next, nextFull});
            changed << plan.id;
        }
        recordNextRuns(m_database, store, moved);
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "The scheduler could not read the plans:" << text;
    }
    return changed;
}

} // namespace TWB::Service
