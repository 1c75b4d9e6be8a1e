#include "app/desktop_notifier.h"

#include "platform/communication/command_calls.h"
#include "platform/communication/command_params.h"
#include "platform/communication/iparser.h"
#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "platform/communication/parser_factory.h"
#include "platform/logging/twl_debug.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDateTime>
#include <QJsonObject>
#include <QLocale>
#include <QVariantMap>

#include <memory>

namespace TWB::Host {

using namespace TWB::Common::Communication;

namespace {

const char* const eventProperty = "noticeEvent";
const char* const planProperty = "noticePlan";
const char* const detailProperty = "noticeDetail";

// Plan states of a run's end that the user should hear of without looking.
constexpr int stateWarning = 7;
constexpr int stateFail = 8;
constexpr int stateInterrupted = 9;
constexpr int stateInterruptedByBattery = 101;

} // namespace

DesktopNotifier::DesktopNotifier(QObject* parent)
    : QObject(parent)
{
    if (auto center = NotificationCenter::instance())
        connect(center, &NotificationCenter::notification, this, &DesktopNotifier::onNotification);
}

void DesktopNotifier::onNotification(const QJsonDocument& document)
{
    static const Notification::ParserFactory factory;
    const std::unique_ptr<Notification::IParser> parser(factory.create(document));
    if (!parser || parser->type() != QUuid(QLatin1String(Notification::Type::PlanStateChanged)))
        return;
    const QVariantMap message = parser->message();
    const QUuid plan(message.value(QStringLiteral("id")).toString());
    const int state = message.value(QStringLiteral("state")).toInt();
    if (state == 1 && message.contains(QStringLiteral("missed"))) {
        ask(plan, Event::Late, message.value(QStringLiteral("missed")).toString());
        return;
    }
    if (state != 2)
        return;
    switch (message.value(QStringLiteral("last_state")).toInt()) {
    case stateFail:
        ask(plan, Event::Failed, QString());
        break;
    case stateWarning:
        ask(plan, Event::Warning, QString());
        break;
    case stateInterrupted:
    case stateInterruptedByBattery:
        ask(plan, Event::Interrupted, QString());
        break;
    default:
        break;
    }
}

void DesktopNotifier::ask(const QUuid& plan, Event event, const QString& detail)
{
    try {
        ICommand* command = newCommand(QStringLiteral("GetNoticeSettings"), this, &DesktopNotifier::onSettingsResult);
        command->setProperty(eventProperty, static_cast<int>(event));
        command->setProperty(planProperty, plan);
        command->setProperty(detailProperty, detail);
        setCommandParams(*command, {{QStringLiteral("profile"), currentProfile()}});
        command->exec();
    } catch (const QString& text) {
        TWL::TwlDebug("TWB").warning() << "Cannot ask whether to show a desktop notice:" << text;
    }
}

void DesktopNotifier::onSettingsResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    command->deleteLater();
    try {
        const QJsonObject settings = replyData(*command).value(QStringLiteral("settings")).toObject();
        if (settings.value(QStringLiteral("DesktopNotifications")).toString() == QLatin1String("false"))
            return;
        const QUuid plan = command->property(planProperty).toUuid();
        ICommand* info = newCommand(QStringLiteral("PlanGetInfo"), this, &DesktopNotifier::onPlanResult);
        for (const char* name : {eventProperty, planProperty, detailProperty})
            info->setProperty(name, command->property(name));
        setCommandParams(
            *info, {{QStringLiteral("profile"), currentProfile()}, {QStringLiteral("id"), plan.toString()}});
        info->exec();
    } catch (const QString& text) {
        logCommandFailure(*command, text);
    }
}

void DesktopNotifier::onPlanResult()
{
    auto* command = qobject_cast<ICommand*>(sender());
    if (!command)
        return;
    command->deleteLater();
    QJsonObject info;
    try {
        info = replyData(*command).value(QStringLiteral("planInfo")).toObject();
    } catch (const QString& text) {
        logCommandFailure(*command, text);
        return;
    }
    // A plan removed meanwhile still earns its notice, under its id.
    QString name = info.value(QStringLiteral("Name")).toString();
    if (name.isEmpty())
        name = command->property(planProperty).toUuid().toString();
    const QString message = info.value(QStringLiteral("LastRunMessage")).toString();
    switch (static_cast<Event>(command->property(eventProperty).toInt())) {
    case Event::Failed:
        post(tr("Plan \"%1\" failed").arg(name), message);
        break;
    case Event::Warning:
        post(tr("Plan \"%1\" completed with warnings").arg(name), message);
        break;
    case Event::Interrupted:
        post(tr("Plan \"%1\" was interrupted").arg(name), message);
        break;
    case Event::Late: {
        QDateTime due
            = QDateTime::fromString(command->property(detailProperty).toString(), QStringLiteral("yyyyMMddhhmmss"));
        due.setTimeSpec(Qt::UTC);
        post(tr("Plan \"%1\" started late").arg(name),
            tr("Its scheduled run of %1 was missed; it runs now.")
                .arg(QLocale().toString(due.toLocalTime(), QLocale::ShortFormat)));
        break;
    }
    }
}

void DesktopNotifier::post(const QString& summary, const QString& body)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        TWL::TwlDebug("TWB").debug() << "No session bus for the desktop notice" << summary;
        Q_EMIT notPosted(summary, bus.lastError().message());
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"), QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("Notify"));
    call << QStringLiteral("Tidewrack Backup") << 0u << QStringLiteral("dialog-warning") << summary << body
         << QStringList() << QVariantMap() << -1;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, summary](QDBusPendingCallWatcher* done) {
        done->deleteLater();
        const QDBusPendingReply<uint> reply = *done;
        if (reply.isError()) {
            TWL::TwlDebug("TWB").debug() << "No desktop notice shown:" << reply.error().message();
            Q_EMIT notPosted(summary, reply.error().message());
            return;
        }
        Q_EMIT posted(summary);
    });
}

} // namespace TWB::Host
