#pragma once

#include "platform/twbplatform_export.h"

#include <QString>

namespace TWL::Utitlity {

/// Reads a number of seconds as a short duration for tables: "45 s", "5 min 07 s", "1 h 02 min",
/// "3 d 04 h". Only the two largest units are shown; a negative duration reads "N/A".
class TWBPLATFORM_EXPORT TimeDuraton final
{
public:
    static QString toString(int seconds);
};

} // namespace TWL::Utitlity
