#pragma once

#include "platform/twbplatform_export.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

class QLocalSocket;

namespace TWB::Common::Communication {

class ICommand;
class JsonLineSocket;

/// The console's one connection to the local service. Connects on first use, reconnects
/// every second after a loss, backing off to five seconds, and signals each change of state.
/// It carries the commands of ICommand and hands notifications to NotificationCenter.
class TWBPLATFORM_EXPORT ConnectionManager final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(ConnectionManager)
public:
    enum class State { Disconnected, Connecting, Connected };
    Q_ENUM(State)

    static QPointer<ConnectionManager> instance();
    ~ConnectionManager() override;

    bool isLocalManagmentConnected() const { return m_state == State::Connected; }
    State state() const { return m_state; }
    /// The socket of the present or the next connection attempt.
    QString socketPath() const;

    /// Drops any wait and tries to connect at once, unless connected or connecting.
    void connectNow();
    /// Waits between attempts: the first after a loss, doubled each time up to the maximum.
    void setRetryIntervals(int firstMs, int maxMs);
    /// How long a command sent while disconnected waits for a connection before it fails.
    void setQueueTimeout(int milliseconds) { m_queueTimeoutMs = milliseconds; }
    int queueTimeout() const { return m_queueTimeoutMs; }

    /// Commands sent and not yet answered, queued ones included.
    int commandsInFlight() const { return m_inFlight.size() + m_queued.size(); }

Q_SIGNALS:
    void localManagmentConnected();
    void localManagmentDisconnected();
    /// An attempt found no service; the host may start one.
    void connectionAttemptFailed(const QString& reason);

private:
    friend class ICommand;

    ConnectionManager();

    void submit(ICommand* command);
    void forget(ICommand* command);

    void attempt();
    void onConnected();
    void onDisconnected();
    void onMessage(const QJsonObject& message);
    void onProtocolError(const QString& reason);
    void scheduleRetry();
    void failAll();
    void sendQueued();
    void dropSocket();

    QLocalSocket* m_socket = nullptr; // owned, one per connection
    JsonLineSocket* m_lines = nullptr; // owned
    State m_state = State::Disconnected;
    QTimer m_retry;
    int m_firstRetryMs = 1000;
    int m_maxRetryMs = 5000;
    int m_nextRetryMs = 1000;
    int m_queueTimeoutMs = 10 * 1000;
    QHash<QString, QPointer<ICommand>> m_inFlight;
    QList<QPointer<ICommand>> m_queued;
};

} // namespace TWB::Common::Communication
