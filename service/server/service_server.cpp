#include "service/server/service_server.h"

#include "platform/communication/json_keys.h"
#include "platform/communication/json_line_socket.h"
#include "platform/logging/twl_debug.h"
#include "service/commands/command_router.h"
#include "service/server/peer_credentials.h"
#include "service/commands/responder.h"

#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>

#include <sys/stat.h>
#include <unistd.h>

namespace TWB::Service {

namespace Keys = TWB::Common::Communication::JsonKeys;
using TWB::Common::Communication::JsonLineSocket;

ServiceServer::ServiceServer(const CommandRouter& router, QObject* parent)
    : QObject(parent)
    , m_router(router)
{ }

ServiceServer::~ServiceServer()
{
    close();
}

bool ServiceServer::listen(const QString& path, QString* error)
{
    auto failWith = [error](const QString& text) {
        if (error)
            *error = text;
        return false;
    };
    const QString folder = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(folder))
        return failWith(QStringLiteral("Cannot create the socket folder %1").arg(folder));
    struct stat info
    { };
    if (::stat(QFile::encodeName(folder).constData(), &info) != 0)
        return failWith(QStringLiteral("Cannot read the socket folder %1").arg(folder));
    if (info.st_uid != ::getuid())
        return failWith(QStringLiteral("The socket folder %1 belongs to another user").arg(folder));
    ::chmod(QFile::encodeName(folder).constData(), 0700);

    {
        QLocalSocket probe;
        probe.connectToServer(path);
        if (probe.waitForConnected(500)) {
            probe.abort();
            return failWith(QStringLiteral("Another service already answers on %1").arg(path));
        }
    }
    QLocalServer::removeServer(path);

    m_server = new QLocalServer(this);
    if (!m_server->listen(path)) {
        const QString reason = m_server->errorString();
        delete m_server;
        m_server = nullptr;
        return failWith(QStringLiteral("Cannot listen on %1: %2").arg(path, reason));
    }
    ::chmod(QFile::encodeName(path).constData(), 0600);
    m_path = path;
    connect(m_server, &QLocalServer::newConnection, this, &ServiceServer::onNewConnection);
    return true;
}

void ServiceServer::close()
{
    const auto clients = m_clients;
    m_clients.clear();
    for (const auto& client : clients) {
        if (client) {
            client->socket()->abort();
            client->socket()->deleteLater();
        }
    }
    if (m_server) {
        m_server->close();
        delete m_server;
        m_server = nullptr;
        QFile::remove(m_path);
    }
}

void ServiceServer::onNewConnection()
{
    while (QLocalSocket* socket = m_server->nextPendingConnection()) {
        const std::optional<uid_t> uid = peerUid(int(socket->socketDescriptor()));
        if (!uid || !isPeerAllowed(*uid, ::getuid())) {
            TWL::TwlDebug("TWB").warning() << "Refused a console of uid" << (uid ? int(*uid) : -1);
            Q_EMIT clientRefused(uid ? uint(*uid) : uint(-1));
            socket->abort();
            socket->deleteLater();
            continue;
        }
        auto* client = new JsonLineSocket(socket, socket);
        m_clients.append(client);
        connect(client, &JsonLineSocket::messageReceived, this,
            [this, client](const QJsonObject& message) { onMessage(client, message); });
        connect(client, &JsonLineSocket::protocolError, this, [](const QString& reason) {
            TWL::TwlDebug("TWB").warning() << "Closed a console after a protocol error:" << reason;
        });
        connect(socket, &QLocalSocket::disconnected, this, [this, socket, client] {
            m_clients.removeAll(QPointer<JsonLineSocket>(client));
            socket->deleteLater();
        });
        TWL::TwlDebug("TWB").debug() << "Console connected, uid" << int(*uid);
        Q_EMIT clientConnected();
    }
}

void ServiceServer::onMessage(JsonLineSocket* client, const QJsonObject& message)
{
    const QString id = message.value(Keys::Id).toString();
    const QString command = message.value(Keys::Command).toString();
    const Responder respond(client, id, command);
    if (message.value(Keys::Type).toString() != Keys::Request) {
        respond.fail(QStringLiteral("Message type \"%1\" is not a request").arg(message.value(Keys::Type).toString()));
        return;
    }
    if (id.isEmpty()) {
        respond.fail(QStringLiteral("Request has no id"));
        return;
    }
    if (command.isEmpty()) {
        respond.fail(QStringLiteral("Request has no command name"));
        return;
    }
    const QJsonValue params = message.value(Keys::Params);
    if (!params.isUndefined() && !params.isObject()) {
        respond.fail(QStringLiteral("Parameter \"params\" of %1 is not an object").arg(command));
        return;
    }
    TWL::TwlDebug("TWB").debug() << "Request" << command << id;
    m_router.dispatch(command, params.toObject(), respond);
}

void ServiceServer::broadcast(const QString& type, const QJsonObject& data)
{
    QJsonObject message;
    message.insert(Keys::Type, Keys::Notification);
    message.insert(Keys::Id, type);
    message.insert(Keys::Data, data);
    for (const auto& client : qAsConst(m_clients)) {
        if (client)
            client->send(message);
    }
}

} // namespace TWB::Service
