#pragma once

#include <QJsonObject>
#include <QString>

namespace TWB::Service {

/// The parts of a request that every command needs, as a console sent them.
struct RequestEnvelope
{
    QString id;
    QString command;
    QJsonObject params;

    /// Checks the envelope of one received message. False with the reply's failure text in `refusal`
    /// when it is no request the router can take; `request` then holds the id and command it named,
    /// so that the refusal still reaches the caller.
    static bool read(const QJsonObject& message, RequestEnvelope* request, QString* refusal);
};

} // namespace TWB::Service
