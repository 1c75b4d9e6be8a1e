#pragma once

#include "platform/twbplatform_export.h"

#include <QString>

namespace TWB::defines {

class TWBPLATFORM_EXPORT ProviderDefines final
{
public:
    /// Version of this build, as the build system set it.
    static QString BuildVersion();
};

} // namespace TWB::defines
