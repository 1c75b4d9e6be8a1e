#include "app/service_launcher.h"

#include "platform/communication/connection_manager.h"
#include "platform/defines/path.h"
#include "platform/logging/twl_debug.h"

#include <QFileInfo>
#include <QProcess>

namespace TWB::Host {

using TWB::Common::Communication::ConnectionManager;

namespace {
// twbd returns once it listens; one that has not listened after this long is taken as failed.
const int startLimitMs = 10000;
const int pollMs = 100;
} // namespace

ServiceLauncher::ServiceLauncher(QObject* parent)
    : QObject(parent)
{
    m_restart.setSingleShot(true);
    m_startLimit.setSingleShot(true);
    m_stable.setSingleShot(true);
    m_poll.setInterval(pollMs);
    connect(&m_restart, &QTimer::timeout, this, &ServiceLauncher::launch);
    connect(&m_startLimit, &QTimer::timeout, this, [this] {
        TWL::TwlDebug("TWB").warning() << "The local service did not answer within" << startLimitMs
                                       << "ms of its start";
        endStarting();
    });
    connect(&m_stable, &QTimer::timeout, this, [this] { m_nextDelayMs = m_firstDelayMs; });
    connect(&m_poll, &QTimer::timeout, this, [] {
        if (auto connection = ConnectionManager::instance())
            connection->connectNow();
    });
}

ServiceLauncher::~ServiceLauncher()
{
    if (m_child && m_child->state() != QProcess::NotRunning) {
        m_child->disconnect(this);
        m_child->terminate();
        if (!m_child->waitForFinished(5000))
            m_child->kill();
    }
}

QString ServiceLauncher::serviceProgram() const
{
    return m_program.isEmpty() ? SHARED::defines::Path::bin_path() + QStringLiteral("twbd") : m_program;
}

void ServiceLauncher::setRestartDelays(int firstMs, int maxMs, int stableMs)
{
    m_firstDelayMs = qMax(0, firstMs);
    m_maxDelayMs = qMax(m_firstDelayMs, maxMs);
    m_stableMs = qMax(1, stableMs);
    m_nextDelayMs = m_firstDelayMs;
}

void ServiceLauncher::start()
{
    auto connection = ConnectionManager::instance();
    if (!connection) {
        setState(State::Failed);
        return;
    }
    connect(connection, &ConnectionManager::localManagmentConnected, this, &ServiceLauncher::onConnected);
    connect(connection, &ConnectionManager::localManagmentDisconnected, this, [this] {
        m_stable.stop();
        if (m_state != State::Starting)
            setState(State::Disconnected);
    });
    connect(connection, &ConnectionManager::connectionAttemptFailed, this, &ServiceLauncher::onAttemptFailed);

    // The first attempt is made when the channel is built, before anyone could listen to it.
    if (connection->isLocalManagmentConnected())
        onConnected();
    else if (connection->state() == ConnectionManager::State::Disconnected)
        onAttemptFailed();
}

void ServiceLauncher::connectNow()
{
    if (m_state == State::Connected)
        return;
    if (m_state != State::Starting) {
        // The user asked: no back-off this time.
        m_restart.stop();
        launch();
        return;
    }
    if (auto connection = ConnectionManager::instance())
        connection->connectNow();
}

void ServiceLauncher::onAttemptFailed()
{
    // A service just started answers soon: the poll keeps looking until it does or the limit passes.
    if (m_state == State::Starting || m_restart.isActive())
        return;
    if (m_starts == 0) {
        launch();
        return;
    }
    const int delay = m_nextDelayMs;
    m_nextDelayMs = qMin(m_nextDelayMs * 2, m_maxDelayMs);
    TWL::TwlDebug("TWB").warning() << "The local service is gone; starting it again in" << delay << "ms (start"
                                   << m_starts + 1 << ")";
    if (m_state != State::Failed)
        setState(State::Disconnected);
    m_restart.start(delay);
}

void ServiceLauncher::onConnected()
{
    m_poll.stop();
    m_startLimit.stop();
    m_restart.stop();
    m_stable.start(m_stableMs);
    setState(State::Connected);
}

void ServiceLauncher::launch()
{
    m_stable.stop();
    ++m_starts;
    const QString program = serviceProgram();
    if (!QFileInfo(program).isExecutable()) {
        m_lastError = tr("The service program %1 is missing.").arg(program);
        TWL::TwlDebug("TWB").warning() << m_lastError;
        setState(State::Failed);
        return;
    }
    TWL::TwlDebug("TWB").info() << "No local service answers; starting" << program << "(start" << m_starts << ")";
    bool started = false;
    if (m_attached) {
        if (m_child) {
            m_child->disconnect(this);
            m_child->deleteLater();
        }
        m_child = new QProcess(this);
        m_child->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_child->setStandardOutputFile(QProcess::nullDevice());
        QProcess* child = m_child;
        connect(child, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this, child](int code, QProcess::ExitStatus status) {
                TWL::TwlDebug("TWB").warning()
                    << "The local service ended" << (status == QProcess::CrashExit ? "by a signal" : "with code")
                    << (status == QProcess::CrashExit ? QString() : QString::number(code));
                if (child == m_child && m_state == State::Starting)
                    endStarting();
            });
        m_child->start(program, QStringList(m_arguments) << QStringLiteral("--foreground"));
        started = m_child->waitForStarted(5000);
    } else {
        started = QProcess::startDetached(program, m_arguments);
    }
    if (!started) {
        m_lastError = tr("The service program %1 could not be started.").arg(program);
        TWL::TwlDebug("TWB").warning() << m_lastError;
        setState(State::Failed);
        return;
    }
    m_lastError.clear();
    setState(State::Starting);
    m_startLimit.start(startLimitMs);
    m_poll.start();
}

void ServiceLauncher::endStarting()
{
    m_poll.stop();
    m_startLimit.stop();
    if (m_state != State::Starting)
        return;
    setState(State::Disconnected);
    // The next failed attempt schedules the next start, after the back-off.
    if (auto connection = ConnectionManager::instance())
        connection->connectNow();
}

void ServiceLauncher::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT stateChanged(state);
}

} // namespace TWB::Host
