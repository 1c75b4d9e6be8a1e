#pragma once

#include <QDateTime>
#include <QObject>
#include <QTimer>
#include <QUuid>

namespace TWB::Service {

class Database;
class Engine;
class ServiceServer;

/// Starts plans when their schedule says so, and full backups when the full-backup schedule does.
/// It owns "NextRun" and "NextRunFull" of the store: when a time passes, the plan runs (unless it
/// runs already) and the next time is computed from the schedule. At the service's start, a plan
/// whose time passed while the service was down runs at once if it asks to run missed plans.
class Scheduler final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Scheduler)
public:
    Scheduler(Database& database, Engine& engine, ServiceServer& server, QObject* parent = nullptr);

    /// The pass at the service's start, then the timer.
    void start();
    /// Plans changed: the timer is set for the new earliest time.
    void plansChanged();

    /// How long the timer sleeps at most, so that a changed clock is noticed.
    static constexpr int longestSleepMs() { return 60 * 1000; }

private:
    /// Starts what is due at `now`; at the service's start, missed plans decide for themselves.
    void pass(bool atStart);
    void arm();

    Database& m_database;
    Engine& m_engine;
    ServiceServer& m_server;
    QTimer m_timer;
};

} // namespace TWB::Service
