#include "frame/application.h"

#include "frame/system_url_open_handler.h"
#include "platform/defines/app_path.h"
#include "platform/defines/common.h"
#include "platform/defines/files_operations.h"
#include "platform/defines/path.h"
#include "platform/defines/provider_defines.h"
#include "platform/rebranding/rebranding.h"

#include <QDesktopServices>
#include <QProcess>

namespace TWB::GUI {

namespace {
const char* const handledSchemes[] = {"file", "http", "https"};

/// The edition and the support address, read from the configuration file once: they cannot change while
/// the console runs, and the widgets that ask do so while they paint.
struct Configuration
{
    bool managed = SHARED::defines::common::is_fbs();
    QString supportEmail = SHARED::functions::files_operations::get_attrib_from_file(
        SHARED::defines::Path::ETC::CONFIG::tidewrackBackup_conf(), QStringLiteral("supportEmail"));
};

const Configuration& configuration()
{
    static const Configuration read;
    return read;
}
} // namespace

Application::Application(int& argc, char** argv, int flags)
    : QApplication(argc, argv, flags)
{ }

void Application::restart()
{
    // The folder may hold blanks, so the whole path stands in quotes.
    const QString commandLine
        = QStringLiteral("\"%1%2\"").arg(SHARED::defines::Path::bin_path(), QStringLiteral("twbgui"));
    QStringList parts = QProcess::splitCommand(commandLine);
    if (!parts.isEmpty()) {
        const QString program = parts.takeFirst();
        QProcess::startDetached(program, parts);
    }
    QCoreApplication::quit();
}

bool Application::isStandalon()
{
    return !configuration().managed;
}

bool Application::isFbs()
{
    return configuration().managed;
}

QString Application::applicationName()
{
    static TWB::Defines::Rebranding rebranding;
    return rebranding.value(QStringLiteral("ProductName")).toString();
}

QString Application::companyName()
{
    static TWB::Defines::Rebranding rebranding;
    return rebranding.value(QStringLiteral("CompanyName")).toString();
}

QString Application::copyright()
{
    static TWB::Defines::Rebranding rebranding;
    return rebranding.value(QStringLiteral("CopyrightText")).toString();
}

QString Application::website()
{
    static TWB::Defines::Rebranding rebranding;
    return rebranding.value(QStringLiteral("WebSite")).toString();
}

QString Application::buildVersion()
{
    return TWB::defines::ProviderDefines::BuildVersion();
}

QString Application::getSharePath()
{
    return TWB::Defines::AppPath::to().share();
}

QString Application::getImagesPath()
{
    if (isFbs())
        return TWB::Defines::AppPath::to().share() + QStringLiteral("/images");
    return TWB::Defines::AppPath::to().guiImageDir();
}

QString Application::supportEmail()
{
    return configuration().supportEmail;
}

void Application::openURL(const QUrl& url)
{
    auto* handler = new Handlers::SystemUrlOpenHandler;
    for (const char* scheme : handledSchemes)
        QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), handler, "handleUrl");
    QDesktopServices::openUrl(url);
    for (const char* scheme : handledSchemes)
        QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
    handler->deleteLater();
}

} // namespace TWB::GUI
