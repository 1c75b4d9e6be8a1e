#pragma once

#include "service/engine/engine_process.h"
#include "service/engine/engine_steps.h"
#include "service/engine/run_places.h"
#include "service/store/history_store.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>

namespace TWB::Info::Plan {
class Base;
}

namespace TWB::Service {

class Database;
struct BackendTarget;

/// What a run did: the plan table's summary of it, its history entry and its file operations.
struct RunResult
{
    int operation = 0; // 0 backup, 1 restore
    int state = 6;
    QString message;
    QDateTime start;
    qint64 duration = 0; // seconds
    qint64 uploadedCount = 0; // files backed up or restored
    qint64 failedCount = 0;
    qint64 uploadedSize = 0; // bytes sent to the storage, or restored
    qint64 fileCount = 0; // files the run looked at
    qint64 fileSize = 0;
    QList<FileOperationRecord> operations;
};

/// One run of a plan: a chain of restic and rclone processes, each started when the one before
/// ended, so that the service's event loop never waits. It reports progress about once a second
/// and ends exactly once, with finished().
class PlanRun : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanRun)
public:
    enum class StopReason { User, TimeLimit, Shutdown, BatteryPower };

    /// How often a run that must not go on on battery looks at the power source.
    static constexpr int powerPollMs() { return 5000; }

    PlanRun(Database& database, const RunPlaces& places, std::shared_ptr<const TWB::Info::Plan::Base> plan,
        QObject* parent = nullptr);
    ~PlanRun() override;

    QUuid planId() const;
    const TWB::Info::Plan::Base& plan() const { return *m_plan; }
    const RunResult& result() const { return m_result; }
    bool isFinished() const { return m_finished; }

    /// Starts the run; returns at once.
    void start(bool forceFull);
    /// Interrupts the process that runs now; the run ends as interrupted.
    void stop(StopReason reason);
    bool isStopping() const { return m_stop.has_value(); }
    /// From now on the run stops, as a user's stop does, when the machine goes on battery.
    void stopOnBattery();

Q_SIGNALS:
    /// A "plan progress" message, without the notification's envelope.
    void progressed(const QJsonObject& message);
    void finished();

protected:
    using Done = std::function<void(int exitCode, const QString& error)>;

    /// The first step; `forceFull` asks a backup to read every file again.
    virtual void begin(bool forceFull) = 0;
    /// What a stop does once the process that ran has ended; by default the run ends interrupted.
    virtual void onStopped();
    /// A stop while no process runs: a step of the run's own that should end early.
    virtual void interruptStep() { }
    /// A short step that must end even when the run is stopped; a stop lets it finish.
    virtual bool finishingStep() const { return false; }

    /// Runs one program. `done` comes on the event loop with its exit code (-1 when it crashed or
    /// did not start) and the end of its stderr, unless the run was stopped meanwhile, in which case
    /// onStopped() comes instead.
    void call(const EngineCall& call, EngineProcess::LineHandler onLine, Done done, const QByteArray& input = {});
    /// restic on a repository, past the stale locks of this machine. With `always`, `done` comes
    /// even when the run is stopping: for what must happen however the run ends.
    void callRestic(const BackendTarget& target, const QString& repository, const QString& password,
        const QStringList& arguments, EngineProcess::LineHandler onLine, Done done, bool always = false);
    /// Replaces the values of the target's obscured rclone variables by their obscured form, one
    /// "rclone obscure" each, then goes on with `next`.
    void obscureSecrets(BackendTarget& target, std::function<void()> next);
    /// Writes the target's key files into the run folder.
    bool writeFiles(const BackendTarget& target, QString* error);
    EngineSteps& steps() { return *m_steps; }

    /// Ends the run. A success with warnings becomes a warning.
    void complete(int state, const QString& message = QString());
    /// Something went wrong that does not fail the run.
    void warn(const QString& text);
    /// The state a run that ends now in `state` is recorded with: a success with warnings is a warning.
    int finalState(int state) const;
    void setStatus(int state);
    void setProgress(double percent, qint64 bytes, qint64 files, const QString& currentFile);
    void addOperation(
        int operation, const QString& path, qint64 size, const QDateTime& modified, const QString& message = QString());

    QString runFolder() const;
    QString stopMessage() const;
    /// The state a stopped run ends in: interrupted, or interrupted by battery power.
    int stoppedState() const;

    Database& m_database;
    RunPlaces m_places;
    std::shared_ptr<const TWB::Info::Plan::Base> m_plan;
    RunResult m_result;

private:
    void emitProgress();

    EngineSteps* m_steps = nullptr;
    QString m_folderError;
    QTimer m_progressTimer;
    QTimer m_limitTimer;
    QTimer m_powerTimer;
    QElapsedTimer m_clock;
    std::optional<StopReason> m_stop;
    QStringList m_warnings;
    bool m_finished = false;
    int m_status = 0;
    double m_percent = 0;
    qint64 m_bytes = 0;
    qint64 m_files = 0;
    QString m_currentFile;
    qint64 m_speedBytes = 0;
    qint64 m_speedAt = 0;
    qint64 m_speed = 0;
};

} // namespace TWB::Service
