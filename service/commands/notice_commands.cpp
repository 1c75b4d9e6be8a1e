#include "service/commands/notice_commands.h"

#include "platform/logging/twl_debug.h"
#include "service/commands/command_router.h"
#include "service/commands/params.h"
#include "service/commands/responder.h"
#include "service/engine/smtp_mail.h"
#include "service/store/certificate_store.h"
#include "service/store/notice_settings.h"

namespace TWB::Service {

void NoticeCommands::registerAt(CommandRouter& router)
{
    router.add(QStringLiteral("GetNoticeSettings"),
        [this](const QJsonObject& params, const Responder& respond) { getSettings(params, respond); });
    router.add(QStringLiteral("SetNoticeSettings"),
        [this](const QJsonObject& params, const Responder& respond) { setSettings(params, respond); });
    router.add(QStringLiteral("SendTestEmail"),
        [this](const QJsonObject& params, const Responder& respond) { sendTest(params, respond); });
}

void NoticeCommands::getSettings(const QJsonObject&, const Responder& respond) const
{
    respond.success({{QStringLiteral("settings"), NoticeSettings::read(m_settingsFile).toJson()}});
}

void NoticeCommands::setSettings(const QJsonObject& params, const Responder& respond) const
{
    const Params read(params, respond.command());
    NoticeSettings settings = NoticeSettings::read(m_settingsFile);
    settings.apply(read.object("settings"));
    settings.write(m_settingsFile);
    TWL::TwlDebug("TWB").info() << "Email settings saved: server" << settings.host << "port" << settings.effectivePort()
                                << "user" << settings.user;
    respond.success();
}

void NoticeCommands::sendTest(const QJsonObject&, const Responder& respond)
{
    const NoticeSettings settings = NoticeSettings::read(m_settingsFile);
    if (!settings.isSet())
        throw QStringLiteral("No mail server is set");
    if (settings.recipientList().isEmpty())
        throw QStringLiteral("No address to send to is set");
    SmtpMail mail(settings, QStringLiteral("Tidewrack Backup test email"),
        QStringLiteral("This email shows that Tidewrack Backup can send the results of its plans to you.\n"));
    mail.setTrustedCertificates(CertificateStore(m_database).all());
    mail.sendLater(this, [respond, to = settings.recipients](const QString& error) {
        if (error.isEmpty()) {
            respond.success({{QStringLiteral("to"), to}});
            return;
        }
        TWL::TwlDebug("TWB").warning() << "The test email was not sent:" << error;
        respond.fail(QStringLiteral("The test email was not sent: %1").arg(error));
    });
}

} // namespace TWB::Service
