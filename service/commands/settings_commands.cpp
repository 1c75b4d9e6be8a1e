#include "service/commands/settings_commands.h"

#include "platform/defines/common.h"
#include "platform/defines/files_operations.h"
#include "platform/defines/path.h"
#include "platform/defines/provider_defines.h"
#include "service/commands/command_router.h"
#include "service/commands/responder.h"

#include <QSysInfo>

namespace TWB::Service {

void SettingsCommands::registerAt(CommandRouter& router)
{
    router.add(QStringLiteral("GetSettings"), &SettingsCommands::getSettings);
}

void SettingsCommands::getSettings(const QJsonObject&, const Responder& respond)
{
    const QString config = SHARED::defines::Path::ETC::CONFIG::tidewrackBackup_conf();
    QJsonObject settings;
    settings.insert(QStringLiteral("edition"),
        SHARED::defines::common::is_fbs() ? QStringLiteral("managed") : QStringLiteral("standalone"));
    settings.insert(QStringLiteral("version"), TWB::defines::ProviderDefines::BuildVersion());
    settings.insert(QStringLiteral("supportEmail"),
        SHARED::functions::files_operations::get_attrib_from_file(config, QStringLiteral("supportEmail")));
    settings.insert(QStringLiteral("computerName"), QSysInfo::machineHostName());
    respond.success({{QStringLiteral("settings"), settings}});
}

} // namespace TWB::Service
