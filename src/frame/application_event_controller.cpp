#include "frame/application_event_controller.h"

#include "platform/communication/connection_manager.h"
#include "platform/communication/iparser.h"
#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "platform/communication/parser_factory.h"
#include "platform/logging/twl_debug.h"

#include <QCoreApplication>

#include <memory>

namespace TWB::GUI {

namespace Communication = TWB::Common::Communication;
namespace NotificationType = TWB::Common::Communication::Notification::Type;

ApplicationEventController::ApplicationEventController(QObject* parent)
    : QObject(parent)
{ }

void ApplicationEventController::init()
{
    if (initialized)
        return;
    if (auto center = Communication::NotificationCenter::instance()) {
        connect(center, &Communication::NotificationCenter::notification, this,
            &ApplicationEventController::onNotification, Qt::QueuedConnection);
    }
    if (auto connection = Communication::ConnectionManager::instance()) {
        connect(connection, &Communication::ConnectionManager::localManagmentConnected, this,
            &ApplicationEventController::onLocalManagmentStatusChanged);
        connect(connection, &Communication::ConnectionManager::localManagmentDisconnected, this,
            &ApplicationEventController::onLocalManagmentStatusChanged);
        onLocalManagmentStatusChanged();
    }
    initialized = true;
}

void ApplicationEventController::onLocalManagmentStatusChanged()
{
    auto connection = Communication::ConnectionManager::instance();
    if (!connection)
        return;
    if (connection->isLocalManagmentConnected())
        Q_EMIT localManagmentConnected();
    else
        Q_EMIT localManagmentDisconnected();
}

void ApplicationEventController::onNotification(const QJsonDocument& document)
{
    static const Communication::Notification::ParserFactory factory;
    const std::unique_ptr<Communication::Notification::IParser> parser(factory.create(document));
    if (!parser) {
        TWL::TwlDebug("TWB").debug() << "Notiifcation is 0x00";
        return;
    }
    if (parser->type() == QUuid(QLatin1String(NotificationType::ApplicationQuit))) {
        QCoreApplication::quit();
    } else if (parser->type() == QUuid(QLatin1String(NotificationType::UpdateStarting))) {
        TWL::TwlDebug("TWB").info() << "Notification to start update...";
        Q_EMIT updateStarted();
    }
}

} // namespace TWB::GUI
