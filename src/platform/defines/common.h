#pragma once

#include "platform/twbplatform_export.h"

/// Edition switches. The product runs standalone unless the configuration file says
/// `edition = managed`, in which case a provider's service supplies accounts and options.
namespace SHARED::defines::common {

TWBPLATFORM_EXPORT bool is_standalone();
/// True in the managed edition.
TWBPLATFORM_EXPORT bool is_fbs();

} // namespace SHARED::defines::common
