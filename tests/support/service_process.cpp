#include "support/service_process.h"

#include <QElapsedTimer>
#include <QLocalSocket>
#include <QThread>
#include <QtTest>

#include <csignal>

namespace TWB::Test {

ServiceProcess::ServiceProcess(const QString& socketPath, const QString& dataDir)
    : m_socket(socketPath)
    , m_dataDir(dataDir)
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
}

ServiceProcess::~ServiceProcess()
{
    if (isRunning()) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
}

QString ServiceProcess::logText(const QString& folder)
{
    QString text;
    for (const QFileInfo& day : QDir(folder).entryInfoList({QStringLiteral("twbd-*.log")}, QDir::Files, QDir::Name)) {
        QFile log(day.absoluteFilePath());
        if (log.open(QIODevice::ReadOnly))
            text += QString::fromUtf8(log.readAll());
    }
    return text;
}

QString ServiceProcess::program()
{
    return QStringLiteral(TWBD_PROGRAM);
}

bool ServiceProcess::answers(const QString& socketPath)
{
    QLocalSocket probe;
    probe.connectToServer(socketPath);
    const bool ok = probe.waitForConnected(200);
    probe.abort();
    return ok;
}

bool ServiceProcess::start(int timeoutMs)
{
    m_process.start(program(),
        {QStringLiteral("--foreground"), QStringLiteral("--socket"), m_socket, QStringLiteral("--data-dir"),
            m_dataDir});
    if (!m_process.waitForStarted(timeoutMs))
        return false;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < timeoutMs) {
        if (m_process.state() == QProcess::NotRunning)
            return false;
        if (answers(m_socket))
            return true;
        QTest::qWait(20);
    }
    return false;
}

bool ServiceProcess::terminate(int timeoutMs)
{
    if (!isRunning())
        return false;
    ::kill(pid_t(m_process.processId()), SIGTERM);
    if (!m_process.waitForFinished(timeoutMs))
        return false;
    return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
}

void ServiceProcess::kill()
{
    m_process.kill();
    m_process.waitForFinished(5000);
}

QString ServiceProcess::output()
{
    m_output += QString::fromLocal8Bit(m_process.readAll());
    return m_output;
}

} // namespace TWB::Test
