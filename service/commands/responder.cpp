#include "service/commands/responder.h"

#include "platform/communication/json_keys.h"
#include "platform/communication/json_line_socket.h"
#include "platform/logging/twl_debug.h"

namespace TWB::Service {

namespace Keys = TWB::Common::Communication::JsonKeys;

struct Responder::State
{
    QPointer<TWB::Common::Communication::JsonLineSocket> client;
    QString id;
    QString command;
    bool replied = false;

    void send(bool success, const QString& text, const QJsonObject& data)
    {
        if (replied) {
            TWL::TwlDebug("TWB").warning() << "Second reply to" << command << "dropped";
            return;
        }
        replied = true;
        if (!client) {
            TWL::TwlDebug("TWB").debug() << "Client of" << command << "left before its reply";
            return;
        }
        QJsonObject reply;
        reply.insert(Keys::Type, Keys::Reply);
        reply.insert(Keys::Id, id);
        reply.insert(Keys::Command, command);
        reply.insert(Keys::Success, success);
        reply.insert(Keys::ErrorString, text);
        reply.insert(Keys::Data, data);
        client->send(reply);
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
