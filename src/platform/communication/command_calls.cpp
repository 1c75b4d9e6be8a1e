#include "platform/communication/command_calls.h"

#include "platform/communication/json_keys.h"
#include "platform/logging/twl_debug.h"

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

void logCommandFailure(const ICommand& command, const QString& text)
{
    if (command.abandoned)
        TWL::TwlDebug("TWB").debug() << "Command" << command.commandName << "abandoned at shutdown:" << text;
    else
        TWL::TwlDebug("TWB").warning() << text;
}

} // namespace TWB::Common::Communication
