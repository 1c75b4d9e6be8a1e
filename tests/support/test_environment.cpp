#include "support/test_environment.h"

#include "platform/communication/connection_manager.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QtTest>

namespace TWB::Test {

TestEnvironment::TestEnvironment()
    : m_dir(QDir::tempPath() + QStringLiteral("/twb-test-XXXXXX"))
{
    QStandardPaths::setTestModeEnabled(true);
    QDir().mkpath(dataDir());
    qputenv("TWB_SERVICE_SOCKET", QFile::encodeName(socketPath()));
    qputenv("TWB_DATA_DIR", QFile::encodeName(dataDir()));
    qputenv("TWB_CONFIG_FILE", QFile::encodeName(configFile()));
    qputenv("TWB_REBRANDING_FILE", QFile::encodeName(rebrandingFile()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_dir.path() + QStringLiteral("/runtime")));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_dir.path() + QStringLiteral("/xdg-data")));
}

QString TestEnvironment::socketPath() const
{
    return m_dir.path() + QStringLiteral("/service.sock");
}

QString TestEnvironment::dataDir() const
{
    return m_dir.path() + QStringLiteral("/data");
}

QString TestEnvironment::configFile() const
{
    return m_dir.path() + QStringLiteral("/tidewrack.conf");
}

QString TestEnvironment::rebrandingFile() const
{
    return m_dir.path() + QStringLiteral("/rebranding.ini");
}

void TestEnvironment::speedUpChannel()
{
    if (auto connection = TWB::Common::Communication::ConnectionManager::instance()) {
        connection->setRetryIntervals(20, 100);
        connection->setQueueTimeout(2000);
    }
}

QString TestEnvironment::outputDir()
{
    QString dir = QString::fromLocal8Bit(qgetenv("TWB_TEST_OUTPUT"));
    if (dir.isEmpty())
        dir = QDir::tempPath() + QStringLiteral("/twb-test-output");
    QDir().mkpath(dir);
    return dir;
}

void TestEnvironment::writeFile(const QString& path, const QByteArray& text, const QDateTime& modified)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    QCOMPARE(file.write(text), qint64(text.size()));
    // Written out first, or the close would stamp the file anew.
    QVERIFY(file.flush());
    if (modified.isValid())
        QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
}

} // namespace TWB::Test
