#include "engine_test_support.h"
#include "raw_client.h"
#include "service_fixture.h"

#include "platform/plan/backup_file.h"
#include "support/cloud_peers.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QtTest>

#include <memory>

using namespace TWB::Info::Plan;
using TWB::Test::EngineTestSupport;
using TWB::Test::MotoPeer;
using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
using Info = Backup::StorageInfo;

namespace {

const QString bucket = QStringLiteral("vault");
const QString prefix = QStringLiteral("laptop");

// Every object below a key prefix, as S3 reports it in HEAD: size, storage class, server side encryption.
const char* const listObjects = R"(
import boto3, json, sys
s3 = boto3.client("s3", endpoint_url=sys.argv[1], region_name="us-east-1")
out = []
for page in s3.get_paginator("list_objects_v2").paginate(Bucket=sys.argv[2], Prefix=sys.argv[3]):
    for o in page.get("Contents", []):
        h = s3.head_object(Bucket=sys.argv[2], Key=o["Key"])
        out.append({"key": o["Key"], "size": o["Size"], "class": h.get("StorageClass", "STANDARD"),
                    "sse": h.get("ServerSideEncryption", "")})
print(json.dumps(out))
)";

} // namespace

/// Storage class, server side encryption and compression of Amazon plans, seen on the objects that a
/// real S3 server (moto) holds after a backup through the real twbd.
class TestEngineS3 : public QObject
{
    Q_OBJECT

private:
    MotoPeer m_moto;
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    QUuid m_account;
    QString m_source;

    QJsonArray objects(const QString& keyPrefix)
    {
        QProcess python;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("AWS_CA_BUNDLE"));
        environment.insert(QStringLiteral("AWS_ACCESS_KEY_ID"), m_moto.accessKey());
        environment.insert(QStringLiteral("AWS_SECRET_ACCESS_KEY"), m_moto.secretKey());
        python.setProcessEnvironment(environment);
        python.start(QStringLiteral("python3"),
            {QStringLiteral("-c"), QLatin1String(listObjects), QStringLiteral("http://") + m_moto.endpoint(), bucket,
                keyPrefix});
        if (!python.waitForFinished(60000) || python.exitCode() != 0)
            qWarning() << python.readAllStandardError();
        return QJsonDocument::fromJson(python.readAllStandardOutput()).array();
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QString missing = MotoPeer::missing();
        if (!missing.isEmpty())
            QSKIP(qPrintable(missing));
        QVERIFY2(m_moto.start(), qPrintable(m_moto.output()));
        m_service = std::make_unique<ServiceFixture>();
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        m_client = std::make_unique<RawClient>();
        QVERIFY(m_client->connectTo(m_service->socketPath()));
        // Amazon S3 in China is the Amazon back-end whose endpoint the account names.
        m_account = QUuid::createUuid();
        const QJsonObject params {{QStringLiteral("AccessKey"), m_moto.accessKey()},
            {QStringLiteral("SecretKey"), m_moto.secretKey()}, {QStringLiteral("ContainerName"), bucket},
            {QStringLiteral("Endpoint"), m_moto.endpoint()}, {QStringLiteral("UseSsl"), false},
            {QStringLiteral("Region"), QStringLiteral("us-east-1")}};
        QVERIFY(m_client
                    ->call(QStringLiteral("SaveStorage"),
                        {{QStringLiteral("ID"), m_account.toString()},
                            {QStringLiteral("displayName"), QStringLiteral("S3")}, {QStringLiteral("prefix"), prefix},
                            {QStringLiteral("type"), 20}, {QStringLiteral("params"), params}})
                    .success);
        // Text that compresses well and has no repeating chunk for restic to deduplicate.
        QByteArray ledger;
        for (int line = 0; ledger.size() < 2 * 1024 * 1024; ++line)
            ledger += QByteArray("entry ") + QByteArray::number(line) + " of the ledger, amount "
                + QByteArray::number(line * 37 % 1000) + "\n";
        m_source = m_service->environment().root() + QStringLiteral("/books");
        EngineTestSupport::writeFile(m_source + QStringLiteral("/ledger.txt"), ledger);
    }

    void objectsGetTheClassEncryptionAndCompressionOfThePlan_data()
    {
        QTest::addColumn<int>("storageClass");
        QTest::addColumn<bool>("sse");
        QTest::addColumn<bool>("compression");
        QTest::addColumn<QString>("expectedClass");
        // restic's own back-end sets the infrequent-access classes; the others and SSE go through rclone.
        QTest::newRow("Standard-IA, compressed") << int(Info::StandardIA) << false << true << "STANDARD_IA";
        QTest::newRow("Glacier Instant Retrieval, SSE, uncompressed")
            << int(Info::GlacierInstantRetrieval) << true << false << "GLACIER_IR";
    }

    void objectsGetTheClassEncryptionAndCompressionOfThePlan()
    {
        QFETCH(int, storageClass);
        QFETCH(bool, sse);
        QFETCH(bool, compression);
        QFETCH(QString, expectedClass);
        auto plan = EngineTestSupport::backupPlan(m_account, QStringLiteral("Books"), {m_source});
        plan->setUseCompression(compression);
        plan->storageInfo().setStorageClassAmazonS3(Info::AmazonS3StorageClass(storageClass));
        plan->storageInfo().setUseSSE(sse);
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        const auto outcome = EngineTestSupport::run(*m_client, plan->id());
        QVERIFY2(outcome.status == 6, qPrintable(outcome.message));

        const QString repository = prefix + QLatin1Char('/') + plan->id().toString(QUuid::WithoutBraces);
        const QJsonArray stored = objects(repository + QStringLiteral("/data/"));
        QVERIFY(!stored.isEmpty());
        qint64 bytes = 0;
        for (const QJsonValue& value : stored) {
            const QJsonObject object = value.toObject();
            QCOMPARE(object.value(QStringLiteral("class")).toString(), expectedClass);
            QCOMPARE(object.value(QStringLiteral("sse")).toString(), sse ? QStringLiteral("AES256") : QString());
            bytes += qint64(object.value(QStringLiteral("size")).toDouble());
        }
        // The ledger is 2 MiB and compresses to well under a quarter.
        if (compression)
            QVERIFY2(bytes < 512 * 1024, qPrintable(QString::number(bytes)));
        else
            QVERIFY2(bytes > 2 * 1024 * 1024, qPrintable(QString::number(bytes)));
    }
};

QTEST_MAIN(TestEngineS3)
#include "tst_engine_s3.moc"
