#pragma once

#include "platform/twbplatform_export.h"

#include <QString>

namespace SHARED::functions::help::transform {

/// A byte count in binary units for tables: "512 B", "12.4 MB", "312 GB". One decimal below 100 of
/// a unit, none above; a value that would round to 1024 of a unit reads as 1.0 of the next. Numbers
/// follow the default QLocale. NaN and infinity read "N/A"; a negative count keeps its sign.
TWBPLATFORM_EXPORT QString from_byte_to_norm(double bytes);

} // namespace SHARED::functions::help::transform
