#include "service/commands/settings_commands.h"

#include "platform/defines/common.h"
#include "platform/defines/files_operations.h"
#include "platform/defines/path.h"
#include "platform/defines/provider_defines.h"
#include "platform/logging/twl_debug.h"
#include "service/commands/command_router.h"
#include "service/commands/params.h"
#include "service/commands/responder.h"
#include "service/store/product_options.h"

#include <QSysInfo>

namespace TWB::Service {

void SettingsCommands::registerAt(CommandRouter& router)
{
    router.add(QStringLiteral("GetSettings"), &SettingsCommands::getSettings);
    router.add(QStringLiteral("GetProductOptions"),
        [this](const QJsonObject& params, const Responder& respond) { getProductOptions(params, respond); });
    router.add(QStringLiteral("SetProductOptions"),
        [this](const QJsonObject& params, const Responder& respond) { setProductOptions(params, respond); });
}

void SettingsCommands::getProductOptions(const QJsonObject&, const Responder& respond) const
{
    QJsonObject options;
    const QMap<QString, QString> values = ProductOptions(m_optionsFile).values();
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        options.insert(it.key(), it.value());
    respond.success({{QStringLiteral("options"), options}});
}

void SettingsCommands::setProductOptions(const QJsonObject& params, const Responder& respond) const
{
    const Params read(params, respond.command());
    const QJsonObject options = read.object("options");
    QMap<QString, QString> values;
    for (auto it = options.constBegin(); it != options.constEnd(); ++it) {
        if (!it.value().isString())
            throw read.fault("options", QStringLiteral("holds \"%1\", which is not a string").arg(it.key().left(80)));
        values.insert(it.key(), it.value().toString());
    }
    const ProductOptions store(m_optionsFile);
    ProductOptions::check(values);
    // The folder is tried before anything is written, so that one the service cannot log into is refused.
    const QString logPathKey = QStringLiteral("LogPath");
    const QString oldPath = store.logPath();
    const bool movesLog = values.contains(logPathKey) && values.value(logPathKey) != oldPath;
    if (movesLog) {
        QString reason;
        if (!TWL::TwlDebug::setLogDirectory(values.value(logPathKey), &reason))
            throw QStringLiteral("Option \"LogPath\" cannot be \"%1\": %2").arg(values.value(logPathKey), reason);
    }
    try {
        store.write(values);
    } catch (const QString&) {
        if (movesLog)
            TWL::TwlDebug::setLogDirectory(oldPath);
        throw;
    }
    if (movesLog)
        TWL::TwlDebug("TWB").infoH() << "The log is now written to" << TWL::TwlDebug::logFilePath();
    TWL::TwlDebug::setRotateDays(store.logRotateDays());
    respond.success();
}

void SettingsCommands::applyLogOptions(const QString& optionsFile)
{
    const ProductOptions options(optionsFile);
    QString reason;
    if (!TWL::TwlDebug::setLogDirectory(options.logPath(), &reason))
        TWL::TwlDebug("TWB").warning() << reason << "- the log stays in" << TWL::TwlDebug::logFilePath();
    TWL::TwlDebug::setRotateDays(options.logRotateDays());
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
