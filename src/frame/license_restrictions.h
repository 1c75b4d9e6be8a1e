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
    /// The edition as a user reads it: "Free", "Personal", "Business".
    static QString editionTitle();
    static bool isFreeEdition();
    static bool isNotificationsAvailable();
    /// Pre- and post-actions: allowed by the licence and by the product's rebranding.
    static bool isPrePostActionsAvailable();
    /// Editions that may back up only one network share.
    static bool hasShareLimit();
    /// How many network shares one plan may back up; -1 for any number.
    static int shareLimit();
};

} // namespace TWB::GUI::License
