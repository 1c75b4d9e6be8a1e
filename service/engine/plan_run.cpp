#include "service/engine/plan_run.h"

#include "platform/logging/twl_debug.h"
#include "platform/plan/base.h"
#include "service/engine/backend_mapping.h"
#include "service/engine/power_source.h"
#include "service/engine/run_state.h"

#include <QDir>
#include <QFile>

#include <limits>

namespace TWB::Service {

PlanRun::PlanRun(
    Database& database, const RunPlaces& places, std::shared_ptr<const TWB::Info::Plan::Base> plan, QObject* parent)
    : QObject(parent)
    , m_database(database)
    , m_places(places)
    , m_plan(std::move(plan))
{
    m_steps = new EngineSteps(m_places, m_places.runFolder(planId()), this);
    m_steps->setGate([this] {
        if (m_finished)
            return false;
        if (isStopping()) {
            onStopped();
            return false;
        }
        return true;
    });
    m_progressTimer.setInterval(1000);
    connect(&m_progressTimer, &QTimer::timeout, this, &PlanRun::emitProgress);
    m_limitTimer.setSingleShot(true);
    m_limitTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_limitTimer, &QTimer::timeout, this, [this] { stop(StopReason::TimeLimit); });
    m_powerTimer.setInterval(powerPollMs());
    connect(&m_powerTimer, &QTimer::timeout, this, [this] {
        if (PowerSource::onBattery()) {
            TWL::TwlDebug("TWB").info() << "The machine went on battery during the run of" << planId().toString();
            m_powerTimer.stop();
            stop(StopReason::BatteryPower);
        }
    });
}

PlanRun::~PlanRun() = default;

QUuid PlanRun::planId() const
{
    return m_plan->id();
}

QString PlanRun::runFolder() const
{
    return m_places.runFolder(planId());
}

void PlanRun::start(bool forceFull)
{
    m_clock.start();
    m_result.start = QDateTime::currentDateTimeUtc();
    // Lists and key files of a run hold paths and secrets: only the service's user may read them.
    m_steps->makeFolder(&m_folderError);
    const unsigned long long limit = m_plan->schedule().stopAfter();
    if (limit > 0)
        m_limitTimer.start(int(qMin<unsigned long long>(limit * 1000, std::numeric_limits<int>::max())));
    setStatus(RunState::Preparing);
    m_progressTimer.start();
    // The first step runs from the event loop, so that whoever started the run has its reply out first.
    QTimer::singleShot(0, this, [this, forceFull] {
        if (isStopping())
            onStopped();
        else if (!m_folderError.isEmpty())
            complete(RunState::Fail, m_folderError);
        else
            begin(forceFull);
    });
}

void PlanRun::stop(StopReason reason)
{
    if (m_finished || m_stop)
        return;
    m_stop = reason;
    TWL::TwlDebug("TWB").info() << "Stopping the run of plan" << planId().toString();
    setStatus(RunState::Stopping);
    emitProgress();
    if (m_steps->isRunning() && finishingStep() && reason != StopReason::Shutdown) {
        return;
    } else if (m_steps->isRunning()) {
        // Shutdown waits for no one: a service that stops kills its processes soon.
        m_steps->interrupt(reason == StopReason::Shutdown ? 3000 : 15000);
    } else {
        interruptStep();
    }
}

void PlanRun::stopOnBattery()
{
    if (!m_finished)
        m_powerTimer.start();
}

QString PlanRun::stopMessage() const
{
    if (!m_stop)
        return QString();
    switch (*m_stop) {
    case StopReason::User:
        return QStringLiteral("Stopped by the user");
    case StopReason::TimeLimit: {
        const unsigned long long limit = m_plan->schedule().stopAfter();
        return QStringLiteral("Stopped after the plan's time limit of %1:%2:%3")
            .arg(limit / 3600)
            .arg((limit % 3600) / 60, 2, 10, QLatin1Char('0'))
            .arg(limit % 60, 2, 10, QLatin1Char('0'));
    }
    case StopReason::Shutdown:
        return QStringLiteral("The service stopped during the run");
    case StopReason::BatteryPower:
        return QStringLiteral("Stopped because the computer switched to battery power");
    }
    return QString();
}

int PlanRun::stoppedState() const
{
    return m_stop == StopReason::BatteryPower ? RunState::InterruptedByBattery : RunState::Interrupted;
}

void PlanRun::onStopped()
{
    complete(stoppedState(), stopMessage());
}

void PlanRun::call(const EngineCall& call, EngineProcess::LineHandler onLine, Done done, const QByteArray& input)
{
    m_steps->run(
        call, std::move(onLine),
        [done](int exitCode, const QString& error, const QByteArray&) { done(exitCode, error); }, input);
}

void PlanRun::callRestic(const BackendTarget& target, const QString& repository, const QString& password,
    const QStringList& arguments, EngineProcess::LineHandler onLine, Done done, bool always)
{
    m_steps->runRestic(
        target, repository, password, arguments, std::move(onLine),
        [done](int exitCode, const QString& error, const QByteArray&) { done(exitCode, error); }, always);
}

void PlanRun::obscureSecrets(BackendTarget& target, std::function<void()> next)
{
    m_steps->obscureSecrets(target, [this, next](const QString& error) {
        if (!error.isEmpty())
            complete(RunState::Fail, error);
        else
            next();
    });
}

bool PlanRun::writeFiles(const BackendTarget& target, QString* error)
{
    return m_steps->writeFiles(target, error);
}

void PlanRun::warn(const QString& text)
{
    TWL::TwlDebug("TWB").warning() << "Run of" << planId().toString() << ":" << text;
    m_warnings << text;
}

int PlanRun::finalState(int state) const
{
    return state == RunState::Success && (!m_warnings.isEmpty() || m_result.failedCount > 0) ? RunState::Warning
                                                                                             : state;
}

void PlanRun::setStatus(int state)
{
    if (m_stop && state != RunState::Stopping)
        return;
    m_status = state;
}

void PlanRun::setProgress(double percent, qint64 bytes, qint64 files, const QString& currentFile)
{
    m_percent = qBound(0.0, percent, 100.0);
    m_bytes = bytes;
    m_files = files;
    if (!currentFile.isEmpty())
        m_currentFile = currentFile;
}

void PlanRun::addOperation(
    int operation, const QString& path, qint64 size, const QDateTime& modified, const QString& message)
{
    FileOperationRecord record;
    record.plan = planId();
    record.operation = operation;
    record.path = path;
    record.size = size;
    record.modified = modified;
    record.finish = QDateTime::currentDateTimeUtc();
    record.message = message;
    m_result.operations.append(record);
    if (operation == FileOperationRecord::Failed)
        ++m_result.failedCount;
}

void PlanRun::emitProgress()
{
    const qint64 now = m_clock.elapsed();
    if (now - m_speedAt >= 900) {
        m_speed = m_bytes > m_speedBytes ? (m_bytes - m_speedBytes) * 1000 / qMax<qint64>(1, now - m_speedAt) : 0;
        m_speedBytes = m_bytes;
        m_speedAt = now;
    }
    QJsonObject message;
    message.insert(QStringLiteral("plan_id"), planId().toString());
    message.insert(QStringLiteral("status"), RunState::name(m_status));
    message.insert(QStringLiteral("status_value"), m_status);
    message.insert(QStringLiteral("progress"), qRound(m_percent));
    message.insert(QStringLiteral("size"), double(m_bytes));
    message.insert(QStringLiteral("speed"), double(m_speed));
    message.insert(QStringLiteral("elapsed"), double(now / 1000));
    message.insert(QStringLiteral("current_file"), m_currentFile);
    message.insert(QStringLiteral("files_copied"), double(m_files));
    Q_EMIT progressed(message);
}

void PlanRun::complete(int state, const QString& message)
{
    if (m_finished)
        return;
    m_finished = true;
    m_progressTimer.stop();
    m_limitTimer.stop();
    m_powerTimer.stop();
    m_steps->interrupt(3000);
    state = finalState(state);
    QStringList parts;
    if (!message.isEmpty())
        parts << message;
    parts << m_warnings;
    m_result.state = state;
    m_result.message = parts.join(QStringLiteral("; "));
    m_result.duration = m_clock.isValid() ? m_clock.elapsed() / 1000 : 0;
    m_steps->removeFolder();
    TWL::TwlDebug("TWB").info() << "Run of plan" << planId().toString() << "ended in state" << state << "after"
                                << m_clock.elapsed() << "ms:" << m_result.message;
    Q_EMIT finished();
}

} // namespace TWB::Service
