#pragma once

#include "platform/twbplatform_export.h"

#include <QString>

namespace TWB::Defines {

/// Where the product's installed files are. Reached through to().
class TWBPLATFORM_EXPORT AppPath final
{
public:
    static const AppPath& to();

    /// Shared read-only data: $TWB_SHARE_DIR, else <program folder>/../share/tidewrack when it
    /// exists, else the installed share folder.
    QString share() const;
    /// Images of the console.
    QString guiImageDir() const;
    /// Folder of the programs, with a trailing slash.
    QString bin() const;

private:
    AppPath() = default;
};

} // namespace TWB::Defines
