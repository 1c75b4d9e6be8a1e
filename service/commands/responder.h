#pragma once

#include <QJsonObject>
#include <QPointer>
#include <QString>

#include <memory>

namespace TWB::Common::Communication {
class JsonLineSocket;
}

namespace TWB::Service {

/// Answers one request, now or later. Copies share one reply: the first success() or fail() is sent,
/// later ones are ignored. If every copy is gone without an answer, the client still gets a failure
/// reply, so that no request is ever left without one.
class Responder final
{
public:
    Responder(TWB::Common::Communication::JsonLineSocket* client, const QString& id, const QString& command);

    void success(const QJsonObject& data = QJsonObject()) const;
    /// A success whose "data" is already JSON text of an object: for lists too large to build as a
    /// QJsonObject first.
    void successJson(const QByteArray& data) const;
    void fail(const QString& text, const QJsonObject& data = QJsonObject()) const;

    QString command() const;
    bool hasReplied() const;

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace TWB::Service
