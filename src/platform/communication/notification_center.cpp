#include "platform/communication/notification_center.h"

#include <QCoreApplication>

namespace TWB::Common::Communication {

QPointer<NotificationCenter> NotificationCenter::instance()
{
    static QPointer<NotificationCenter> center(new NotificationCenter);
    return center;
}

NotificationCenter::NotificationCenter()
{
    if (auto* app = QCoreApplication::instance())
        connect(app, &QCoreApplication::aboutToQuit, this, &QObject::deleteLater);
}

void NotificationCenter::deliver(const QJsonDocument& document)
{
    Q_EMIT notification(document);
}

} // namespace TWB::Common::Communication
