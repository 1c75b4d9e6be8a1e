#pragma once

#include "twbconsole_export.h"

#include <QString>

namespace TWB::GUI::License {

/// What the present licence allows. The edition comes from the product configuration file
/// (`license = free | personal | business`); without one the product is unrestricted.
class TWBCONSOLE_EXPORT LicenseRestrictions final
{
public:
    static QString edition();
    static bool isFreeEdition();
    static bool isNotificationsAvailable();
    /// Pre- and post-actions: allowed by the licence and by the product's rebranding.
    static bool isPrePostActionsAvailable();
    /// Editions that may back up only one network share.
    static bool hasShareLimit();
};

} // namespace TWB::GUI::License
