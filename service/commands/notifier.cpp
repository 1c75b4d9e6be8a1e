#include "service/commands/notifier.h"

namespace TWB::Service {

Notifier::Notifier(QObject* parent)
    : QObject(parent)
{ }

void Notifier::send(const QString& type, const QJsonObject& data)
{
    Q_EMIT notification(type, data);
}

} // namespace TWB::Service
