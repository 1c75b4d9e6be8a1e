#pragma once

#include "platform/communication/icommand.h"
#include "platform/communication/manager.h"
#include "platform/twbplatform_export.h"

#include <QJsonObject>
#include <QString>

namespace TWB::Common::Communication {

/// What most senders say when the channel is gone, and when it knows no such command.
TWBPLATFORM_EXPORT QString managerGoneText();
TWBPLATFORM_EXPORT QString noCommandText();

/// A new command of that name whose complite(), error() and timeout() all reach `slot` of `receiver`.
/// Throws `managerGone` as a QString when the channel is gone, `noCommand` when it knows no such command.
/// The caller fills "params" and calls exec(); the result slot deletes the command.
template <typename Receiver, typename Slot>
ICommand* newCommand(const QString& name, Receiver* receiver, Slot slot, const QString& managerGone = managerGoneText(),
    const QString& noCommand = noCommandText())
{
    auto manager = Manager::instance();
    if (!manager)
        throw managerGone;
    ICommand* command = manager->commandFactory(name);
    if (!command)
        throw noCommand;
    QObject::connect(command, &ICommand::complite, receiver, slot);
    QObject::connect(command, &ICommand::error, receiver, slot);
    QObject::connect(command, &ICommand::timeout, receiver, slot);
    return command;
}

/// The payload under "data" of a command's reply, after the checks every result slot makes in this order:
/// a broken or timed-out exchange, a null reply or one that is no object throws "Local command reply format
/// error"; a refusal throws the service's own text.
TWBPLATFORM_EXPORT QJsonObject replyData(const ICommand& command);

/// Logs why a command's result slot failed: a warning, or a debug line for a command the console abandoned
/// on its own way out.
TWBPLATFORM_EXPORT void logCommandFailure(const ICommand& command, const QString& text);

} // namespace TWB::Common::Communication
