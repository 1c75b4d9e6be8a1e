#include "service/server/request_envelope.h"

#include "platform/communication/json_keys.h"

#include <QJsonValue>

namespace TWB::Service {

namespace Keys = TWB::Common::Communication::JsonKeys;

bool RequestEnvelope::read(const QJsonObject& message, RequestEnvelope* request, QString* refusal)
{
    request->id = message.value(Keys::Id).toString();
    request->command = message.value(Keys::Command).toString();
    if (message.value(Keys::Type).toString() != Keys::Request) {
        *refusal = QStringLiteral("Message type \"%1\" is not a request").arg(message.value(Keys::Type).toString());
        return false;
    }
    if (request->id.isEmpty()) {
        *refusal = QStringLiteral("Request has no id");
        return false;
    }
    if (request->command.isEmpty()) {
        *refusal = QStringLiteral("Request has no command name");
        return false;
    }
    const QJsonValue params = message.value(Keys::Params);
    if (!params.isUndefined() && !params.isObject()) {
        *refusal = QStringLiteral("Parameter \"params\" of %1 is not an object").arg(request->command);
        return false;
    }
    request->params = params.toObject();
    return true;
}

} // namespace TWB::Service
