#include "platform/defines/app_path.h"

#include "platform/build_config.h"
#include "platform/defines/path.h"

#include <QDir>
#include <QFileInfo>

namespace TWB::Defines {

const AppPath& AppPath::to()
{
    static const AppPath path;
    return path;
}

QString AppPath::share() const
{
    const QString own = QString::fromLocal8Bit(qgetenv("TWB_SHARE_DIR"));
    if (!own.isEmpty())
        return QDir::cleanPath(own);
    const QString beside = QDir::cleanPath(bin() + QStringLiteral("../share/tidewrack"));
    if (QFileInfo(beside).isDir())
        return beside;
    return QStringLiteral(TWB_INSTALL_DATADIR "/tidewrack");
}

QString AppPath::guiImageDir() const
{
    return share() + QStringLiteral("/images/gui");
}

QString AppPath::bin() const
{
    return SHARED::defines::Path::bin_path();
}

} // namespace TWB::Defines
