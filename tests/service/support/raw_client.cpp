#include "raw_client.h"

#include "platform/communication/json_keys.h"
#include "platform/communication/json_line_socket.h"

#include <QEventLoop>
#include <QLocalSocket>
#include <QTimer>
#include <QSignalSpy>
#include <QTest>
#include <QUuid>

namespace TWB::Test {

namespace Keys = TWB::Common::Communication::JsonKeys;
using TWB::Common::Communication::JsonLineSocket;

RawClient::RawClient(QObject* parent)
    : QObject(parent)
    , m_socket(new QLocalSocket(this))
    , m_lines(new JsonLineSocket(m_socket, this))
{
    connect(m_lines, &JsonLineSocket::messageReceived, this, [this](const QJsonObject& message) {
        const QString type = message.value(Keys::Type).toString();
        if (type == Keys::Notification) {
            m_notifications.append(message);
            Q_EMIT notified(message);
        } else if (type == Keys::Reply) {
            ServiceReply reply;
            reply.received = true;
            reply.success = message.value(Keys::Success).toBool();
            reply.error = message.value(Keys::ErrorString).toString();
            reply.data = message.value(Keys::Data).toObject();
            const QString id = message.value(Keys::Id).toString();
            m_replies.insert(id, reply);
            Q_EMIT replied(id);
        }
    });
    connect(m_socket, &QLocalSocket::disconnected, this, &RawClient::disconnected);
}

RawClient::~RawClient() = default;

bool RawClient::connectTo(const QString& path, int timeoutMs)
{
    m_socket->connectToServer(path);
    return m_socket->waitForConnected(timeoutMs);
}

bool RawClient::isConnected() const
{
    return m_socket->state() == QLocalSocket::ConnectedState;
}

QString RawClient::send(const QString& command, const QJsonObject& params)
{
    const QString id = QUuid::createUuid().toString();
    QJsonObject request;
    request.insert(Keys::Type, Keys::Request);
    request.insert(Keys::Id, id);
    request.insert(Keys::Command, command);
    request.insert(Keys::Params, params);
    m_lines->send(request);
    return id;
}

ServiceReply RawClient::call(const QString& command, const QJsonObject& params, int timeoutMs)
{
    const QString id = send(command, params);
    waitForReply(id, timeoutMs);
    // Nobody else knows the id: the reply is not kept, so that a benchmark's thousands of large
    // replies do not pile up in memory.
    return m_replies.take(id);
}

ServiceReply RawClient::reply(const QString& id) const
{
    return m_replies.value(id);
}

bool RawClient::waitForReply(const QString& id, int timeoutMs)
{
    if (m_replies.contains(id))
        return true;
    // An event loop that ends on the reply itself, so that waiting adds no latency of its own:
    // the benchmark times replies with this.
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    connect(this, &RawClient::replied, &loop, [&](const QString& replied) {
        if (replied == id)
            loop.quit();
    });
    connect(this, &RawClient::disconnected, &loop, &QEventLoop::quit);
    timer.start(timeoutMs);
    if (isConnected())
        loop.exec();
    return m_replies.contains(id);
}

void RawClient::sendRaw(const QByteArray& bytes)
{
    m_lines->sendRaw(bytes);
}

void RawClient::disconnectFromService()
{
    m_socket->disconnectFromServer();
}

int RawClient::countNotifications(const QString& type, const QString& id) const
{
    int n = 0;
    for (const QJsonObject& message : m_notifications) {
        if (QUuid(message.value(Keys::Id).toString()) != QUuid(type))
            continue;
        if (!id.isEmpty() && message.value(Keys::Data).toObject().value(QStringLiteral("id")).toString() != id)
            continue;
        ++n;
    }
    return n;
}

bool RawClient::waitForNotification(const QString& type, const QString& id, int timeoutMs)
{
    return QTest::qWaitFor([&] { return countNotifications(type, id) > 0; }, timeoutMs);
}

} // namespace TWB::Test
