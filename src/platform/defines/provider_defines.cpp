#include "platform/defines/provider_defines.h"

#include "platform/build_config.h"

namespace TWB::defines {

QString ProviderDefines::BuildVersion()
{
    return QStringLiteral(TWB_VERSION_STRING);
}

} // namespace TWB::defines
