#include "plans/plan_status_list.h"

#include "platform/communication/iparser.h"
#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "platform/communication/parser_factory.h"
#include "platform/logging/twl_debug.h"

#include <QCoreApplication>

#include <memory>

namespace TWB::GUI {

using namespace TWB::Common::Communication;

QPointer<PlanStatusList> PlanStatusList::instance()
{
    static QPointer<PlanStatusList> list(new PlanStatusList);
    return list;
}

PlanStatusList::PlanStatusList(QObject* parent)
    : QObject(parent)
{
    if (auto* app = QCoreApplication::instance())
        connect(app, &QCoreApplication::aboutToQuit, this, &QObject::deleteLater);
    if (auto center = NotificationCenter::instance())
        connect(center, &NotificationCenter::notification, this, &PlanStatusList::onNotification);
}

PlanStatusList::~PlanStatusList() = default;

void PlanStatusList::onNotification(const QJsonDocument& document)
{
    static const Notification::ParserFactory factory;
    const std::unique_ptr<Notification::IParser> parser(factory.create(document));
    if (!parser) {
        TWL::TwlDebug("TWB").debug() << "Notiifcation is 0x00";
        return;
    }
    const QMap<QString, QVariant> message = parser->message();
    if (parser->type() == QUuid(QLatin1String(Notification::Type::PlanStateChanged))) {
        // The state notification carries the run status, where 1 means running: a plan that starts
        // again begins with no stale figures. Other states keep the last figures for the host to show.
        if (message.value(QStringLiteral("state")).toInt() == 1)
            statuses.remove(QUuid(message.value(QStringLiteral("id")).toString()));
    } else if (parser->type() == QUuid(QLatin1String(Notification::Type::PlanProgress))) {
        const QUuid id(message.value(QStringLiteral("plan_id")).toString());
        statuses.insert(id, message);
        Q_EMIT updated(id, message);
    }
}

} // namespace TWB::GUI
