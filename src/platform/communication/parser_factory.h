#pragma once

#include "platform/twbplatform_export.h"

#include <QJsonDocument>

namespace TWB::Common::Communication::Notification {

class IParser;

/// Turns a notification document into a parser. Held as a function-local static by each subscriber.
class TWBPLATFORM_EXPORT ParserFactory final
{
public:
    /// A new parser the caller deletes, or null when the document is no declared notification.
    IParser* create(const QJsonDocument& document) const;
};

} // namespace TWB::Common::Communication::Notification
