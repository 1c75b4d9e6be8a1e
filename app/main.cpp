#include "app/console_models.h"
#include "app/console_window.h"
#include "app/service_launcher.h"
#include "frame/application.h"
#include "frame/application_event_controller.h"
#include "platform/logging/twl_debug.h"
#include "platform/settings/default_settings.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <memory>

using namespace TWB::GUI;

namespace {

// Waits for the plan table, pictures the window, and ends the process: 0 when all went well.
void runSelfTest(TWB::Host::ConsoleWindow& window, BaseModel* table, const QString& screenshot)
{
    auto finish = [&window, screenshot](bool loaded) {
        if (!loaded) {
            std::fprintf(
                stderr, "twbgui: self-test: the plan table did not load: %s\n", qPrintable(window.connectionText()));
            QCoreApplication::exit(1);
            return;
        }
        // One more turn, so that the views have laid out their rows.
        QTimer::singleShot(300, &window, [&window, screenshot] {
            if (!window.grab().save(screenshot)) {
                std::fprintf(stderr, "twbgui: self-test: cannot write %s\n", qPrintable(screenshot));
                QCoreApplication::exit(1);
                return;
            }
            std::printf("twbgui: self-test passed: %s, picture in %s\n", qPrintable(window.connectionText()),
                qPrintable(screenshot));
            QCoreApplication::exit(0);
        });
    };
    QObject::connect(table, &BaseModel::complite, &window, [finish] { finish(true); });
    QObject::connect(table, &BaseModel::error, &window, [finish] { finish(false); });
    QTimer::singleShot(30000, &window, [finish] { finish(false); });
}

} // namespace

namespace {

struct Options
{
    QCommandLineOption socket {QStringLiteral("socket"),
        QStringLiteral("Talk to the service on <path>; a service started by the console listens there."),
        QStringLiteral("path")};
    QCommandLineOption data {QStringLiteral("data-dir"),
        QStringLiteral("Keep the data of a service started by the console in <folder>."), QStringLiteral("folder")};
    QCommandLineOption selfTest {QStringLiteral("self-test"),
        QStringLiteral("Start against a private service, wait for the plans, save a picture of the window "
                       "and exit: 0 when all went well.")};
    QCommandLineOption screenshot {
        QStringLiteral("screenshot"), QStringLiteral("Where the self-test saves its picture."), QStringLiteral("file")};

    void addTo(QCommandLineParser& parser) const
    {
        parser.setApplicationDescription(Application::applicationName());
        parser.addHelpOption();
        parser.addVersionOption();
        parser.addOptions({socket, data, selfTest, screenshot});
    }
};

void nameTheProgram()
{
    QCoreApplication::setApplicationName(QStringLiteral("twbgui"));
    QCoreApplication::setApplicationVersion(Application::buildVersion());
}

// --help and --version are answered on a terminal, which may have no display at all.
bool asksForTextOnly(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == "--")
            return false;
        if (argument == "--help" || argument == "-h" || argument == "-?" || argument == "--help-all"
            || argument == "--version" || argument == "-v")
            return true;
    }
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    if (asksForTextOnly(argc, argv)) {
        QCoreApplication app(argc, argv);
        nameTheProgram();
        QCommandLineParser parser;
        const Options options;
        options.addTo(parser);
        parser.process(app); // prints and exits
        return 0;
    }

    Application app(argc, argv);
    nameTheProgram();
    QGuiApplication::setApplicationDisplayName(Application::applicationName());
    QGuiApplication::setDesktopFileName(QStringLiteral("tidewrack-console"));

    QCommandLineParser parser;
    const Options options;
    options.addTo(parser);
    const QCommandLineOption& socketOption = options.socket;
    const QCommandLineOption& dataOption = options.data;
    const QCommandLineOption& selfTestOption = options.selfTest;
    const QCommandLineOption& screenshotOption = options.screenshot;
    parser.process(app);
    const bool selfTest = parser.isSet(selfTestOption);
    // The self-test's private service lives in a folder of its own unless one is given.
    std::unique_ptr<QTemporaryDir> privateFolder;
    QString socket = parser.value(socketOption);
    QString data = parser.value(dataOption);
    if (selfTest && socket.isEmpty()) {
        privateFolder = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/twbgui-self-test-XXXXXX"));
        socket = privateFolder->path() + QStringLiteral("/service.sock");
        if (data.isEmpty())
            data = privateFolder->path() + QStringLiteral("/data");
    }

    // A private instance: the channel reads the socket from the environment, and so does a started twbd.
    QStringList serviceArguments;
    if (!socket.isEmpty()) {
        socket = QDir::current().absoluteFilePath(socket);
        qputenv("TWB_SERVICE_SOCKET", QFile::encodeName(socket));
        serviceArguments << QStringLiteral("--socket") << socket;
    }
    if (!data.isEmpty()) {
        data = QDir::current().absoluteFilePath(data);
        qputenv("TWB_DATA_DIR", QFile::encodeName(data));
        serviceArguments << QStringLiteral("--data-dir") << data;
    }
    TWL::TwlDebug::applyDefaultFilter();
    // The console's log goes where the service's does, once the options came from it.
    if (TWL::TwlDebug::installLogFile(QStringLiteral("twbgui")))
        TWB::DefaultSettings::instance()->followLogOptions();

    ApplicationEventController controller;
    TWB::Host::ServiceLauncher launcher;
    launcher.setServiceArguments(serviceArguments);
    launcher.setAttached(selfTest);

    TWB::Host::ConsoleModels models;
    models.start();
    BaseModel* table = models.planTable();

    TWB::Host::ConsoleWindow window(controller, launcher);
    controller.init();
    launcher.start();
    if (selfTest) {
        const QString screenshot = parser.isSet(screenshotOption)
            ? parser.value(screenshotOption)
            : QDir::current().absoluteFilePath(QStringLiteral("twbgui-self-test.png"));
        runSelfTest(window, table, screenshot);
    } else {
        window.restoreLayout();
    }
    window.show();
    return app.exec();
}
