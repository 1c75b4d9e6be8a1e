#include "platform/communication/command_params.h"

#include "platform/communication/icommand.h"
#include "platform/communication/json_keys.h"

#include <QJsonDocument>

#include <cstdlib>

namespace TWB::Common::Communication {

QString currentProfile()
{
    const char* user = std::getenv("USER");
    return user ? QString::fromLocal8Bit(user) : QString();
}

void setCommandParams(ICommand& command, const QJsonObject& params)
{
    QJsonObject request = command.request().object();
    request.insert(JsonKeys::Params, params);
    command.setRequest(QJsonDocument(request));
}

} // namespace TWB::Common::Communication
