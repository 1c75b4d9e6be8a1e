#include "platform/communication/icommand.h"

#include "platform/communication/connection_manager.h"
#include "platform/communication/json_keys.h"
#include "platform/logging/twl_debug.h"

#include <QMetaObject>
#include <QUuid>

namespace TWB::Common::Communication {

ICommand::ICommand(const QString& name, const QJsonObject& envelope, int timeoutMs)
    : commandName(name)
    , m_request(envelope)
    , m_timeoutMs(timeoutMs)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &ICommand::onTimer);
}

ICommand::~ICommand()
{
    if (m_state == State::Pending) {
        if (auto manager = ConnectionManager::instance())
            manager->forget(this);
    }
}

void ICommand::setRequest(const QJsonDocument& request)
{
    if (m_state != State::Created) {
        TWL::TwlDebug("TWB").warning() << "Request of" << commandName << "changed after it was sent; ignored";
        return;
    }
    m_request = request;
}

void ICommand::exec()
{
    if (m_state != State::Created) {
        TWL::TwlDebug("TWB").warning() << "Command" << commandName << "executed twice; ignored";
        return;
    }
    // Whatever the caller did to the document, the envelope must stay whole.
    QJsonObject envelope = m_request.object();
    envelope.insert(JsonKeys::Type, JsonKeys::Request);
    envelope.insert(JsonKeys::Command, commandName);
    if (envelope.value(JsonKeys::Id).toString().isEmpty())
        envelope.insert(JsonKeys::Id, QUuid::createUuid().toString());
    if (!envelope.value(JsonKeys::Params).isObject())
        envelope.insert(JsonKeys::Params, QJsonObject());
    m_request = QJsonDocument(envelope);

    m_state = State::Pending;
    if (m_timeoutMs > 0)
        m_timer.start(m_timeoutMs);

    auto manager = ConnectionManager::instance();
    if (!manager) {
        TWL::TwlDebug("TWB").warning() << "Command" << commandName << "sent while the channel is gone";
        failLater();
        return;
    }
    manager->submit(this);
}

bool ICommand::isReplyError() const
{
    return !m_reply.object().value(JsonKeys::Success).toBool(false);
}

QString ICommand::replyErrorString() const
{
    const QString text = m_reply.object().value(JsonKeys::ErrorString).toString();
    if (text.isEmpty() && isReplyError())
        return QStringLiteral("The service reported a failure without a reason");
    return text;
}

QString ICommand::id() const
{
    return m_request.object().value(JsonKeys::Id).toString();
}

void ICommand::onReply(const QJsonObject& reply)
{
    if (m_state != State::Pending)
        return;
    m_state = State::Done;
    m_timer.stop();
    m_reply = QJsonDocument(reply);
    finished = true;
    failed = false;
    Q_EMIT complite();
}

void ICommand::onExchangeFailed()
{
    if (m_state != State::Pending)
        return;
    m_state = State::Done;
    m_timer.stop();
    failed = true;
    Q_EMIT error();
}

void ICommand::onTimer()
{
    if (m_state != State::Pending)
        return;
    m_state = State::Done;
    if (auto manager = ConnectionManager::instance())
        manager->forget(this);
    failed = true;
    TWL::TwlDebug("TWB").warning() << "Command" << commandName << "got no reply within" << m_timeoutMs << "ms";
    Q_EMIT timeout();
}

void ICommand::failLater()
{
    QMetaObject::invokeMethod(this, &ICommand::onExchangeFailed, Qt::QueuedConnection);
}

} // namespace TWB::Common::Communication
