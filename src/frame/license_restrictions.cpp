#include "frame/license_restrictions.h"

#include "platform/defines/files_operations.h"
#include "platform/defines/path.h"
#include "platform/rebranding/rebranding.h"

namespace TWB::GUI::License {

QString LicenseRestrictions::edition()
{
    const QString value = SHARED::functions::files_operations::get_attrib_from_file(
        SHARED::defines::Path::ETC::CONFIG::tidewrackBackup_conf(), QStringLiteral("license"));
    return value.isEmpty() ? QStringLiteral("business") : value.toLower();
}

QString LicenseRestrictions::editionTitle()
{
    const QString e = edition();
    return e.isEmpty() ? e : e.left(1).toUpper() + e.mid(1);
}

bool LicenseRestrictions::isFreeEdition()
{
    return edition() == QLatin1String("free");
}

bool LicenseRestrictions::isNotificationsAvailable()
{
    return !isFreeEdition();
}

bool LicenseRestrictions::isPrePostActionsAvailable()
{
    // Read afresh: a licence or rebranding change applies without a restart.
    const TWB::Defines::Rebranding rebranding;
    return !isFreeEdition() && rebranding.value(QStringLiteral("AllowPrePostActions")).toBool();
}

bool LicenseRestrictions::hasShareLimit()
{
    const QString e = edition();
    return e == QLatin1String("free") || e == QLatin1String("personal");
}

int LicenseRestrictions::shareLimit()
{
    return hasShareLimit() ? 1 : -1;
}

} // namespace TWB::GUI::License
