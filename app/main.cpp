#include "app/console_window.h"
#include "app/service_launcher.h"
#include "frame/application.h"
#include "frame/application_event_controller.h"
#include "platform/logging/twl_debug.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>

int main(int argc, char** argv)
{
    TWB::GUI::Application app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("twbgui"));
    QCoreApplication::setApplicationVersion(TWB::GUI::Application::buildVersion());
    QGuiApplication::setApplicationDisplayName(TWB::GUI::Application::applicationName());

    QCommandLineParser parser;
    parser.setApplicationDescription(TWB::GUI::Application::applicationName());
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption socketOption(QStringLiteral("socket"),
        QStringLiteral("Talk to the service on <path>; a service started by the console listens there."),
        QStringLiteral("path"));
    const QCommandLineOption dataOption(QStringLiteral("data-dir"),
        QStringLiteral("Keep the data of a service started by the console in <folder>."), QStringLiteral("folder"));
    parser.addOptions({socketOption, dataOption});
    parser.process(app);

    // A private instance: the channel reads the socket from the environment, and so does a started twbd.
    QStringList serviceArguments;
    if (parser.isSet(socketOption)) {
        const QString socket = QDir::current().absoluteFilePath(parser.value(socketOption));
        qputenv("TWB_SERVICE_SOCKET", QFile::encodeName(socket));
        serviceArguments << QStringLiteral("--socket") << socket;
    }
    if (parser.isSet(dataOption)) {
        const QString data = QDir::current().absoluteFilePath(parser.value(dataOption));
        qputenv("TWB_DATA_DIR", QFile::encodeName(data));
        serviceArguments << QStringLiteral("--data-dir") << data;
    }
    TWL::TwlDebug::applyDefaultFilter();
    TWL::TwlDebug::installLogFile(QStringLiteral("twbgui"));

    TWB::GUI::ApplicationEventController controller;
    TWB::Host::ServiceLauncher launcher;
    launcher.setServiceArguments(serviceArguments);
    TWB::Host::ConsoleWindow window(controller, launcher);
    controller.init();
    launcher.start();
    window.show();
    return app.exec();
}
