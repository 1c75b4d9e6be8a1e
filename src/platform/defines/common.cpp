#include "platform/defines/common.h"

#include "platform/defines/files_operations.h"
#include "platform/defines/path.h"

namespace SHARED::defines::common {

namespace {
bool managedEdition()
{
    const QString edition = SHARED::functions::files_operations::get_attrib_from_file(
        SHARED::defines::Path::ETC::CONFIG::tidewrackBackup_conf(), QStringLiteral("edition"));
    return edition.compare(QLatin1String("managed"), Qt::CaseInsensitive) == 0;
}
} // namespace

bool is_standalone()
{
    return !managedEdition();
}

bool is_fbs()
{
    return managedEdition();
}

} // namespace SHARED::defines::common
