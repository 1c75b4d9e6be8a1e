#include "support/test_caller.h"

#include "platform/communication/command_params.h"
#include "platform/communication/icommand.h"
#include "platform/communication/manager.h"
#include "platform/logging/twl_debug.h"

namespace TWB::Test {

using namespace TWB::Common::Communication;

TestCaller::TestCaller(QObject* parent)
    : QObject(parent)
{ }

bool TestCaller::send(const QString& name, const QJsonObject& params, int timeoutMs)
{
    try {
        auto manager = Manager::instance();
        if (!manager)
            throw QStringLiteral("Commnunication manager is 0x00");
        ICommand* command = manager->commandFactory(name);
        if (!command)
            throw QStringLiteral("Commnunication command don't registrate");
        connect(command, &ICommand::complite, this, &TestCaller::onCommandResult);
        connect(command, &ICommand::error, this, &TestCaller::onCommandResult);
        connect(command, &ICommand::timeout, this, &TestCaller::onCommandResult);
        QJsonObject all = params;
        if (!all.contains(QStringLiteral("profile")))
            all.insert(QStringLiteral("profile"), currentProfile());
        setCommandParams(*command, all);
        if (timeoutMs > 0)
            command->setTimeout(timeoutMs);
        lastCommand = command;
        command->exec();
        return true;
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT failed(text);
        return false;
    }
}

void TestCaller::onCommandResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    try {
        if (command->failed || !command->finished || command->reply().isNull() || !command->reply().isObject())
            throw QStringLiteral("Local command reply format error");
        if (command->isReplyError())
            throw command->replyErrorString();
        Q_EMIT succeeded(
            command->reply().object().value(QStringLiteral("data")).toObject(), command->request().object());
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << text;
        Q_EMIT failed(text);
    }
    command->deleteLater();
}

} // namespace TWB::Test
