#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QTimer>
#include <QUuid>

#include <functional>
#include <memory>

namespace TWB::Service {

class Database;
class Engine;

/// Starts plans when their schedule says so, and full backups when the full-backup schedule does.
/// It owns "NextRun" and "NextRunFull" of the store: when a time passes, the plan runs (unless it
/// runs already) and the next time is computed from the schedule. At the service's start, a plan
/// whose time passed while the service was down runs at once if it asks to run missed plans.
class Scheduler final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Scheduler)
public:
    /// What the scheduler takes for now; the wall clock unless another is given.
    using Clock = std::function<QDateTime()>;

    Scheduler(Database& database, Engine& engine, QObject* parent = nullptr);
    ~Scheduler() override;

    void setClock(Clock clock) { m_clock = std::move(clock); }

    /// The pass at the service's start, then the timer. The pass runs from the event loop in
    /// slices of a few milliseconds: after the machine was off, it moves thousands of next runs, and
    /// commands are answered between the slices.
    void start();
    /// The first pass is under way.
    bool isStarting() const { return m_startPass != nullptr; }
    /// Plans changed: the timer is set for the new earliest time.
    void plansChanged();

    /// How long the timer sleeps at most, so that a changed clock is noticed.
    static constexpr int longestSleepMs() { return 60 * 1000; }

Q_SIGNALS:
    /// A plan's next run moved without anyone asking.
    void notification(const QString& type, const QJsonObject& data);

private:
    struct StartPass;
    /// The next slice of the first pass: missed plans decide for themselves whether they run.
    void continueStart();
    /// Starts what is due now.
    void pass();
    void arm();
    /// Tells the consoles that these plans' next runs moved.
    void tellUpdated(const QList<QUuid>& plans);
    /// After the clock moved back, stored times can lie further ahead than the schedules allow:
    /// those are computed again from now. Returns the plans whose times changed.
    QList<QUuid> settle(const QDateTime& now);

    Database& m_database;
    Engine& m_engine;
    QTimer m_timer;
    QTimer m_rearm;
    Clock m_clock;
    QDateTime m_lastPass;
    std::unique_ptr<StartPass> m_startPass;
};

} // namespace TWB::Service
