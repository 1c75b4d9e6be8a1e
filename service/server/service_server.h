#pragma once

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

class QLocalServer;
class QLocalSocket;

namespace TWB::Common::Communication {
class JsonLineSocket;
}

namespace TWB::Service {

class CommandRouter;

/// The service end of the local socket: accepts consoles of the same user, answers each request
/// through the router, and pushes notifications to every connected console.
class ServiceServer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(ServiceServer)
public:
    explicit ServiceServer(const CommandRouter& router, QObject* parent = nullptr);
    ~ServiceServer() override;

    /// How much one console may make the service hold. Replies wait in memory while a console does
    /// not read them: past `pausePending` bytes its further requests are left unread until it drains
    /// to half of that, and past `closePending` (reached by notifications, which are never held back)
    /// it is closed. Unfinished request lines of all consoles together may hold `partialTotal` bytes;
    /// past that, the console holding the most is closed first.
    struct Limits
    {
        qint64 pausePending = qint64(4) * 1024 * 1024;
        qint64 closePending = qint64(64) * 1024 * 1024;
        qint64 partialTotal = qint64(128) * 1024 * 1024;
    };

    /// Listens on `path`, creating its folder (mode 0700) when missing and making the socket 0600.
    /// Refuses a path whose entry is not a stale socket, a folder of another user, and a folder that
    /// others can write to, unless it is sticky and the socket's own folder is private. Refuses when
    /// another service answers on the path. Returns false with a reason in `error`.
    bool listen(const QString& path, QString* error);
    /// Stops listening, drops every client and removes the socket file.
    void close();

    QString socketPath() const { return m_path; }
    int clientCount() const { return m_clients.size(); }
    void setLimits(const Limits& limits) { m_limits = limits; }
    Limits limits() const { return m_limits; }

    /// Sends one notification of the given type to every connected console.
    void broadcast(const QString& type, const QJsonObject& data = QJsonObject());

Q_SIGNALS:
    void clientConnected();
    void clientRefused(uint uid);

private:
    void onNewConnection();
    void onMessage(TWB::Common::Communication::JsonLineSocket* client, const QJsonObject& message);
    void checkPending(TWB::Common::Communication::JsonLineSocket* client);
    void checkPartialTotal();
    void dropClient(TWB::Common::Communication::JsonLineSocket* client);

    const CommandRouter& m_router;
    QLocalServer* m_server = nullptr; // owned by parent-child
    QString m_path;
    Limits m_limits;
    QList<QPointer<TWB::Common::Communication::JsonLineSocket>> m_clients;
};

} // namespace TWB::Service
