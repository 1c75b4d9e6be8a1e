#pragma once

#include "service/commands/responder.h"

#include <QHash>
#include <QJsonObject>
#include <QString>

#include <functional>

namespace TWB::Service {

/// Commands the service answers, by name.
class CommandRouter final
{
public:
    using Handler = std::function<void(const QJsonObject& params, const Responder& respond)>;

    /// Registers the handler of one command, replacing an earlier one.
    void add(const QString& command, Handler handler);
    bool has(const QString& command) const { return m_handlers.contains(command); }

    /// Runs the command's handler, or answers that the command is unknown. A QString thrown by
    /// the handler is logged and sent as the failure text, unless the handler already replied.
    void dispatch(const QString& command, const QJsonObject& params, const Responder& respond) const;

private:
    QHash<QString, Handler> m_handlers;
};

} // namespace TWB::Service
