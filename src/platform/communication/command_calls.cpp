#include "platform/communication/command_calls.h"

#include "platform/communication/json_keys.h"

namespace TWB::Common::Communication {

QString managerGoneText()
{
    return QStringLiteral("Commnunication manager is 0x00");
}

QString noCommandText()
{
    return QStringLiteral("Commnunication command don't registrate");
}

QJsonObject replyData(const ICommand& command)
{
    if (command.failed || !command.finished || command.reply().isNull() || !command.reply().isObject())
        throw QStringLiteral("Local command reply format error");
    if (command.isReplyError())
        throw command.replyErrorString();
    return command.reply().object().value(JsonKeys::Data).toObject();
}

} // namespace TWB::Common::Communication
