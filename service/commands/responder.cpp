#include "service/commands/responder.h"

#include "platform/communication/json_keys.h"
#include "platform/communication/json_line_socket.h"
#include "platform/logging/twl_debug.h"

#include <QJsonDocument>

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
        QByteArray line = QJsonDocument(envelope(true, QString())).toJson(QJsonDocument::Compact);
        line.chop(1); // the closing brace: "data" goes in before it
        line.reserve(line.size() + data.size() + 12);
        line.append(",\"data\":").append(data).append("}\n");
        client->sendRaw(line);
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
