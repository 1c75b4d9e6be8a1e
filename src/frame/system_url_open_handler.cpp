#include "frame/system_url_open_handler.h"

#include <QDesktopServices>

namespace TWB::GUI::Handlers {

SystemUrlOpenHandler::SystemUrlOpenHandler(QObject* parent)
    : QObject(parent)
{ }

void SystemUrlOpenHandler::handleUrl(const QUrl& url)
{
    const QByteArray libraryPath = qgetenv("LD_LIBRARY_PATH");
    const QByteArray programPath = qgetenv("PATH");
    qputenv("LD_LIBRARY_PATH", QByteArrayLiteral("/usr/lib:/usr/local/lib"));
    qputenv("PATH", QByteArrayLiteral("/usr/bin:/usr/local/bin"));
    // Qt does not call a URL handler from inside another, so this call goes to the system.
    QDesktopServices::openUrl(url);
    qputenv("LD_LIBRARY_PATH", libraryPath);
    qputenv("PATH", programPath);
}

} // namespace TWB::GUI::Handlers
