#include "ctl_client.h"

#include "platform/communication/json_keys.h"
#include "platform/communication/json_line_socket.h"

#include <QEventLoop>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QTimer>
#include <QUuid>

#include <cstdio>

namespace TWB::Ctl {

namespace Keys = TWB::Common::Communication::JsonKeys;
using TWB::Common::Communication::JsonLineSocket;

CtlClient::CtlClient(QObject* parent)
    : QObject(parent)
    , m_socket(new QLocalSocket(this))
    , m_lines(new JsonLineSocket(m_socket, this))
{ }

CtlClient::~CtlClient() = default;

bool CtlClient::connectTo(const QString& path, QString* error)
{
    m_socket->connectToServer(path);
    if (m_socket->waitForConnected(5000))
        return true;
    *error = QStringLiteral("No service answers on %1: %2").arg(path, m_socket->errorString());
    return false;
}

bool CtlClient::call(
    const QString& command, const QJsonObject& params, int timeoutMs, QJsonObject* reply, QString* error)
{
    const QString id = QUuid::createUuid().toString();
    QJsonObject request;
    request.insert(Keys::Type, Keys::Request);
    request.insert(Keys::Id, id);
    request.insert(Keys::Command, command);
    request.insert(Keys::SessionId, QUuid::createUuid().toString());
    request.insert(Keys::ConnectionType, Keys::Local);
    request.insert(Keys::Params, params);

    QEventLoop loop;
    bool answered = false;
    connect(m_lines, &JsonLineSocket::messageReceived, &loop, [&](const QJsonObject& message) {
        if (message.value(Keys::Type).toString() == Keys::Reply && message.value(Keys::Id).toString() == id) {
            *reply = message;
            answered = true;
            loop.quit();
        }
    });
    connect(m_lines, &JsonLineSocket::protocolError, &loop, [&](const QString& reason) {
        *error = QStringLiteral("The service sent a broken line: %1").arg(reason);
        loop.quit();
    });
    connect(m_socket, &QLocalSocket::disconnected, &loop, [&] {
        *error = QStringLiteral("The service closed the connection before it replied");
        loop.quit();
    });
    QTimer::singleShot(timeoutMs, &loop, [&] {
        *error = QStringLiteral("No reply within %1 seconds").arg(timeoutMs / 1000);
        loop.quit();
    });
    if (!m_lines->send(request)) {
        *error = QStringLiteral("Cannot send the request");
        return false;
    }
    loop.exec();
    return answered;
}

int CtlClient::watch(int count)
{
    QEventLoop loop;
    int printed = 0;
    int code = 0;
    connect(m_lines, &JsonLineSocket::messageReceived, &loop, [&](const QJsonObject& message) {
        if (message.value(Keys::Type).toString() != Keys::Notification)
            return;
        const QByteArray line = QJsonDocument(message).toJson(QJsonDocument::Compact);
        std::fprintf(stdout, "%s\n", line.constData());
        std::fflush(stdout);
        if (count > 0 && ++printed >= count)
            loop.quit();
    });
    connect(m_socket, &QLocalSocket::disconnected, &loop, [&] {
        std::fprintf(stderr, "twbctl: the service closed the connection\n");
        code = 2;
        loop.quit();
    });
    std::fprintf(stderr, "twbctl: watching notifications on %s\n", qPrintable(m_socket->serverName()));
    std::fflush(stderr);
    loop.exec();
    return code;
}

} // namespace TWB::Ctl
