#pragma once

#include "platform/twbplatform_export.h"

#include <QJsonObject>
#include <QString>

namespace TWB::Common::Communication {

class ICommand;

/// The system user that every request names as "profile": $USER, read anew at each call.
TWBPLATFORM_EXPORT QString currentProfile();

/// Places params under "params" of the command's request, keeping its envelope.
TWBPLATFORM_EXPORT void setCommandParams(ICommand& command, const QJsonObject& params);

} // namespace TWB::Common::Communication
