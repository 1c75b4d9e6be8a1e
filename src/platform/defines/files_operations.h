#pragma once

#include "platform/twbplatform_export.h"

#include <QString>

namespace SHARED::functions::files_operations {

/// Reads one attribute from a configuration file of `name = value` lines.
/// Lines starting with '#' or ';' and [section] headers are skipped; surrounding blanks and one
/// pair of double quotes around the value are dropped. The first line naming the attribute wins.
/// Returns an empty string when the file or the attribute is missing.
TWBPLATFORM_EXPORT QString get_attrib_from_file(const QString& path, const QString& attrib);

} // namespace SHARED::functions::files_operations
