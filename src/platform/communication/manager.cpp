#include "platform/communication/manager.h"

#include "platform/communication/command_names.h"
#include "platform/communication/icommand.h"
#include "platform/communication/json_keys.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QUuid>

namespace TWB::Common::Communication {

QPointer<Manager> Manager::instance()
{
    static QPointer<Manager> manager(new Manager);
    return manager;
}

Manager::Manager()
    : m_names(knownCommandNames().cbegin(), knownCommandNames().cend())
    , m_sessionId(QUuid::createUuid().toString())
{
    if (auto* app = QCoreApplication::instance())
        connect(app, &QCoreApplication::aboutToQuit, this, &QObject::deleteLater);
}

ICommand* Manager::commandFactory(const QString& name)
{
    if (!m_names.contains(name))
        return nullptr;
    QJsonObject envelope;
    envelope.insert(JsonKeys::Type, JsonKeys::Request);
    envelope.insert(JsonKeys::Id, QUuid::createUuid().toString());
    envelope.insert(JsonKeys::Command, name);
    envelope.insert(JsonKeys::SessionId, m_sessionId);
    envelope.insert(JsonKeys::ConnectionType, JsonKeys::Local);
    return new ICommand(name, envelope, m_defaultTimeoutMs);
}

} // namespace TWB::Common::Communication
