#include "service/engine/engine_process.h"

#include <QTimer>

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace TWB::Service {

namespace {
// Enough of stderr to explain a failure; restic writes its reason last.
constexpr int stderrKept = 16 * 1024;
} // namespace

EngineProcess::EngineProcess(QObject* parent)
    : QProcess(parent)
{
    connect(this, &QProcess::readyReadStandardOutput, this, &EngineProcess::onStdout);
    connect(this, &QProcess::readyReadStandardError, this, &EngineProcess::onStderr);
    connect(this, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this, &EngineProcess::onFinished);
    connect(this, &QProcess::errorOccurred, this, &EngineProcess::onErrorOccurred);
}

EngineProcess::~EngineProcess()
{
    // Whoever listened is going away with this process; nobody hears of its end.
    blockSignals(true);
    if (state() != QProcess::NotRunning) {
        ::kill(pid_t(processId()), SIGINT);
        if (!waitForFinished(5000)) {
            kill();
            waitForFinished(1000);
        }
    }
}

void EngineProcess::setupChildProcess()
{
    // Runs in the child between fork and exec. When the service dies the kernel interrupts the
    // program as a terminal would: SIGINT is what makes restic remove its lock before it ends.
    ::prctl(PR_SET_PDEATHSIG, SIGINT);
    // The service may have died before the line above: then nobody would send it.
    if (::getppid() != pid_t(m_service))
        ::raise(SIGINT);
}

void EngineProcess::begin(const EngineCall& call, LineHandler onLine, const QByteArray& input)
{
    m_onLine = std::move(onLine);
    m_input = input;
    m_service = qint64(::getpid());
    setProcessEnvironment(call.environment);
    setProgram(call.program);
    setArguments(call.arguments);
    start(QIODevice::ReadWrite);
    if (!m_input.isEmpty())
        write(m_input);
    closeWriteChannel();
}

void EngineProcess::interrupt(int graceMs)
{
    if (state() == QProcess::NotRunning)
        return;
    ::kill(pid_t(processId()), SIGINT);
    QTimer::singleShot(graceMs, this, [this] {
        if (state() != QProcess::NotRunning)
            kill();
    });
}

QString EngineProcess::errorText() const
{
    const QList<QByteArray> lines = m_stderr.split('\n');
    QStringList kept;
    for (const QByteArray& raw : lines) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1String("Usage:")) || line.startsWith(QLatin1String("{")))
            continue;
        kept << line;
    }
    return kept.join(QLatin1Char(' '));
}

void EngineProcess::onStdout()
{
    const QByteArray data = readAllStandardOutput();
    if (!m_onLine) {
        m_output += data;
        return;
    }
    m_pending += data;
    int start = 0;
    for (int end = m_pending.indexOf('\n'); end >= 0; end = m_pending.indexOf('\n', start)) {
        const QByteArray line = m_pending.mid(start, end - start);
        start = end + 1;
        if (!line.trimmed().isEmpty())
            m_onLine(line);
    }
    m_pending.remove(0, start);
}

void EngineProcess::onStderr()
{
    m_errPending += readAllStandardError();
    int start = 0;
    for (int end = m_errPending.indexOf('\n'); end >= 0; end = m_errPending.indexOf('\n', start)) {
        const QByteArray line = m_errPending.mid(start, end - start);
        start = end + 1;
        // restic writes the errors of its JSON output to stderr, one object a line.
        if (m_onLine && line.trimmed().startsWith('{'))
            m_onLine(line);
        else
            m_stderr += line + '\n';
    }
    m_errPending.remove(0, start);
    if (m_stderr.size() > stderrKept)
        m_stderr = m_stderr.right(stderrKept);
}

void EngineProcess::onFinished(int exitCode, QProcess::ExitStatus status)
{
    if (m_ended)
        return;
    onStdout();
    onStderr();
    if (m_onLine && !m_pending.trimmed().isEmpty())
        m_onLine(m_pending);
    m_pending.clear();
    m_stderr += m_errPending;
    m_errPending.clear();
    m_ended = true;
    Q_EMIT ended(status == QProcess::NormalExit ? exitCode : -1);
}

void EngineProcess::onErrorOccurred(QProcess::ProcessError error)
{
    if (error != QProcess::FailedToStart || m_ended)
        return;
    m_stderr += QStringLiteral("Cannot start %1: %2").arg(program(), errorString()).toUtf8();
    m_ended = true;
    Q_EMIT ended(-1);
}

} // namespace TWB::Service
