#include "engine_test_support.h"
#include "raw_client.h"
#include "service_fixture.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"
#include "support/cloud_peers.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

#include <memory>

using namespace TWB::Info::Plan;
using TWB::Test::EngineTestSupport;
using TWB::Test::RawClient;
using TWB::Test::RunOutcome;
using TWB::Test::ServiceFixture;

namespace {

const QString prefix = QStringLiteral("desk");

bool mount(const QStringList& arguments)
{
    return QProcess::execute(QStringLiteral("mount"), arguments) == 0;
}

} // namespace

/// Restores that cannot write where they go: they fail with the reason and leave what stood there as it was.
/// A file system that refuses writes is a real one: a small tmpfs, full or mounted read-only.
class TestEngineRestoreFaults : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    QUuid m_account;
    QString m_source;
    QString m_mount;
    QString m_item;

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        m_client = std::make_unique<RawClient>();
        QVERIFY(m_client->connectTo(m_service->socketPath()));
        const QString root = m_service->environment().root();
        m_account = EngineTestSupport::addLocalAccount(*m_client, root + QStringLiteral("/storage"), prefix);
        // 3 MiB that do not compress: more than the 1 MiB file system below can hold.
        m_source = root + QStringLiteral("/photos");
        for (int i = 0; i < 3; ++i)
            EngineTestSupport::writeFile(
                m_source + QStringLiteral("/raw%1.bin").arg(i), EngineTestSupport::noise(1 << 20, quint32(i)));
        auto plan = EngineTestSupport::backupPlan(m_account, QStringLiteral("Photos"),
            {QStringLiteral("/TWB_VOLUMES/root") + m_source}, QStringLiteral("pw"));
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        QCOMPARE(EngineTestSupport::run(*m_client, plan->id()).status, 6);
        m_item = QStringLiteral("/%1/TWB_VOLUMES/root%2").arg(prefix, m_source);
        m_mount = root + QStringLiteral("/small");
        QVERIFY(QDir().mkpath(m_mount));
    }

    void cleanup()
    {
        if (geteuid() == 0)
            QProcess::execute(QStringLiteral("umount"), {m_mount});
    }

    void restoreThatCannotWriteLeavesTheDestinationAsItWas_data()
    {
        QTest::addColumn<bool>("readOnly");
        QTest::addColumn<QString>("reason");
        QTest::newRow("full disk") << false << "no space left on device";
        QTest::newRow("read-only file system")
            << true << "cannot be written: cannot create a folder in " + m_mount + ": Read-only file system";
    }

    void restoreThatCannotWriteLeavesTheDestinationAsItWas()
    {
        if (geteuid() != 0)
            QSKIP("Mounting a small or read-only file system needs root");
        // Root in a container may still be refused a mount.
        const QTemporaryDir probe;
        if (!mount({QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"), QStringLiteral("size=64k"),
                QStringLiteral("tmpfs"), probe.path()}))
            QSKIP("This machine does not let the tests mount a file system");
        QProcess::execute(QStringLiteral("umount"), {probe.path()});
        QFETCH(bool, readOnly);
        QFETCH(QString, reason);
        QVERIFY(mount({QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"), QStringLiteral("size=1m"),
            QStringLiteral("tmpfs"), m_mount}));
        // A file the restore would overwrite, and one it has nothing to do with.
        const QString existing = m_mount + m_source + QStringLiteral("/raw0.bin");
        EngineTestSupport::writeFile(existing, "the user's own edit\n");
        EngineTestSupport::writeFile(m_mount + QStringLiteral("/notes.txt"), "untouched\n");
        const QMap<QString, QByteArray> before = EngineTestSupport::tree(m_mount);
        if (readOnly)
            QVERIFY(mount({QStringLiteral("-o"), QStringLiteral("remount,ro"), m_mount}));

        auto back = EngineTestSupport::restorePlan(m_account, {m_item}, m_mount);
        back->setEncryptionPassword(QStringLiteral("pw"));
        back->setUseEncryption(true);
        QVERIFY(EngineTestSupport::save(*m_client, *back));
        const RunOutcome outcome = EngineTestSupport::run(*m_client, back->id());
        QVERIFY(outcome.ended);
        QCOMPARE(outcome.status, 8);
        QVERIFY2(outcome.message.contains(reason, Qt::CaseInsensitive), qPrintable(outcome.message));
        // Nothing half-restored, no staging folder left behind.
        QCOMPARE(EngineTestSupport::tree(m_mount), before);
        QCOMPARE(EngineTestSupport::readText(existing), QStringLiteral("the user's own edit\n"));
    }

    void archivedRetrievalAsksAmazonAndStillRestores()
    {
        const QString missing = TWB::Test::MotoPeer::missing();
        if (!missing.isEmpty())
            QSKIP(qPrintable(missing));
        TWB::Test::MotoPeer moto;
        QVERIFY2(moto.start(), qPrintable(moto.output()));
        const QUuid account = QUuid::createUuid();
        const QJsonObject params {{QStringLiteral("AccessKey"), moto.accessKey()},
            {QStringLiteral("SecretKey"), moto.secretKey()}, {QStringLiteral("ContainerName"), QStringLiteral("cold")},
            {QStringLiteral("Endpoint"), moto.endpoint()}, {QStringLiteral("UseSsl"), false},
            {QStringLiteral("Region"), QStringLiteral("us-east-1")}};
        QVERIFY(m_client
                    ->call(QStringLiteral("SaveStorage"),
                        {{QStringLiteral("ID"), account.toString()},
                            {QStringLiteral("displayName"), QStringLiteral("S3")}, {QStringLiteral("prefix"), prefix},
                            {QStringLiteral("type"), 20}, {QStringLiteral("params"), params}})
                    .success);
        auto plan = EngineTestSupport::backupPlan(
            account, QStringLiteral("Cold"), {QStringLiteral("/TWB_VOLUMES/root") + m_source});
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        QCOMPARE(EngineTestSupport::run(*m_client, plan->id()).status, 6);

        // Objects that are not archived are refused one by one by the server; the restore goes on.
        const QString target = m_service->environment().root() + QStringLiteral("/thawed");
        auto back = EngineTestSupport::restorePlan(account, {m_item}, target);
        back->storageInfo().setType(Restore::StorageInfo::RetrievalBulk);
        QVERIFY(EngineTestSupport::save(*m_client, *back));
        const RunOutcome outcome = EngineTestSupport::run(*m_client, back->id());
        QVERIFY2(outcome.status == 6, qPrintable(outcome.message));
        QCOMPARE(EngineTestSupport::tree(target + m_source), EngineTestSupport::tree(m_source));
    }
};

QTEST_GUILESS_MAIN(TestEngineRestoreFaults)
#include "tst_engine_restore_faults.moc"
