#include "frame/application_event_controller.h"
#include "platform/communication/connection_manager.h"
#include "service_fixture.h"
#include "support/log_capture.h"
#include "support/service_process.h"
#include "support/test_caller.h"
#include "support/test_environment.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using TWB::Common::Communication::ConnectionManager;
using TWB::GUI::ApplicationEventController;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceProcess;
using TWB::Test::ServiceReply;
using TWB::Test::TestCaller;
using TWB::Test::TestEnvironment;

namespace {

/// Sends one raw line on a fresh connection and returns what comes back before the service closes
/// the connection or the time runs out.
QByteArray exchangeRaw(const QString& socketPath, const QByteArray& line, int timeoutMs = 3000)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    if (!socket.waitForConnected(2000))
        return "not connected";
    socket.write(line);
    socket.waitForBytesWritten(2000);
    QByteArray received;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < timeoutMs && !received.endsWith('\n')) {
        if (!socket.waitForReadyRead(100) && socket.state() != QLocalSocket::ConnectedState)
            break;
        received += socket.readAll();
    }
    return received;
}

// Sends "SetProductOptions" through the console's channel; the service's refusal, or "" on success.
QString setOptions(const QJsonObject& options)
{
    const ServiceReply reply = ServiceFixture::callThroughChannel(
        QStringLiteral("SetProductOptions"), {{QStringLiteral("options"), options}});
    return reply.received ? reply.error : QStringLiteral("no answer");
}

// A refused value is logged with the value: a line that shows where the log goes now.
void logMarker(const QString& marker)
{
    QVERIFY(!setOptions({{QStringLiteral("ProxyHost"), marker}}).isEmpty());
}

// A log file of the service whose last change was `days` ago, named after that day.
QString oldLog(const QString& folder, const QString& name, int days)
{
    const QDateTime when = QDateTime::currentDateTime().addDays(-days);
    const QString path = folder + QLatin1Char('/')
        + (name.contains(QLatin1String("%1")) ? name.arg(when.date().toString(Qt::ISODate)) : name);
    TestEnvironment::writeFile(path, "an old day\n", when);
    return path;
}

} // namespace

class TestTwbd : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<ServiceProcess> m_service;

    QString logText() const { return ServiceProcess::logText(m_env->dataDir() + QStringLiteral("/log")); }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_service = std::make_unique<ServiceProcess>(m_env->socketPath(), m_env->dataDir());
        QVERIFY2(m_service->start(), qPrintable(m_service->output()));
        QVERIFY(ConnectionManager::instance());
        TestEnvironment::speedUpChannel();
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
    }

    void init()
    {
        if (!m_service->isRunning())
            QVERIFY2(m_service->start(), qPrintable(m_service->output()));
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
    }

    void malformedRequestsGetAReplyThatNamesTheFault_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("error");
        QTest::newRow("no command") << QByteArray("{\"type\":\"request\",\"id\":\"{1}\",\"params\":{}}"
                                                  "\n")
                                    << "Request has no command name";
        QTest::newRow("no id") << QByteArray("{\"type\":\"request\",\"command\":\"PlanGetList\"}"
                                             "\n")
                               << "Request has no id";
        QTest::newRow("params not an object") << QByteArray(
            "{\"type\":\"request\",\"id\":\"{2}\",\"command\":\"PlanGetList\",\"params\":[1]}"
            "\n") << "Parameter \"params\" of PlanGetList is not an object";
        QTest::newRow("not a request") << QByteArray("{\"type\":\"reply\",\"id\":\"{3}\",\"command\":\"X\"}"
                                                     "\n")
                                       << "is not a request";
    }

    void malformedRequestsGetAReplyThatNamesTheFault()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, error);
        const QByteArray received = exchangeRaw(m_env->socketPath(), line);
        const QJsonObject reply = QJsonDocument::fromJson(received).object();
        QCOMPARE(reply.value(QStringLiteral("type")).toString(), QStringLiteral("reply"));
        QCOMPARE(reply.value(QStringLiteral("success")).toBool(true), false);
        QVERIFY2(reply.value(QStringLiteral("error_string")).toString().contains(error), received.constData());
    }

    void secondServiceOnTheSameSocketRefusesToStart()
    {
        QProcess second;
        second.setProcessChannelMode(QProcess::MergedChannels);
        second.start(ServiceProcess::program(),
            {QStringLiteral("--foreground"), QStringLiteral("--socket"), m_env->socketPath(),
                QStringLiteral("--data-dir"), m_env->dataDir()});
        QVERIFY(second.waitForFinished(10000));
        QCOMPARE(second.exitCode(), 1);
        QVERIFY(QString::fromLocal8Bit(second.readAll()).contains(QStringLiteral("Another service already answers")));
        QVERIFY(ServiceProcess::answers(m_env->socketPath()));
    }

    void peerOfAnotherUserIsRefused()
    {
        if (::getuid() != 0)
            QSKIP("Needs root to connect as another user");
        // Open the way to the socket for the test, so that only the service's own check stands.
        const QString folder = QFileInfo(m_env->socketPath()).absolutePath();
        QVERIFY(::chmod(QFile::encodeName(folder).constData(), 0711) == 0);
        QVERIFY(::chmod(QFile::encodeName(m_env->socketPath()).constData(), 0666) == 0);
        const QByteArray path = QFile::encodeName(m_env->socketPath());

        const pid_t child = ::fork();
        if (child == 0) {
            // Only async-signal-safe calls from here on.
            if (::setgid(65534) != 0 || ::setuid(65534) != 0)
                ::_exit(3);
            const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
            struct sockaddr_un address
            { };
            address.sun_family = AF_UNIX;
            ::strncpy(address.sun_path, path.constData(), sizeof(address.sun_path) - 1);
            if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0)
                ::_exit(4);
            const char request[] = "{\"type\":\"request\",\"id\":\"{1}\",\"command\":\"PlanGetList\"}\n";
            if (::write(fd, request, sizeof(request) - 1) < 0)
                ::_exit(0); // closed before the write: refused
            char buffer[256];
            const ssize_t n = ::read(fd, buffer, sizeof(buffer));
            ::_exit(n > 0 ? 1 : 0); // an answer means the service talked to a stranger
        }
        QVERIFY(child > 0);
        int status = 0;
        QVERIFY(::waitpid(child, &status, 0) == child);
        ::chmod(QFile::encodeName(folder).constData(), 0700);
        ::chmod(QFile::encodeName(m_env->socketPath()).constData(), 0600);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
        QTRY_VERIFY(logText().contains(QStringLiteral("Refused a console of uid 65534")));
    }

    void logFollowsTheLogPathOption()
    {
        const QString folder = m_env->root() + QStringLiteral("/chosen/logs");
        const QString defaultFolder = m_env->dataDir() + QStringLiteral("/log");
        auto putBack = qScopeGuard([] { setOptions({{QStringLiteral("LogPath"), QString()}}); });
        QCOMPARE(setOptions({{QStringLiteral("LogPath"), folder}}), QString());
        logMarker(QStringLiteral("first_marker"));
        QVERIFY(ServiceProcess::logText(folder).contains(QStringLiteral("first_marker")));
        QVERIFY(!ServiceProcess::logText(defaultFolder).contains(QStringLiteral("first_marker")));

        // A folder it cannot make is refused, the option keeps its value and the log its place.
        const QString aFile = m_env->root() + QStringLiteral("/a-file");
        TestEnvironment::writeFile(aFile, "not a folder\n");
        const QString underAFile = aFile + QStringLiteral("/logs");
        QCOMPARE(setOptions({{QStringLiteral("LogPath"), underAFile}}),
            QStringLiteral("Option \"LogPath\" cannot be \"%1\": Cannot create the folder %1").arg(underAFile));
        logMarker(QStringLiteral("refusal_marker"));
        QVERIFY(ServiceProcess::logText(folder).contains(QStringLiteral("refusal_marker")));

        // Kept over a restart, and back to the data folder once cleared.
        QVERIFY(m_service->terminate());
        QVERIFY2(m_service->start(), qPrintable(m_service->output()));
        QTRY_VERIFY(ConnectionManager::instance()->isLocalManagmentConnected());
        QVERIFY(ServiceProcess::logText(folder).contains(QStringLiteral("listens on")));
        putBack.dismiss();
        QCOMPARE(setOptions({{QStringLiteral("LogPath"), QString()}}), QString());
        logMarker(QStringLiteral("home_marker"));
        QVERIFY(ServiceProcess::logText(defaultFolder).contains(QStringLiteral("home_marker")));
        QVERIFY(!ServiceProcess::logText(folder).contains(QStringLiteral("home_marker")));
    }

    void oldLogsAreRemovedAfterTheRotateDays_data()
    {
        QTest::addColumn<QString>("days");
        QTest::addColumn<bool>("restart");
        QTest::addColumn<bool>("oldRemoved");
        QTest::newRow("2 days, at start") << QStringLiteral("2") << true << true;
        QTest::newRow("2 days, when set") << QStringLiteral("2") << false << true;
        QTest::newRow("0 keeps all") << QStringLiteral("0") << true << false;
    }

    void oldLogsAreRemovedAfterTheRotateDays()
    {
        QFETCH(QString, days);
        QFETCH(bool, restart);
        QFETCH(bool, oldRemoved);
        const QString folder = m_env->dataDir() + QStringLiteral("/log");
        auto putBack = qScopeGuard([] { setOptions({{QStringLiteral("Logs Rotate TimeOut"), QString()}}); });
        if (restart)
            QCOMPARE(setOptions({{QStringLiteral("Logs Rotate TimeOut"), days}}), QString());
        const QString old = oldLog(folder, QStringLiteral("twbd-%1.log"), 5);
        const QString young = oldLog(folder, QStringLiteral("twbd-%1.log"), 1);
        const QString undated = oldLog(folder, QStringLiteral("twbd.log"), 5);
        // Not the service's own: the console's log and a stranger's.
        const QString console = oldLog(folder, QStringLiteral("twbgui-%1.log"), 5);
        const QString stranger = oldLog(folder, QStringLiteral("twbd-notes-%1.log"), 5);
        if (restart) {
            QVERIFY(m_service->terminate());
            QVERIFY2(m_service->start(), qPrintable(m_service->output()));
        } else {
            QCOMPARE(setOptions({{QStringLiteral("Logs Rotate TimeOut"), days}}), QString());
        }
        QTRY_COMPARE(QFile::exists(old), !oldRemoved);
        QTRY_COMPARE(QFile::exists(undated), !oldRemoved);
        for (const QString& path : {young, console, stranger})
            QVERIFY2(QFile::exists(path), qPrintable(path));
    }

    void hostSeesTheServiceGoAndComeBack()
    {
        ApplicationEventController controller;
        QSignalSpy connected(&controller, &ApplicationEventController::localManagmentConnected);
        QSignalSpy disconnected(&controller, &ApplicationEventController::localManagmentDisconnected);
        controller.init();
        QCOMPARE(connected.count(), 1);

        m_service->kill();
        QVERIFY(disconnected.wait());
        // A killed service leaves its socket file behind; the next one must take it over.
        QVERIFY(QFileInfo::exists(m_env->socketPath()));
        QVERIFY2(m_service->start(), qPrintable(m_service->output()));
        QVERIFY(connected.wait(5000));
        QCOMPARE(connected.count(), 2);
        QCOMPARE(disconnected.count(), 1);

        TestCaller caller;
        QSignalSpy failed(&caller, &TestCaller::failed);
        QVERIFY(caller.send(QStringLiteral("RegenerateHID")));
        QVERIFY(failed.wait());
        QCOMPARE(failed.at(0).at(0).toString(), QStringLiteral("Unknown command: RegenerateHID"));
    }

    void sigtermStopsCleanly()
    {
        QVERIFY(m_service->terminate());
        QVERIFY(!QFileInfo::exists(m_env->socketPath()));
        QVERIFY(m_service->output().contains(QStringLiteral("twbd stopped")));
        QVERIFY(logText().contains(QStringLiteral("Stopping on signal 15")));
        QTRY_VERIFY(!ConnectionManager::instance()->isLocalManagmentConnected());
    }

    void detachedServiceReturnsOnceItListens()
    {
        QVERIFY(m_service->terminate() || !m_service->isRunning());
        const QString socket = m_env->root() + QStringLiteral("/detached/service.sock");
        QProcess starter;
        starter.start(ServiceProcess::program(),
            {QStringLiteral("--socket"), socket, QStringLiteral("--data-dir"), m_env->dataDir()});
        QVERIFY(starter.waitForFinished(10000));
        QCOMPARE(starter.exitCode(), 0);
        // No waiting: the starter returned only once the socket was there.
        QVERIFY(ServiceProcess::answers(socket));

        const QRegularExpression pidLine(
            QStringLiteral("\\(pid (\\d+)\\) listens on %1").arg(QRegularExpression::escape(socket)));
        const QRegularExpressionMatch match = pidLine.match(logText());
        QVERIFY(match.hasMatch());
        const pid_t pid = pid_t(match.captured(1).toInt());
        QVERIFY(pid != pid_t(m_service->pid()));
        QCOMPARE(::kill(pid, SIGTERM), 0);
        QTRY_VERIFY(!QFileInfo::exists(socket));
    }
};

QTEST_MAIN(TestTwbd)
#include "tst_twbd.moc"
