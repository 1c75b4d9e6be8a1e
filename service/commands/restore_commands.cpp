#include "service/commands/restore_commands.h"

#include "service/commands/command_router.h"
#include "service/commands/params.h"
#include "service/commands/responder.h"
#include "service/engine/password_check.h"
#include "service/store/account_store.h"

#include <QJsonArray>

namespace TWB::Service {

RestoreCommands::RestoreCommands(Database& database, const RunPlaces& places)
    : m_database(database)
    , m_places(places)
{ }

void RestoreCommands::registerAt(CommandRouter& router)
{
    router.add(QStringLiteral("CheckRestorePassword"),
        [this](const QJsonObject& params, const Responder& respond) { checkPassword(params, respond); });
}

void RestoreCommands::checkPassword(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    const QUuid account = params.uuid("id");
    const QJsonValue list = request.value(QStringLiteral("items"));
    if (!list.isArray())
        throw params.fault("items", QStringLiteral("is not a list of paths"));
    QStringList items;
    const QJsonArray array = list.toArray();
    for (const QJsonValue& item : array) {
        if (!item.isString())
            throw params.fault("items", QStringLiteral("holds something that is not a path"));
        items << item.toString();
    }
    const QString password = params.optionalString("password");
    if (!AccountStore(m_database).find(account))
        throw params.fault("id", QStringLiteral("names no storage account: %1").arg(account.toString()));

    auto* check = new PasswordCheck(m_database, m_places, account, items, password);
    QObject::connect(check, &PasswordCheck::finished, check, [check, respond](const PasswordCheck::Result& result) {
        check->deleteLater();
        if (!result.error.isEmpty()) {
            respond.fail(result.error);
            return;
        }
        respond.success({{QStringLiteral("encrypted"), result.encrypted},
            {QStringLiteral("passwordKnown"), result.passwordKnown}, {QStringLiteral("valid"), result.opens}});
    });
    check->start();
}

} // namespace TWB::Service
