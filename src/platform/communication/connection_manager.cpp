#include "platform/communication/connection_manager.h"

#include "platform/communication/icommand.h"
#include "platform/communication/json_keys.h"
#include "platform/communication/json_line_socket.h"
#include "platform/communication/notification_center.h"
#include "platform/defines/path.h"
#include "platform/logging/twl_debug.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QLocalSocket>

namespace TWB::Common::Communication {

QPointer<ConnectionManager> ConnectionManager::instance()
{
    static QPointer<ConnectionManager> manager(new ConnectionManager);
    return manager;
}

ConnectionManager::ConnectionManager()
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &ConnectionManager::attempt);
    if (auto* app = QCoreApplication::instance())
        connect(app, &QCoreApplication::aboutToQuit, this, &QObject::deleteLater);
    attempt();
}

ConnectionManager::~ConnectionManager()
{
    // The console is going: what it still waits for ends unanswered, and that is nobody's fault.
    for (const QPointer<ICommand>& command : qAsConst(m_inFlight)) {
        if (command)
            command->abandoned = true;
    }
    for (const QPointer<ICommand>& command : qAsConst(m_queued)) {
        if (command)
            command->abandoned = true;
    }
    failAll();
    dropSocket();
}

QString ConnectionManager::socketPath() const
{
    return SHARED::defines::Path::serviceSocket();
}

void ConnectionManager::connectNow()
{
    if (m_state != State::Disconnected)
        return;
    m_retry.stop();
    attempt();
}

void ConnectionManager::setRetryIntervals(int firstMs, int maxMs)
{
    m_firstRetryMs = qMax(1, firstMs);
    m_maxRetryMs = qMax(m_firstRetryMs, maxMs);
    m_nextRetryMs = m_firstRetryMs;
    if (m_retry.isActive())
        m_retry.start(m_nextRetryMs);
}

void ConnectionManager::attempt()
{
    dropSocket();
    m_state = State::Connecting;
    m_socket = new QLocalSocket(this);
    m_lines = new JsonLineSocket(m_socket, this);
    connect(m_socket, &QLocalSocket::connected, this, &ConnectionManager::onConnected);
    connect(m_socket, &QLocalSocket::disconnected, this, &ConnectionManager::onDisconnected);
    connect(m_socket, &QLocalSocket::errorOccurred, this, [this](QLocalSocket::LocalSocketError error) {
        if (m_state == State::Connecting) {
            QString reason;
            switch (error) {
            case QLocalSocket::ServerNotFoundError:
                reason = QStringLiteral("no service socket at %1").arg(socketPath());
                break;
            case QLocalSocket::ConnectionRefusedError:
                reason = QStringLiteral("the service socket %1 refuses connections").arg(socketPath());
                break;
            case QLocalSocket::SocketAccessError:
                reason = QStringLiteral("no permission to use %1").arg(socketPath());
                break;
            default:
                reason = m_socket ? m_socket->errorString() : QString();
                break;
            }
            TWL::TwlDebug("TWB").debug() << "No local service:" << reason;
            m_state = State::Disconnected;
            // Not from inside the socket's own signal: the socket is replaced on the next attempt.
            QMetaObject::invokeMethod(this, &ConnectionManager::scheduleRetry, Qt::QueuedConnection);
            Q_EMIT connectionAttemptFailed(reason);
        } else if (m_state == State::Connected && m_socket && m_socket->state() != QLocalSocket::ConnectedState) {
            onDisconnected();
        }
    });
    connect(m_lines, &JsonLineSocket::messageReceived, this, &ConnectionManager::onMessage);
    connect(m_lines, &JsonLineSocket::protocolError, this, &ConnectionManager::onProtocolError);
    m_socket->connectToServer(socketPath());
}

void ConnectionManager::onConnected()
{
    if (m_state == State::Connected)
        return;
    m_state = State::Connected;
    m_nextRetryMs = m_firstRetryMs;
    TWL::TwlDebug("TWB").info() << "Connected to the local service at" << socketPath();
    Q_EMIT localManagmentConnected();
    sendQueued();
}

void ConnectionManager::onDisconnected()
{
    if (m_state != State::Connected)
        return;
    m_state = State::Disconnected;
    TWL::TwlDebug("TWB").warning() << "Lost the local service at" << socketPath();
    // Commands on the lost connection can never be answered; queued ones wait for the next.
    const auto inFlight = m_inFlight;
    m_inFlight.clear();
    for (const QPointer<ICommand>& command : inFlight) {
        if (command)
            command->onExchangeFailed();
    }
    Q_EMIT localManagmentDisconnected();
    QMetaObject::invokeMethod(this, &ConnectionManager::scheduleRetry, Qt::QueuedConnection);
}

void ConnectionManager::scheduleRetry()
{
    if (m_state != State::Disconnected || m_retry.isActive())
        return;
    m_retry.start(m_nextRetryMs);
    m_nextRetryMs = qMin(m_nextRetryMs * 2, m_maxRetryMs);
}

void ConnectionManager::onMessage(const QJsonObject& message)
{
    const QString type = message.value(JsonKeys::Type).toString();
    if (type == JsonKeys::Reply) {
        const QString id = message.value(JsonKeys::Id).toString();
        const QPointer<ICommand> command = m_inFlight.take(id);
        if (!command) {
            TWL::TwlDebug("TWB").debug() << "Reply for no command in flight:" << id;
            return;
        }
        command->onReply(message);
    } else if (type == JsonKeys::Notification) {
        if (auto center = NotificationCenter::instance())
            center->deliver(QJsonDocument(message));
    } else {
        TWL::TwlDebug("TWB").debug() << "Message of unknown type from the service:" << type;
    }
}

void ConnectionManager::onProtocolError(const QString& reason)
{
    TWL::TwlDebug("TWB").warning() << "Protocol error from the local service:" << reason;
    // JsonLineSocket aborts the socket, and the abort reports the loss.
    if (m_state == State::Connected && (!m_socket || m_socket->state() != QLocalSocket::ConnectedState))
        onDisconnected();
}

void ConnectionManager::submit(ICommand* command)
{
    if (m_state == State::Connected && m_lines->send(command->request().object())) {
        m_inFlight.insert(command->id(), command);
        return;
    }
    m_queued.append(command);
    const QPointer<ICommand> guarded(command);
    QTimer::singleShot(m_queueTimeoutMs, command, [this, guarded] {
        if (!guarded || !m_queued.removeOne(guarded))
            return;
        TWL::TwlDebug("TWB").warning() << "No local service for command" << guarded->commandName;
        guarded->onExchangeFailed();
    });
    if (m_state == State::Disconnected && !m_retry.isActive())
        scheduleRetry();
}

void ConnectionManager::forget(ICommand* command)
{
    m_inFlight.remove(command->id());
    m_queued.removeAll(QPointer<ICommand>(command));
    m_queued.removeAll(QPointer<ICommand>());
}

void ConnectionManager::sendQueued()
{
    const auto queued = m_queued;
    m_queued.clear();
    for (const QPointer<ICommand>& command : queued) {
        if (!command)
            continue;
        if (m_state == State::Connected && m_lines->send(command->request().object()))
            m_inFlight.insert(command->id(), command);
        else
            command->failLater();
    }
}

void ConnectionManager::failAll()
{
    const auto inFlight = m_inFlight;
    const auto queued = m_queued;
    m_inFlight.clear();
    m_queued.clear();
    for (const QPointer<ICommand>& command : inFlight) {
        if (command)
            command->onExchangeFailed();
    }
    for (const QPointer<ICommand>& command : queued) {
        if (command)
            command->onExchangeFailed();
    }
}

void ConnectionManager::dropSocket()
{
    if (m_lines) {
        m_lines->disconnect(this);
        m_lines->deleteLater();
        m_lines = nullptr;
    }
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->abort();
        m_socket->deleteLater();
        m_socket = nullptr;
    }
}

} // namespace TWB::Common::Communication
