#include "platform/defines/path.h"

#include <QCoreApplication>
#include <QDir>

#include <unistd.h>

namespace SHARED::defines::Path {

namespace {
QString fromEnv(const char* name)
{
    return QString::fromLocal8Bit(qgetenv(name));
}
} // namespace

QString bin_path()
{
    QString dir = QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QDir::currentPath();
    if (!dir.endsWith(QLatin1Char('/')))
        dir += QLatin1Char('/');
    return dir;
}

QString dataDir()
{
    const QString own = fromEnv("TWB_DATA_DIR");
    if (!own.isEmpty())
        return QDir::cleanPath(own);
    const QString xdg = fromEnv("XDG_DATA_HOME");
    if (!xdg.isEmpty())
        return QDir::cleanPath(xdg + QStringLiteral("/tidewrack"));
    return QDir::homePath() + QStringLiteral("/.local/share/tidewrack");
}

QString logDir()
{
    return dataDir() + QStringLiteral("/log");
}

QString serviceSocket()
{
    const QString own = fromEnv("TWB_SERVICE_SOCKET");
    if (!own.isEmpty())
        return own;
    const QString runtime = fromEnv("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty())
        return QDir::cleanPath(runtime + QStringLiteral("/tidewrack/service.sock"));
    return QStringLiteral("/tmp/tidewrack-%1/service.sock").arg(::getuid());
}

namespace ETC::CONFIG {
QString tidewrackBackup_conf()
{
    const QString own = fromEnv("TWB_CONFIG_FILE");
    return own.isEmpty() ? QStringLiteral("/etc/tidewrack/tidewrack.conf") : own;
}
} // namespace ETC::CONFIG

} // namespace SHARED::defines::Path
