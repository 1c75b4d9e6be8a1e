#include "app/service_launcher.h"

#include "platform/communication/connection_manager.h"
#include "platform/defines/path.h"
#include "platform/logging/twl_debug.h"

#include <QFileInfo>
#include <QElapsedTimer>
#include <QProcess>
#include <QTimer>

namespace TWB::Host {

using TWB::Common::Communication::ConnectionManager;

ServiceLauncher::ServiceLauncher(QObject* parent)
    : QObject(parent)
{ }

ServiceLauncher::~ServiceLauncher()
{
    if (m_child && m_child->state() != QProcess::NotRunning) {
        m_child->terminate();
        if (!m_child->waitForFinished(5000))
            m_child->kill();
    }
}

QString ServiceLauncher::serviceProgram() const
{
    return m_program.isEmpty() ? SHARED::defines::Path::bin_path() + QStringLiteral("twbd") : m_program;
}

void ServiceLauncher::start()
{
    auto connection = ConnectionManager::instance();
    if (!connection) {
        setState(State::Failed);
        return;
    }
    connect(connection, &ConnectionManager::localManagmentConnected, this, [this] { setState(State::Connected); });
    connect(
        connection, &ConnectionManager::localManagmentDisconnected, this, [this] { setState(State::Disconnected); });
    connect(connection, &ConnectionManager::connectionAttemptFailed, this, &ServiceLauncher::onAttemptFailed);

    // The first attempt is made when the channel is built, before anyone could listen to it.
    if (connection->isLocalManagmentConnected())
        setState(State::Connected);
    else if (connection->state() == ConnectionManager::State::Disconnected)
        onAttemptFailed();
}

void ServiceLauncher::onAttemptFailed()
{
    if (m_launched) {
        // Started once already; after that the channel keeps retrying on its own.
        if (m_state != State::Starting && m_state != State::Failed)
            setState(State::Disconnected);
        return;
    }
    m_launched = true;
    const QString program = serviceProgram();
    if (!QFileInfo(program).isExecutable()) {
        m_lastError = tr("The service program %1 is missing.").arg(program);
        TWL::TwlDebug("TWB").warning() << m_lastError;
        setState(State::Failed);
        return;
    }
    TWL::TwlDebug("TWB").info() << "No local service answers; starting" << program;
    bool started = false;
    if (m_attached) {
        m_child = new QProcess(this);
        m_child->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_child->setStandardOutputFile(QProcess::nullDevice());
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
    setState(State::Starting);
    // twbd returns once it listens, usually well before the channel's next retry: look more often
    // for a few seconds, then leave it to the channel's own back-off.
    auto* poll = new QTimer(this);
    poll->setInterval(100);
    QElapsedTimer* age = new QElapsedTimer;
    age->start();
    connect(poll, &QTimer::timeout, this, [poll, age] {
        auto connection = ConnectionManager::instance();
        if (!connection || connection->isLocalManagmentConnected() || age->elapsed() > 10000) {
            poll->stop();
            poll->deleteLater();
            delete age;
            return;
        }
        connection->connectNow();
    });
    poll->start();
}

void ServiceLauncher::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT stateChanged(state);
}

} // namespace TWB::Host
