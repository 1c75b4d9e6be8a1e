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

    /// Creates the socket's folder (mode 0700) and the socket (mode 0600) and listens.
    /// Refuses when another service answers on the path. Returns false with a reason in `error`.
    bool listen(const QString& path, QString* error);
    /// Stops listening, drops every client and removes the socket file.
    void close();

    QString socketPath() const { return m_path; }
    int clientCount() const { return m_clients.size(); }

    /// Sends one notification of the given type to every connected console.
    void broadcast(const QString& type, const QJsonObject& data = QJsonObject());

Q_SIGNALS:
    void clientConnected();
    void clientRefused(uint uid);

private:
    void onNewConnection();
    void onMessage(TWB::Common::Communication::JsonLineSocket* client, const QJsonObject& message);

    const CommandRouter& m_router;
    QLocalServer* m_server = nullptr; // owned by parent-child
    QString m_path;
    QList<QPointer<TWB::Common::Communication::JsonLineSocket>> m_clients;
};

} // namespace TWB::Service
