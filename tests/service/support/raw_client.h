#pragma once

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>

class QLocalSocket;

namespace TWB::Common::Communication {
class JsonLineSocket;
}

namespace TWB::Test {

/// A reply as a test reads it.
struct ServiceReply
{
    bool received = false;
    bool success = false;
    QString error;
    QJsonObject data;
};

/// A second console on a connection of its own, speaking raw protocol lines: sends requests,
/// keeps replies by id and every notification in arrival order.
class RawClient final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(RawClient)
public:
    explicit RawClient(QObject* parent = nullptr);
    ~RawClient() override;

    bool connectTo(const QString& path, int timeoutMs = 5000);
    bool isConnected() const;
    /// Sends one request and returns its id at once.
    QString send(const QString& command, const QJsonObject& params = QJsonObject());
    /// Sends one request and waits for its reply.
    ServiceReply call(const QString& command, const QJsonObject& params = QJsonObject(), int timeoutMs = 10000);
    /// The reply to a request, once it came.
    ServiceReply reply(const QString& id) const;
    bool waitForReply(const QString& id, int timeoutMs = 10000);
    /// Writes bytes as they are.
    void sendRaw(const QByteArray& bytes);
    void disconnectFromService();

    QList<QJsonObject> notifications() const { return m_notifications; }
    /// Waits until a notification of the type arrived, for the id when one is given.
    bool waitForNotification(const QString& type, const QString& id = QString(), int timeoutMs = 5000);
    /// How many notifications of the type arrived, for the id when one is given.
    int countNotifications(const QString& type, const QString& id = QString()) const;
    void clearNotifications() { m_notifications.clear(); }

Q_SIGNALS:
    void replied(const QString& id);
    void notified(const QJsonObject& notification);
    void disconnected();

private:
    QLocalSocket* m_socket = nullptr; // owned by parent-child
    TWB::Common::Communication::JsonLineSocket* m_lines = nullptr; // owned by parent-child
    QHash<QString, ServiceReply> m_replies;
    QList<QJsonObject> m_notifications;
};

} // namespace TWB::Test
