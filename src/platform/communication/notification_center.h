#pragma once

#include "platform/twbplatform_export.h"

#include <QJsonDocument>
#include <QObject>
#include <QPointer>

namespace TWB::Common::Communication {

/// Hands every notification of the local service to its subscribers, in the order it arrived.
/// Each subscriber parses the document for itself with Notification::ParserFactory.
class TWBPLATFORM_EXPORT NotificationCenter final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(NotificationCenter)
public:
    static QPointer<NotificationCenter> instance();

    /// Publishes one notification document; the channel calls it for each one received.
    void deliver(const QJsonDocument& document);

Q_SIGNALS:
    void notification(const QJsonDocument& document);

private:
    NotificationCenter();
};

} // namespace TWB::Common::Communication
