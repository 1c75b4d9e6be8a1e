#pragma once

#include "platform/twbplatform_export.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QTimer>

namespace TWB::Common::Communication {

class ConnectionManager;
class Manager;

/// One asynchronous request to the local service. Made only by Manager::commandFactory;
/// the caller owns it and calls deleteLater() in its result slot.
///
/// After complite(), `finished` is set, `failed` is clear and reply() is the service's reply object.
/// After error() (the connection broke or could not be had) or timeout(), `failed` is set.
class TWBPLATFORM_EXPORT ICommand final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(ICommand)
public:
    ~ICommand() override;

    /// The name given to the factory.
    const QString commandName;
    /// A reply arrived.
    bool finished = false;
    /// The exchange itself broke down: lost connection, no connection, or no reply in time.
    bool failed = false;
    /// Failed because the console's own channel shut down, not because of the service: no error to report.
    bool abandoned = false;

    QJsonDocument request() const { return m_request; }
    void setRequest(const QJsonDocument& request);
    /// Sends the request and returns at once. A command runs once; a second call is ignored.
    void exec();

    /// The whole reply object; null until a reply arrived.
    QJsonDocument reply() const { return m_reply; }
    bool isReplyError() const;
    QString replyErrorString() const;

    /// The envelope id that matches the reply to this request.
    QString id() const;

    /// Time allowed for the reply, in milliseconds; 0 waits for ever. Takes effect at exec().
    void setTimeout(int milliseconds) { m_timeoutMs = milliseconds; }
    int timeoutMs() const { return m_timeoutMs; }

Q_SIGNALS:
    void complite();
    void error();
    void timeout();

private:
    friend class ConnectionManager;
    friend class Manager;

    enum class State { Created, Pending, Done };

    ICommand(const QString& name, const QJsonObject& envelope, int timeoutMs);

    void onReply(const QJsonObject& reply);
    void onExchangeFailed();
    void onTimer();
    /// Fails from the event loop rather than inside the caller's exec().
    void failLater();

    QJsonDocument m_request;
    QJsonDocument m_reply;
    QTimer m_timer;
    int m_timeoutMs;
    State m_state = State::Created;
};

} // namespace TWB::Common::Communication
