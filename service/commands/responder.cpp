#include "service/commands/responder.h"

#include "platform/communication/json_keys.h"
#include "platform/communication/json_line_socket.h"
#include "platform/logging/twl_debug.h"

#include <QJsonDocument>
#include <QLocalSocket>

#include <sys/socket.h>
#include <sys/uio.h>

namespace TWB::Service {

namespace Keys = TWB::Common::Communication::JsonKeys;

struct Responder::State
{
    QPointer<TWB::Common::Communication::JsonLineSocket> client;
    QString id;
    QString command;
    bool replied = false;

    /// True when this is the first reply and someone is there to read it.
    bool claim()
    {
        if (replied) {
            TWL::TwlDebug("TWB").warning() << "Second reply to" << command << "dropped";
            return false;
        }
        replied = true;
        if (!client) {
            TWL::TwlDebug("TWB").debug() << "Client of" << command << "left before its reply";
            return false;
        }
        return true;
    }

    QJsonObject envelope(bool success, const QString& text) const
    {
        QJsonObject reply;
        reply.insert(Keys::Type, Keys::Reply);
        reply.insert(Keys::Id, id);
        reply.insert(Keys::Command, command);
        reply.insert(Keys::Success, success);
        reply.insert(Keys::ErrorString, text);
        return reply;
    }

    void send(bool success, const QString& text, const QJsonObject& data)
    {
        if (!claim())
            return;
        QJsonObject reply = envelope(success, text);
        reply.insert(Keys::Data, data);
        client->send(reply);
    }

    void sendJson(const QByteArray& data)
    {
        if (!claim())
            return;
        QByteArray head = QJsonDocument(envelope(true, QString())).toJson(QJsonDocument::Compact);
        head.chop(1); // the closing brace: "data" goes in before it
        head.append(",\"data\":");
        static const char tail[] = "}\n";
        // A reply of megabytes copied into Qt's write buffer costs more than everything else a
        // list does: when nothing waits before it, the kernel takes what it can straight from here.
        qint64 sent = 0;
        QLocalSocket* socket = client->socket();
        if (socket && socket->state() == QLocalSocket::ConnectedState && socket->bytesToWrite() == 0) {
            iovec parts[3] = {{head.data(), size_t(head.size())},
                {const_cast<char*>(data.constData()), size_t(data.size())}, {const_cast<char*>(tail), 2}};
            msghdr message {};
            message.msg_iov = parts;
            message.msg_iovlen = 3;
            const ssize_t written = ::sendmsg(int(socket->socketDescriptor()), &message, MSG_DONTWAIT | MSG_NOSIGNAL);
            sent = written > 0 ? written : 0;
        }
        const qint64 total = head.size() + data.size() + 2;
        if (sent == total)
            return;
        // The rest goes the usual way, so that Qt writes it as the console reads.
        QByteArray rest;
        rest.reserve(int(total - sent));
        if (sent < head.size())
            rest.append(head.constData() + sent, int(head.size() - sent));
        const qint64 fromData = qMax<qint64>(0, sent - head.size());
        if (fromData < data.size())
            rest.append(data.constData() + fromData, int(data.size() - fromData));
        const qint64 fromTail = qMax<qint64>(0, sent - head.size() - data.size());
        rest.append(tail + fromTail, int(2 - fromTail));
        client->sendRaw(rest);
    }

    ~State()
    {
        if (!replied)
            send(false, QStringLiteral("The service could not complete %1").arg(command), QJsonObject());
    }
};

Responder::Responder(TWB::Common::Communication::JsonLineSocket* client, const QString& id, const QString& command)
    : m_state(std::make_shared<State>())
{
    m_state->client = client;
    m_state->id = id;
    m_state->command = command;
}

void Responder::success(const QJsonObject& data) const
{
    m_state->send(true, QString(), data);
}

void Responder::successJson(const QByteArray& data) const
{
    m_state->sendJson(data);
}

void Responder::fail(const QString& text, const QJsonObject& data) const
{
    m_state->send(false, text, data);
}

QString Responder::command() const
{
    return m_state->command;
}

bool Responder::hasReplied() const
{
    return m_state->replied;
}

} // namespace TWB::Service
