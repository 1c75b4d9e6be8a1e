#include "service/command_router.h"

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
    it.value()(params, respond);
}

} // namespace TWB::Service
