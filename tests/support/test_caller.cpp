#include "support/test_caller.h"

#include "platform/communication/command_calls.h"
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
        ICommand* command = newCommand(name, this, &TestCaller::onCommandResult);
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
        Q_EMIT succeeded(replyData(*command), command->request().object());
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        Q_EMIT failed(text);
    }
    command->deleteLater();
}

} // namespace TWB::Test
