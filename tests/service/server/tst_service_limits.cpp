#include "raw_client.h"
#include "support/service_process.h"
#include "support/test_environment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QtTest>

#include <memory>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using TWB::Test::RawClient;
using TWB::Test::ServiceProcess;
using TWB::Test::ServiceReply;
using TWB::Test::TestEnvironment;

namespace {

int modeOf(const QString& path)
{
    struct stat info
    { };
    if (::lstat(QFile::encodeName(path).constData(), &info) != 0)
        return -1;
    return int(info.st_mode & 07777);
}

// Resident memory of a process, in bytes.
qint64 residentBytes(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLongLong() * 1024;
    }
    return -1;
}

/// A console that the test drives byte by byte, without Qt's buffers: what it writes is what the
/// service gets, and what it does not read stays with the service.
class PlainSocket
{
public:
    explicit PlainSocket(const QString& path)
    {
        m_fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0);
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        const QByteArray name = QFile::encodeName(path);
        std::memcpy(address.sun_path, name.constData(), size_t(qMin(name.size(), int(sizeof(address.sun_path)) - 1)));
        m_connected = ::connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    }
    ~PlainSocket() { ::close(m_fd); }
    PlainSocket(const PlainSocket&) = delete;
    PlainSocket& operator=(const PlainSocket&) = delete;

    bool connected() const { return m_connected; }
    bool closedByPeer() const { return m_closed; }

    /// Writes what it can without waiting; returns the bytes written.
    qint64 writeSome(const char* data, qint64 size)
    {
        const ssize_t written = ::send(m_fd, data, size_t(size), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (written < 0) {
            if (errno == EPIPE || errno == ECONNRESET)
                m_closed = true;
            return 0;
        }
        return written;
    }
    /// Reads what is there; returns the newlines seen.
    int readLines()
    {
        char buffer[65536];
        int lines = 0;
        for (;;) {
            const ssize_t got = ::recv(m_fd, buffer, sizeof(buffer), MSG_DONTWAIT);
            if (got == 0)
                m_closed = true;
            if (got <= 0)
                return lines;
            lines += int(std::count(buffer, buffer + got, '\n'));
        }
    }
    int fd() const { return m_fd; }

private:
    int m_fd = -1;
    bool m_connected = false;
    bool m_closed = false;
};

QByteArray request(int number, int idLength)
{
    const QByteArray id = QByteArray::number(number).rightJustified(idLength, '0');
    return "{\"type\":\"request\",\"id\":\"" + id + "\",\"command\":\"NoSuchCommand\",\"params\":{}}\n";
}

} // namespace

/// What the service holds in memory for consoles that misbehave, and where it lets itself listen.
class TestServiceLimits : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_env;
    std::unique_ptr<ServiceProcess> m_service;

    QString logText() const { return ServiceProcess::logText(m_env->dataDir() + QStringLiteral("/log")); }

    void expectOthersAnswered()
    {
        RawClient other;
        QVERIFY(other.connectTo(m_env->socketPath()));
        const ServiceReply reply = other.call(QStringLiteral("NoSuchCommand"), {}, 5000);
        QVERIFY(reply.received);
        QCOMPARE(reply.error, QStringLiteral("Unknown command: NoSuchCommand"));
    }

    /// Runs twbd on a socket path and returns its exit code, or -1 while it still runs and listens.
    int startOn(const QString& socket, QProcess& process, QString* output)
    {
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(ServiceProcess::program(),
            {QStringLiteral("--foreground"), QStringLiteral("--socket"), socket, QStringLiteral("--data-dir"),
                m_env->root() + QStringLiteral("/path-cases-data")});
        if (!process.waitForStarted(5000))
            return -2;
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < 15000) {
            if (process.waitForFinished(50)) {
                *output = QString::fromLocal8Bit(process.readAll());
                return process.exitCode();
            }
            if (ServiceProcess::answers(socket))
                return -1;
        }
        return -3;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_env = std::make_unique<TestEnvironment>();
        m_service = std::make_unique<ServiceProcess>(m_env->socketPath(), m_env->dataDir());
        QVERIFY2(m_service->start(), qPrintable(m_service->output()));
    }

    void modesAfterAFirstStart()
    {
        // The socket, its folder and everything inside the data folder are the user's alone.
        QCOMPARE(modeOf(m_env->socketPath()), 0600);
        QCOMPARE(modeOf(QFileInfo(m_env->socketPath()).absolutePath()), 0700);
        QCOMPARE(modeOf(m_env->dataDir()), 0700);
        QCOMPARE(modeOf(m_env->dataDir() + QStringLiteral("/log")), 0700);
        const QFileInfoList logs = QDir(m_env->dataDir() + QStringLiteral("/log"))
                                       .entryInfoList({QStringLiteral("twbd-*.log")}, QDir::Files);
        QVERIFY(!logs.isEmpty());
        for (const QFileInfo& log : logs)
            QCOMPARE(modeOf(log.absoluteFilePath()), 0600);
        QCOMPARE(modeOf(m_env->dataDir() + QStringLiteral("/cache")), 0700);
        QCOMPARE(modeOf(m_env->dataDir() + QStringLiteral("/cache/rclone.conf")), 0600);
        QCOMPARE(modeOf(m_env->dataDir() + QStringLiteral("/run")), 0700);
        QCOMPARE(modeOf(m_env->dataDir() + QStringLiteral("/secret.key")), 0600);
    }

    void slowReaderIsHeldBackAndOthersAreStillAnswered()
    {
        // Requests whose replies are never read: replies about 2 KB each, 40,000 of them.
        const int count = 40000;
        QByteArray stream;
        stream.reserve(count * 2100);
        for (int i = 0; i < count; ++i)
            stream += request(i, 2000);
        PlainSocket slow(m_env->socketPath());
        QVERIFY(slow.connected());
        const qint64 before = residentBytes(m_service->pid());
        QVERIFY(before > 0);

        // Write until the service stops taking requests for a whole second.
        qint64 sent = 0;
        QElapsedTimer stalled;
        stalled.start();
        while (sent < stream.size() && stalled.elapsed() < 1000) {
            const qint64 written = slow.writeSome(stream.constData() + sent, stream.size() - sent);
            if (written > 0) {
                sent += written;
                stalled.restart();
            } else {
                QTest::qWait(10);
            }
        }
        QVERIFY(!slow.closedByPeer());
        // It stopped reading well before all were in: it would otherwise hold 80 MB of replies.
        QVERIFY2(sent < stream.size() / 2, qPrintable(QString::number(sent)));
        const qint64 growth = residentBytes(m_service->pid()) - before;
        qInfo() << "requests taken before the service held back:" << sent << "bytes; memory grew by" << growth;
        QVERIFY2(growth < 32 * 1024 * 1024, qPrintable(QString::number(growth)));
        expectOthersAnswered();

        // Once the console reads, every request gets its reply: held back, nothing lost.
        int replies = 0;
        QElapsedTimer clock;
        clock.start();
        while (replies < count && clock.elapsed() < 60000 && !slow.closedByPeer()) {
            if (sent < stream.size())
                sent += slow.writeSome(stream.constData() + sent, stream.size() - sent);
            pollfd wait {slow.fd(), POLLIN, 0};
            ::poll(&wait, 1, 20);
            replies += slow.readLines();
        }
        QCOMPARE(replies, count);
        QVERIFY(logText().contains(QStringLiteral("does not read its replies")));
    }

    void partialLinesOfManyConsolesAreBoundedTogether()
    {
        // Sixteen consoles each send 30 MB of one line that never ends: below the limit of a line,
        // above what the service will hold for all of them.
        const int consoles = 16;
        const qint64 each = qint64(30) * 1024 * 1024;
        std::vector<std::unique_ptr<PlainSocket>> sockets;
        for (int i = 0; i < consoles; ++i) {
            sockets.push_back(std::make_unique<PlainSocket>(m_env->socketPath()));
            QVERIFY(sockets.back()->connected());
        }
        QByteArray chunk(256 * 1024, 'x');
        chunk.prepend("{\"type\":\"request\",\"id\":\"");
        std::vector<qint64> sent(consoles, 0);
        qint64 peak = 0;
        QElapsedTimer clock;
        clock.start();
        bool going = true;
        while (going && clock.elapsed() < 60000) {
            going = false;
            for (int i = 0; i < consoles; ++i) {
                if (sent[i] >= each || sockets[i]->closedByPeer())
                    continue;
                going = true;
                const qint64 written = sockets[i]->writeSome(chunk.constData(), chunk.size());
                sent[i] += written;
                sockets[i]->readLines();
            }
            QTest::qWait(1);
            peak = qMax(peak, residentBytes(m_service->pid()));
        }
        int closed = 0;
        for (int i = 0; i < consoles; ++i) {
            sockets[i]->readLines();
            closed += sockets[i]->closedByPeer() ? 1 : 0;
        }
        qInfo() << "consoles closed:" << closed << "peak memory of the service:" << peak;
        QVERIFY(closed > 0);
        QVERIFY2(peak < qint64(400) * 1024 * 1024, qPrintable(QString::number(peak)));
        QVERIFY(logText().contains(QStringLiteral("Closed the console holding the most unfinished request bytes")));
        expectOthersAnswered();
    }

    void socketPathIsTrustedNoFurtherThanItShould_data()
    {
        QTest::addColumn<QString>("setup");
        QTest::addColumn<bool>("listens");
        QTest::addColumn<QString>("reason");
        QTest::newRow("new folder") << QStringLiteral("new") << true << QString();
        QTest::newRow("stale socket") << QStringLiteral("stale") << true << QString();
        QTest::newRow("plain file") << QStringLiteral("file") << false << QStringLiteral("is not a socket");
        QTest::newRow("folder of its own, 0755") << QStringLiteral("own0755") << true << QString();
        QTest::newRow("shared sticky folder")
            << QStringLiteral("sticky") << false << QStringLiteral("can be written by other users");
        QTest::newRow("private folder in a sticky one") << QStringLiteral("inSticky") << true << QString();
        QTest::newRow("open folder, not sticky")
            << QStringLiteral("open") << false << QStringLiteral("can be written by other users");
    }

    void socketPathIsTrustedNoFurtherThanItShould()
    {
        QFETCH(QString, setup);
        QFETCH(bool, listens);
        QFETCH(QString, reason);
        const QString base = m_env->root() + QStringLiteral("/paths-") + setup;
        QVERIFY(QDir().mkpath(base));
        QString folder = base + QStringLiteral("/sock");
        int expectedMode = 0700;
        if (setup == QLatin1String("own0755") || setup == QLatin1String("stale") || setup == QLatin1String("file")) {
            QVERIFY(QDir().mkpath(folder));
            QCOMPARE(::chmod(QFile::encodeName(folder).constData(), 0755), 0);
            expectedMode = 0755;
        } else if (setup == QLatin1String("sticky") || setup == QLatin1String("open")) {
            QVERIFY(QDir().mkpath(folder));
            expectedMode = setup == QLatin1String("sticky") ? 01777 : 0777;
            QCOMPARE(::chmod(QFile::encodeName(folder).constData(), mode_t(expectedMode)), 0);
        } else if (setup == QLatin1String("inSticky")) {
            QVERIFY(QDir().mkpath(base + QStringLiteral("/shared")));
            QCOMPARE(::chmod(QFile::encodeName(base + QStringLiteral("/shared")).constData(), 01777), 0);
            folder = base + QStringLiteral("/shared/private");
        }
        const QString socket = folder + QStringLiteral("/service.sock");
        if (setup == QLatin1String("file")) {
            QFile victim(socket);
            QVERIFY(victim.open(QIODevice::WriteOnly));
            victim.write("keep me");
        } else if (setup == QLatin1String("stale")) {
            // What a killed service leaves: a socket file nobody listens on.
            const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
            sockaddr_un address {};
            address.sun_family = AF_UNIX;
            std::strncpy(address.sun_path, QFile::encodeName(socket).constData(), sizeof(address.sun_path) - 1);
            QCOMPARE(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
            ::close(fd);
            QCOMPARE(modeOf(socket) >= 0, true);
        }

        QProcess process;
        QString output;
        const int code = startOn(socket, process, &output);
        if (listens) {
            QVERIFY2(code == -1, qPrintable(output));
            QCOMPARE(modeOf(socket), 0600);
            ::kill(pid_t(process.processId()), SIGTERM);
            QVERIFY(process.waitForFinished(10000));
        } else {
            QCOMPARE(code, 1);
            QVERIFY2(output.contains(reason), qPrintable(output));
        }
        // A folder that was there keeps its mode; one made for the socket is private.
        QCOMPARE(modeOf(folder), expectedMode);
        if (setup == QLatin1String("file")) {
            QFile victim(socket);
            QVERIFY(victim.open(QIODevice::ReadOnly));
            QCOMPARE(victim.readAll(), QByteArray("keep me"));
        }
    }

    void cleanupTestCase() { QVERIFY(m_service->terminate()); }
};

QTEST_GUILESS_MAIN(TestServiceLimits)

#include "tst_service_limits.moc"
