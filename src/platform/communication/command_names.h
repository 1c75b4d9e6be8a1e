#pragma once

#include "platform/twbplatform_export.h"

#include <QStringList>

namespace TWB::Common::Communication {

/// Every command name the channel knows: those the console sends and those only declared.
TWBPLATFORM_EXPORT const QStringList& knownCommandNames();

} // namespace TWB::Common::Communication
