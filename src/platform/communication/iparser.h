#pragma once

#include "platform/twbplatform_export.h"

#include <QMap>
#include <QString>
#include <QUuid>
#include <QVariant>

namespace TWB::Common::Communication::Notification {

/// One parsed notification. The receiver deletes it when done.
class TWBPLATFORM_EXPORT IParser
{
public:
    virtual ~IParser();

    /// The notification's type, one of Notification::Type.
    virtual QUuid type() const = 0;
    /// The notification's fields by key.
    virtual QMap<QString, QVariant> message() const = 0;
};

} // namespace TWB::Common::Communication::Notification
