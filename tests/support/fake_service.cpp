#include "support/fake_service.h"

#include "platform/communication/connection_manager.h"
#include "platform/communication/json_keys.h"
#include "platform/communication/json_line_socket.h"
#include "support/test_environment.h"

#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace TWB::Test {

namespace Keys = TWB::Common::Communication::JsonKeys;
using TWB::Common::Communication::JsonLineSocket;

FakeReply FakeReply::ok(const QJsonObject& data)
{
    FakeReply r;
    r.kind = Kind::Ok;
    r.data = data;
    return r;
}

FakeReply FakeReply::fail(const QString& text, const QJsonObject& data)
{
    FakeReply r;
    r.kind = Kind::Fail;
    r.text = text;
    r.data = data;
    return r;
}

FakeReply FakeReply::raw(const QByteArray& bytes)
{
    FakeReply r;
    r.kind = Kind::Raw;
    r.bytes = bytes;
    return r;
}

FakeReply FakeReply::closeConnection()
{
    FakeReply r;
    r.kind = Kind::Close;
    return r;
}

FakeReply FakeReply::none()
{
    FakeReply r;
    r.kind = Kind::None;
    return r;
}

FakeReply FakeReply::after(int milliseconds) const
{
    FakeReply r = *this;
    r.delayMs = milliseconds;
    return r;
}

FakeService::FakeService(QObject* parent)
    : QObject(parent)
{
    qRegisterMetaType<TWB::Test::FakeRequest>();
}

FakeService::~FakeService()
{
    stop();
}

bool FakeService::listen(const QString& path)
{
    stop();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QLocalServer::removeServer(path);
    m_server = new QLocalServer(this);
    if (!m_server->listen(path)) {
        qWarning("FakeService cannot listen on %s: %s", qPrintable(path), qPrintable(m_server->errorString()));
        delete m_server;
        m_server = nullptr;
        return false;
    }
    m_path = path;
    connect(m_server, &QLocalServer::newConnection, this, &FakeService::onNewConnection);
    return true;
}

void FakeService::stop()
{
    closeClients();
    if (m_server) {
        m_server->close();
        delete m_server;
        m_server = nullptr;
        QLocalServer::removeServer(m_path);
    }
}

bool FakeService::isListening() const
{
    return m_server && m_server->isListening();
}

void FakeService::on(const QString& command, Handler handler)
{
    m_handlers.insert(command, std::move(handler));
}

void FakeService::on(const QString& command, const FakeReply& reply)
{
    m_handlers.insert(command, [reply](const FakeRequest&) { return reply; });
}

void FakeService::notify(const QString& type, const QJsonObject& data)
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

void FakeService::sendRaw(const QByteArray& bytes)
{
    for (const auto& client : qAsConst(m_clients)) {
        if (client)
            client->sendRaw(bytes);
    }
}

void FakeService::closeClients()
{
    const auto clients = m_clients;
    m_clients.clear();
    for (const auto& client : clients) {
        if (client) {
            client->socket()->disconnectFromServer();
            client->socket()->deleteLater();
        }
    }
}

int FakeService::clientCount() const
{
    int count = 0;
    for (const auto& client : m_clients)
        count += client ? 1 : 0;
    return count;
}

bool FakeService::serveConsole(const QString& path)
{
    using TWB::Common::Communication::ConnectionManager;
    if (!listen(path) || !ConnectionManager::instance())
        return false;
    TestEnvironment::speedUpChannel();
    return QTest::qWaitFor([] { return ConnectionManager::instance()->isLocalManagmentConnected(); })
        && waitForClient();
}

bool FakeService::waitForClient(int timeoutMs)
{
    if (clientCount() > 0)
        return true;
    QSignalSpy spy(this, &FakeService::clientConnected);
    return spy.wait(timeoutMs);
}

QList<FakeRequest> FakeService::requests(const QString& command) const
{
    QList<FakeRequest> result;
    for (const FakeRequest& r : m_requests) {
        if (r.command == command)
            result << r;
    }
    return result;
}

void FakeService::onNewConnection()
{
    while (QLocalSocket* socket = m_server->nextPendingConnection()) {
        auto* client = new JsonLineSocket(socket, socket);
        m_clients.append(client);
        connect(client, &JsonLineSocket::messageReceived, this,
            [this, client](const QJsonObject& message) { onMessage(client, message); });
        connect(socket, &QLocalSocket::disconnected, this, [this, client, socket] {
            m_clients.removeAll(QPointer<JsonLineSocket>(client));
            socket->deleteLater();
        });
        Q_EMIT clientConnected();
    }
}

void FakeService::onMessage(JsonLineSocket* client, const QJsonObject& message)
{
    FakeRequest request;
    request.command = message.value(Keys::Command).toString();
    request.id = message.value(Keys::Id).toString();
    request.params = message.value(Keys::Params).toObject();
    request.envelope = message;
    m_requests.append(request);
    Q_EMIT requestReceived(request);

    const auto handler = m_handlers.constFind(request.command);
    const FakeReply reply = handler != m_handlers.constEnd()
        ? handler.value()(request)
        : FakeReply::fail(QStringLiteral("Unknown command: %1").arg(request.command));
    const QPointer<JsonLineSocket> guarded(client);
    if (reply.delayMs > 0)
        QTimer::singleShot(reply.delayMs, this, [this, guarded, request, reply] { answer(guarded, request, reply); });
    else
        answer(guarded, request, reply);
}

void FakeService::answer(QPointer<JsonLineSocket> client, const FakeRequest& request, const FakeReply& reply)
{
    if (!client)
        return;
    switch (reply.kind) {
    case FakeReply::Kind::None:
        return;
    case FakeReply::Kind::Raw:
        client->sendRaw(reply.bytes);
        return;
    case FakeReply::Kind::Close:
        client->socket()->disconnectFromServer();
        return;
    case FakeReply::Kind::Ok:
    case FakeReply::Kind::Fail:
        break;
    }
    QJsonObject message;
    message.insert(Keys::Type, Keys::Reply);
    message.insert(Keys::Id, request.id);
    message.insert(Keys::Command, request.command);
    message.insert(Keys::Success, reply.kind == FakeReply::Kind::Ok);
    message.insert(Keys::ErrorString, reply.text);
    message.insert(Keys::Data, reply.data);
    client->send(message);
}

} // namespace TWB::Test
