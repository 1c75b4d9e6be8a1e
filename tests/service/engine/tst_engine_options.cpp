#include "engine_test_support.h"
#include "raw_client.h"
#include "service_fixture.h"

#include "platform/plan/backup_file.h"
#include "support/cloud_peers.h"

#include <QStandardPaths>
#include <QtTest>

#include <memory>

using TWB::Test::EngineTestSupport;
using TWB::Test::MotoPeer;
using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;

namespace {

const QString bucket = QStringLiteral("options");

// Every option a run follows, set to something restic would not do by itself.
QJsonObject everyOption()
{
    return {{QStringLiteral("Local Bandwidth"), QStringLiteral("300")},
        {QStringLiteral("Cloud Bandwidth"), QStringLiteral("77")},
        {QStringLiteral("DefaultChunkSize"), QString::number(8 * 1024 * 1024 + 5)},
        {QStringLiteral("MultiThread threads count"), QStringLiteral("3")},
        {QStringLiteral("MultiThread memory usage"), QString::number(200 * 1024 * 1024)},
        {QStringLiteral("IgnoreSSL"), QStringLiteral("true")}, {QStringLiteral("RetryAttempts"), QStringLiteral("4")},
        {QStringLiteral("ProxyHost"), QStringLiteral("proxy.invalid")},
        {QStringLiteral("ProxyPort"), QStringLiteral("3128")}};
}

} // namespace

/// The product's options as restic receives them in real backups through the real twbd: a wrapper in
/// front of restic logs each call's arguments and the variables that carry options, then runs restic.
class TestEngineOptions : public QObject
{
    Q_OBJECT

private:
    MotoPeer m_moto;
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    QUuid m_local;
    QUuid m_s3;
    QString m_source;
    QString m_log;

    // The logged line of the last backup call.
    QString lastBackupCall() const
    {
        const QStringList lines = EngineTestSupport::readText(m_log).split(QLatin1Char('\n'));
        for (auto it = lines.crbegin(); it != lines.crend(); ++it) {
            if (it->contains(QLatin1String(" backup --json")))
                return *it;
        }
        return {};
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QString missing = MotoPeer::missing();
        if (!missing.isEmpty())
            QSKIP(qPrintable(missing));
        QVERIFY2(m_moto.start(), qPrintable(m_moto.output()));
        m_service = std::make_unique<ServiceFixture>();
        const QString root = m_service->environment().root();
        m_log = root + QStringLiteral("/restic-calls.log");
        const QString wrapper = root + QStringLiteral("/restic-wrapper");
        const QString restic = QStandardPaths::findExecutable(QStringLiteral("restic"));
        QVERIFY(!restic.isEmpty());
        EngineTestSupport::writeFile(wrapper,
            QStringLiteral("#!/bin/sh\necho \"GOMEMLIMIT=${GOMEMLIMIT-} HTTPS_PROXY=${HTTPS_PROXY-} "
                           "RCLONE_LOW_LEVEL_RETRIES=${RCLONE_LOW_LEVEL_RETRIES-} $*\" >> '%1'\nexec '%2' \"$@\"\n")
                .arg(m_log, restic)
                .toUtf8());
        QVERIFY(QFile::setPermissions(wrapper, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        qputenv("TWB_RESTIC", wrapper.toUtf8());
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        m_client = std::make_unique<RawClient>();
        QVERIFY(m_client->connectTo(m_service->socketPath()));
        m_local
            = EngineTestSupport::addLocalAccount(*m_client, root + QStringLiteral("/storage"), QStringLiteral("pc"));
        m_s3 = QUuid::createUuid();
        const QJsonObject params {{QStringLiteral("AccessKey"), m_moto.accessKey()},
            {QStringLiteral("SecretKey"), m_moto.secretKey()}, {QStringLiteral("ContainerName"), bucket},
            {QStringLiteral("Endpoint"), m_moto.endpoint()}, {QStringLiteral("UseSsl"), false},
            {QStringLiteral("Region"), QStringLiteral("us-east-1")}};
        QVERIFY(m_client
                    ->call(QStringLiteral("SaveStorage"),
                        {{QStringLiteral("ID"), m_s3.toString()}, {QStringLiteral("displayName"), QStringLiteral("S3")},
                            {QStringLiteral("prefix"), QStringLiteral("pc")}, {QStringLiteral("type"), 20},
                            {QStringLiteral("params"), params}})
                    .success);
        m_source = root + QStringLiteral("/source");
        EngineTestSupport::writeFile(m_source + QStringLiteral("/notes.txt"), EngineTestSupport::noise(300000, 7));
    }

    void backupFollowsTheOptions_data()
    {
        QTest::addColumn<bool>("cloud");
        QTest::addColumn<bool>("set");
        QTest::addColumn<QStringList>("present");
        QTest::addColumn<QStringList>("absent");
        // A file-system storage has its own limit, and neither TLS nor a proxy.
        QTest::newRow("file system") << false << true
                                     << QStringList {"--limit-upload 300 --limit-download 300", "--pack-size 8 ",
                                            "--option local.connections=3", "GOMEMLIMIT=209715200 "}
                                     << QStringList {
                                            "--insecure-tls", "HTTPS_PROXY=http", "s3.retries", "--limit-upload 77"};
        // Go leaves loopback addresses out of the proxy, so the run reaches moto all the same.
        QTest::newRow("S3") << true << true
                            << QStringList {"--limit-upload 77 --limit-download 77", "--pack-size 8 ", "--insecure-tls",
                                   "--option s3.connections=3", "--option s3.retries=4",
                                   "HTTPS_PROXY=http://proxy.invalid:3128 "}
                            << QStringList {"--limit-upload 300", "local.connections"};
        QTest::newRow("nothing set") << true << false << QStringList {"GOMEMLIMIT= HTTPS_PROXY= "}
                                     << QStringList {"--limit-upload", "--pack-size", "connections=", "--insecure-tls",
                                            "retries"};
    }

    void backupFollowsTheOptions()
    {
        QFETCH(bool, cloud);
        QFETCH(bool, set);
        QFETCH(QStringList, present);
        QFETCH(QStringList, absent);
        QJsonObject options = everyOption();
        if (!set) {
            for (const QString& key : options.keys())
                options.insert(key, QString());
        }
        QVERIFY(m_client->call(QStringLiteral("SetProductOptions"), {{QStringLiteral("options"), options}}).success);
        const auto plan = EngineTestSupport::backupPlan(cloud ? m_s3 : m_local, QTest::currentDataTag(), {m_source});
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        const auto outcome = EngineTestSupport::run(*m_client, plan->id());
        // Success also says restic took every flag it was given.
        QVERIFY2(outcome.status == 6, qPrintable(outcome.message));
        const QString call = lastBackupCall();
        for (const QString& text : present)
            QVERIFY2(call.contains(text), qPrintable(QStringLiteral("%1 not in: %2").arg(text, call)));
        for (const QString& text : absent)
            QVERIFY2(!call.contains(text), qPrintable(QStringLiteral("%1 in: %2").arg(text, call)));
    }
};

QTEST_MAIN(TestEngineOptions)
#include "tst_engine_options.moc"
