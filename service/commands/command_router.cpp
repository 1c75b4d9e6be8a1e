#include "service/commands/command_router.h"

#include "platform/logging/twl_debug.h"

namespace TWB::Service {

void CommandRouter::add(const QString& command, Handler handler)
{
    m_handlers.insert(command, std::move(handler));
}

void CommandRouter::dispatch(const QString& command, const QJsonObject& params, const Responder& respond) const
{
    const auto it = m_handlers.constFind(command);
    if (it == m_handlers.constEnd()) {
        respond.fail(QStringLiteral("Unknown command: %1").arg(command));
        return;
    }
    // Handlers throw the sentence that explains a refusal or a failure; it becomes the reply.
    try {
        it.value()(params, respond);
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << command << "failed:" << text;
        respond.fail(text);
    }
}

} // namespace TWB::Service
