#include "service/engine/plan_run.h"

#include "platform/logging/twl_debug.h"
#include "platform/plan/base.h"
#include "service/engine/backend_mapping.h"
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
    m_progressTimer.setInterval(1000);
    connect(&m_progressTimer, &QTimer::timeout, this, &PlanRun::emitProgress);
    m_limitTimer.setSingleShot(true);
    m_limitTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_limitTimer, &QTimer::timeout, this, [this] { stop(StopReason::TimeLimit); });
}

PlanRun::~PlanRun()
{
    QDir(runFolder()).removeRecursively();
}

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
    QDir().mkpath(m_places.cacheDir());
    QFile config(m_places.rcloneConfig());
    if (!config.exists() && config.open(QIODevice::WriteOnly))
        config.close();
    // Lists and key files of a run hold paths and secrets: only the service's user may read them.
    QDir(runFolder()).removeRecursively();
    QDir().mkpath(runFolder());
    QFile::setPermissions(runFolder(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    const unsigned long long limit = m_plan->schedule().stopAfter();
    if (limit > 0)
        m_limitTimer.start(int(qMin<unsigned long long>(limit * 1000, std::numeric_limits<int>::max())));
    setStatus(RunState::Preparing);
    m_progressTimer.start();
    // The first step runs from the event loop, so that whoever started the run has its reply out first.
    QTimer::singleShot(0, this, [this, forceFull] {
        if (isStopping())
            onStopped();
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
    if (m_process) {
        // Shutdown waits for no one: a service that stops kills its processes soon.
        m_process->interrupt(reason == StopReason::Shutdown ? 3000 : 15000);
    } else {
        interruptStep();
    }
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
    }
    return QString();
}

void PlanRun::onStopped()
{
    complete(RunState::Interrupted, stopMessage());
}

void PlanRun::call(const EngineCall& call, EngineProcess::LineHandler onLine, Done done, const QByteArray& input)
{
    auto* process = new EngineProcess(this);
    m_process = process;
    QElapsedTimer clock;
    clock.start();
    connect(process, &EngineProcess::ended, this, [this, process, done, clock](int exitCode) {
        TWL::TwlDebug("TWB").debug() << "Run of" << planId().toString() << ":" << process->program() << "ended with"
                                     << exitCode << "after" << clock.elapsed() << "ms";
        const QString error = process->errorText();
        process->deleteLater();
        if (m_process == process)
            m_process = nullptr;
        if (m_finished)
            return;
        if (isStopping()) {
            onStopped();
            return;
        }
        done(exitCode, error);
    });
    TWL::TwlDebug("TWB").debug() << "Run of" << planId().toString() << "starts" << call.program
                                 << call.arguments.join(QLatin1Char(' '));
    process->begin(call, std::move(onLine), input);
}

void PlanRun::obscureSecrets(BackendTarget& target, std::function<void()> next)
{
    if (target.obscured.isEmpty()) {
        next();
        return;
    }
    const QString key = target.obscured.takeFirst();
    EngineCall obscure;
    obscure.program = EngineCall::rcloneProgram();
    obscure.environment = EngineCall::cleanEnvironment();
    // The secret goes in on stdin: "-" makes rclone read it from there.
    obscure.arguments = QStringList {QStringLiteral("obscure"), QStringLiteral("-")};
    auto* process = new EngineProcess(this);
    m_process = process;
    connect(process, &EngineProcess::ended, this, [this, process, &target, key, next](int exitCode) {
        const QString error = process->errorText();
        const QString obscured = QString::fromUtf8(process->output()).trimmed();
        process->deleteLater();
        if (m_finished)
            return;
        if (isStopping()) {
            onStopped();
            return;
        }
        if (exitCode != 0 || obscured.isEmpty()) {
            complete(RunState::Fail, QStringLiteral("rclone cannot prepare the storage's password: %1").arg(error));
            return;
        }
        target.rcloneEnvironment.insert(key, obscured);
        obscureSecrets(target, next);
    });
    process->begin(obscure, nullptr, target.rcloneEnvironment.value(key).toUtf8());
}

bool PlanRun::writeFiles(const BackendTarget& target, QString* error)
{
    for (auto it = target.files.constBegin(); it != target.files.constEnd(); ++it) {
        QFile file(runFolder() + QLatin1Char('/') + it.key());
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)
            || !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner)
            || file.write(it.value()) != it.value().size()) {
            *error = QStringLiteral("Cannot write %1: %2").arg(file.fileName(), file.errorString());
            return false;
        }
    }
    return true;
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
    if (m_process)
        m_process->interrupt(3000);
    state = finalState(state);
    QStringList parts;
    if (!message.isEmpty())
        parts << message;
    parts << m_warnings;
    m_result.state = state;
    m_result.message = parts.join(QStringLiteral("; "));
    m_result.duration = m_clock.isValid() ? m_clock.elapsed() / 1000 : 0;
    QDir(runFolder()).removeRecursively();
    TWL::TwlDebug("TWB").info() << "Run of plan" << planId().toString() << "ended in state" << state << "after"
                                << m_clock.elapsed() << "ms:" << m_result.message;
    Q_EMIT finished();
}

} // namespace TWB::Service
