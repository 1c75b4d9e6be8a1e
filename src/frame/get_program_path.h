#pragma once

#include "twbconsole_export.h"

#include <QString>

namespace TWB::GUI {

/// The program of a command line whose arguments may be quoted: the first word, where a quoted
/// stretch counts as one word, without its surrounding quotes.
TWBCONSOLE_EXPORT QString getProgramPath(const QString& commandLine);

} // namespace TWB::GUI
