#include "platform/defines/path.h"
#include "platform/defines/provider_defines.h"
#include "platform/logging/twl_debug.h"
#include "service/server/local_service.h"
#include "service/server/unix_signal_watcher.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool hasFlag(int argc, char** argv, const char* flag)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], flag) == 0)
            return true;
    }
    return false;
}

// Forks into the background before Qt starts. The parent stays until the child reports whether it
// listens, so that whoever started the service learns of a failure from the exit code.
int detach(int* readyFd)
{
    int fds[2];
    if (::pipe(fds) != 0)
        return -1;
    const pid_t child = ::fork();
    if (child < 0)
        return -1;
    if (child > 0) {
        ::close(fds[1]);
        char status = 1;
        if (::read(fds[0], &status, 1) != 1)
            status = 1;
        ::_exit(status == 0 ? 0 : 1);
    }
    ::close(fds[0]);
    ::setsid();
    const int null = ::open("/dev/null", O_RDWR);
    if (null >= 0) {
        ::dup2(null, STDIN_FILENO);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(null, STDERR_FILENO);
        if (null > STDERR_FILENO)
            ::close(null);
    }
    *readyFd = fds[1];
    return 0;
}

void reportReady(int readyFd, bool ok)
{
    if (readyFd < 0)
        return;
    const char status = ok ? 0 : 1;
    [[maybe_unused]] const ssize_t written = ::write(readyFd, &status, 1);
    ::close(readyFd);
}

} // namespace

int main(int argc, char** argv)
{
    // --help and --version answer on the terminal, so only a real start detaches.
    const bool foreground = hasFlag(argc, argv, "--foreground") || hasFlag(argc, argv, "--help")
        || hasFlag(argc, argv, "-h") || hasFlag(argc, argv, "--version") || hasFlag(argc, argv, "-v");
    int readyFd = -1;
    if (!foreground && detach(&readyFd) != 0) {
        std::fprintf(stderr, "twbd: cannot detach: %s\n", std::strerror(errno));
        return 1;
    }

    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("twbd"));
    QCoreApplication::setApplicationVersion(TWB::defines::ProviderDefines::BuildVersion());

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Tidewrack Backup local service"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption foregroundOption(
        QStringLiteral("foreground"), QStringLiteral("Stay in the foreground and log to the terminal."));
    const QCommandLineOption socketOption(
        QStringLiteral("socket"), QStringLiteral("Listen on <path>."), QStringLiteral("path"));
    const QCommandLineOption dataOption(
        QStringLiteral("data-dir"), QStringLiteral("Keep the data in <folder>."), QStringLiteral("folder"));
    parser.addOptions({foregroundOption, socketOption, dataOption});
    parser.process(app);

    // The options win over the environment, and the platform layer reads the environment.
    if (parser.isSet(socketOption))
        qputenv("TWB_SERVICE_SOCKET", QFile::encodeName(parser.value(socketOption)));
    if (parser.isSet(dataOption))
        qputenv("TWB_DATA_DIR", QFile::encodeName(parser.value(dataOption)));

    // The data folder will hold the store and the cipher key: nobody else may look inside.
    const QString dataDir = SHARED::defines::Path::dataDir();
    QDir().mkpath(dataDir);
    QFile::setPermissions(dataDir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);

    qSetMessagePattern(QStringLiteral("%{time hh:mm:ss.zzz} %{type} %{category}: %{message}"));
    TWL::TwlDebug log("TWB");
    TWL::TwlDebug::applyDefaultFilter();
    TWL::TwlDebug::setTerminalOutput(foreground);
    if (!TWL::TwlDebug::installLogFile(QStringLiteral("twbd")))
        log.warning() << "Cannot write the log file in" << SHARED::defines::Path::logDir();

    // Signals are caught before the socket exists: whoever learns of the socket may stop the
    // service at once, and must find the socket removed.
    TWB::Service::UnixSignalWatcher watcher;
    QObject::connect(&watcher, &TWB::Service::UnixSignalWatcher::terminationRequested, &app, [&log](int number) {
        log.infoH() << "Stopping on signal" << number;
        QCoreApplication::quit();
    });

    TWB::Service::LocalService service;
    QString error;
    if (!service.start(SHARED::defines::Path::serviceSocket(), dataDir, &error)) {
        log.error() << error;
        if (foreground)
            std::fprintf(stderr, "twbd: %s\n", qPrintable(error));
        reportReady(readyFd, false);
        return 1;
    }
    log.infoH() << "twbd" << TWB::defines::ProviderDefines::BuildVersion()
                << QStringLiteral("(pid %1)").arg(QCoreApplication::applicationPid()) << "listens on"
                << service.server().socketPath() << "with data in" << SHARED::defines::Path::dataDir();
    reportReady(readyFd, true);

    const int code = app.exec();
    service.stop();
    log.infoH() << "twbd stopped";
    TWL::TwlDebug::removeLogFile();
    return code;
}
