#include "service/server/service_server.h"

#include "platform/communication/json_keys.h"
#include "platform/communication/json_line_socket.h"
#include "platform/logging/twl_debug.h"
#include "service/commands/command_router.h"
#include "service/server/peer_credentials.h"
#include "service/server/request_envelope.h"
#include "service/commands/responder.h"

#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>

#include <sys/socket.h>
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

namespace {

// Unread input a console connection may keep inside Qt; the rest waits in the kernel, and so
// with the console that sends it.
const qint64 socketReadBuffer = 1024 * 1024;

// What the kernel may hold of the replies to one console. With its default of about 200 KiB a list
// of 10,000 plans (4 MiB) crossed in twenty turns of both event loops, each a wait for the other
// process to be scheduled; the kernel caps the size at net.core.wmem_max.
const int socketSendBuffer = 4 * 1024 * 1024;

QByteArray native(const QString& path)
{
    return QFile::encodeName(path);
}

bool isPrivateFolder(const struct stat& info)
{
    return S_ISDIR(info.st_mode) && info.st_uid == ::getuid() && (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// Checks every folder from the root down to the socket's own: each must belong to the service's
// user or root, and none may be writable by others unless it is sticky and the socket's own
// folder, below it, is private.
bool folderIsSafe(const QString& folder, QString* reason)
{
    struct stat own
    { };
    if (::stat(native(folder).constData(), &own) != 0) {
        *reason = QStringLiteral("Cannot read the socket folder %1").arg(folder);
        return false;
    }
    if (!S_ISDIR(own.st_mode)) {
        *reason = QStringLiteral("The socket folder %1 is not a folder").arg(folder);
        return false;
    }
    if (own.st_uid != ::getuid()) {
        *reason = QStringLiteral("The socket folder %1 belongs to another user").arg(folder);
        return false;
    }
    const bool ownPrivate = isPrivateFolder(own);
    if (!ownPrivate) {
        *reason = QStringLiteral("The socket folder %1 can be written by other users; give the service a "
                                 "folder of its own")
                      .arg(folder);
        return false;
    }
    QDir above(folder);
    while (above.cdUp()) {
        const QString path = above.absolutePath();
        struct stat info
        { };
        if (::stat(native(path).constData(), &info) != 0) {
            *reason = QStringLiteral("Cannot read the folder %1 above the socket").arg(path);
            return false;
        }
        if (info.st_uid != ::getuid() && info.st_uid != 0) {
            *reason = QStringLiteral("The folder %1 above the socket belongs to another user").arg(path);
            return false;
        }
        const bool othersWrite = (info.st_mode & (S_IWGRP | S_IWOTH)) != 0;
        if (othersWrite && !((info.st_mode & S_ISVTX) && ownPrivate)) {
            *reason = QStringLiteral("The folder %1 above the socket can be written by other users and is not sticky")
                          .arg(path);
            return false;
        }
        if (above.isRoot())
            break;
    }
    return true;
}

} // namespace

bool ServiceServer::listen(const QString& path, QString* error)
{
    auto failWith = [error](const QString& text) {
        if (error)
            *error = text;
        return false;
    };
    const QString folder = QFileInfo(path).absolutePath();
    // Only a folder made here may be given the service's own mode; one that was there belongs to
    // whoever made it, be it /tmp.
    if (!QFileInfo::exists(folder)) {
        if (!QDir().mkpath(folder))
            return failWith(QStringLiteral("Cannot create the socket folder %1").arg(folder));
        if (::chmod(native(folder).constData(), 0700) != 0)
            return failWith(QStringLiteral("Cannot make the socket folder %1 private").arg(folder));
    }
    QString reason;
    if (!folderIsSafe(folder, &reason))
        return failWith(reason);

    struct stat entry
    { };
    if (::lstat(native(path).constData(), &entry) == 0) {
        if (!S_ISSOCK(entry.st_mode))
            return failWith(QStringLiteral("%1 exists and is not a socket; it is left as it is").arg(path));
        QLocalSocket probe;
        probe.connectToServer(path);
        if (probe.waitForConnected(500)) {
            probe.abort();
            return failWith(QStringLiteral("Another service already answers on %1").arg(path));
        }
        // A socket nobody answers on is what a killed service leaves behind.
        if (::unlink(native(path).constData()) != 0)
            return failWith(QStringLiteral("Cannot remove the stale socket %1").arg(path));
    }

    m_server = new QLocalServer(this);
    if (!m_server->listen(path)) {
        const QString why = m_server->errorString();
        delete m_server;
        m_server = nullptr;
        return failWith(QStringLiteral("Cannot listen on %1: %2").arg(path, why));
    }
    ::chmod(native(path).constData(), 0600);
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
        socket->setReadBufferSize(socketReadBuffer);
        const int sendBuffer = socketSendBuffer;
        ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_SNDBUF, &sendBuffer, sizeof sendBuffer);
        auto* client = new JsonLineSocket(socket, socket);
        m_clients.append(client);
        connect(client, &JsonLineSocket::wrote, this, [this, client] { checkPending(client); });
        connect(socket, &QLocalSocket::bytesWritten, this, [this, client] { checkPending(client); });
        // After the line reader's own slot: it has taken in what arrived.
        connect(socket, &QLocalSocket::readyRead, this, &ServiceServer::checkPartialTotal);
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

void ServiceServer::dropClient(JsonLineSocket* client)
{
    // Read nothing more from it, then let it go; the disconnect forgets it.
    client->setPaused(true);
    client->socket()->abort();
}

void ServiceServer::checkPending(JsonLineSocket* client)
{
    QLocalSocket* socket = client->socket();
    if (!socket || socket->state() != QLocalSocket::ConnectedState)
        return;
    const qint64 pending = socket->bytesToWrite();
    if (pending > m_limits.closePending) {
        TWL::TwlDebug("TWB").warning() << "Closed a console that does not read what it is sent:" << pending
                                       << "bytes were waiting for it, above the limit of" << m_limits.closePending;
        dropClient(client);
        return;
    }
    if (!client->isPaused() && pending > m_limits.pausePending) {
        TWL::TwlDebug("TWB").info() << "A console does not read its replies (" << pending
                                    << "bytes waiting); its requests wait until it does";
        client->setPaused(true);
    } else if (client->isPaused() && pending <= m_limits.pausePending / 2) {
        client->setPaused(false);
    }
}

void ServiceServer::checkPartialTotal()
{
    qint64 total = 0;
    for (const auto& client : qAsConst(m_clients)) {
        if (client && client->socket()->state() == QLocalSocket::ConnectedState)
            total += client->bufferedBytes();
    }
    while (total > m_limits.partialTotal) {
        JsonLineSocket* largest = nullptr;
        for (const auto& client : qAsConst(m_clients)) {
            if (client && client->socket()->state() == QLocalSocket::ConnectedState
                && (!largest || client->bufferedBytes() > largest->bufferedBytes()))
                largest = client;
        }
        if (!largest || largest->bufferedBytes() == 0)
            return;
        TWL::TwlDebug("TWB").warning() << "Closed the console holding the most unfinished request bytes ("
                                       << largest->bufferedBytes() << "): all consoles held" << total
                                       << "bytes, above the limit of" << m_limits.partialTotal;
        total -= largest->bufferedBytes();
        dropClient(largest);
    }
}

void ServiceServer::onMessage(JsonLineSocket* client, const QJsonObject& message)
{
    RequestEnvelope request;
    QString refusal;
    const bool valid = RequestEnvelope::read(message, &request, &refusal);
    const Responder respond(client, request.id, request.command);
    if (!valid) {
        respond.fail(refusal);
        return;
    }
    TWL::TwlDebug("TWB").debug() << "Request" << request.command << request.id;
    m_router.dispatch(request.command, request.params, respond);
}

void ServiceServer::broadcast(const QString& type, const QJsonObject& data)
{
    QJsonObject message;
    message.insert(Keys::Type, Keys::Notification);
    message.insert(Keys::Id, type);
    message.insert(Keys::Data, data);
    // A console closed for what it leaves unread leaves the list while we send.
    const auto clients = m_clients;
    for (const auto& client : clients) {
        if (client)
            client->send(message);
    }
}

} // namespace TWB::Service
