#pragma once

#include "platform/twbplatform_export.h"

#include <QString>
#include <QUrl>

namespace TWB::SOAP {

/// Asks the product's web service whether the addresses of plan notices are confirmed. The service
/// sends a confirmation mail to any address it does not know yet. The call blocks its caller.
class TWBPLATFORM_EXPORT EmailAddressesConfirmed final
{
public:
    EmailAddressesConfirmed();

    /// True when every address of `email` (separated by ";" or ",") is confirmed.
    bool isAllowed(const QString& email, const QString& userName);
    /// The HTTP status of the last call; 0 when the service could not be reached.
    int responseStatus() const { return status; }

    /// $TWB_EMAIL_SERVICE_URL, else the product's web site followed by "/api/notification/confirmed".
    static QUrl serviceUrl();

    /// How long a call may wait for the service.
    static constexpr int TimeoutMs = 20000;

private:
    int status = 0;
};

} // namespace TWB::SOAP
