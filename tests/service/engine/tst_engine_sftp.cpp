#include "engine_test_support.h"
#include "raw_client.h"
#include "service_fixture.h"
#include "support/process_tree.h"
#include "support/cloud_peers.h"

#include "platform/communication/notification_types.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

#include <memory>

using namespace TWB::Info::Plan;
using TWB::Test::EngineTestSupport;
using TWB::Test::RawClient;
using TWB::Test::RunOutcome;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceReply;

namespace Type = TWB::Common::Communication::Notification::Type;

namespace {

const QString prefix = QStringLiteral("laptop");
const QString password = TWB::Test::SftpPeer::password();

} // namespace

/// Backups over SFTP through rclone, against a real SFTP server on loopback that wants a user and
/// a password, and a second machine that finds them by synchronising the storage.
class TestEngineSftp : public QObject
{
    Q_OBJECT

private:
    TWB::Test::SftpPeer m_server;
    QString m_serverRoot;
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    QString m_root;
    QUuid m_account;
    QUuid m_plain; // a backup without a password of its own
    QUuid m_encrypted;
    QString m_source;

    QUuid addSftpAccount(RawClient& client, const QString& accountPrefix)
    {
        const QUuid id = QUuid::createUuid();
        const QJsonObject params {{QStringLiteral("Address"), QStringLiteral("127.0.0.1")},
            {QStringLiteral("Port"), int(m_server.port())}, {QStringLiteral("KeepAlive"), false},
            {QStringLiteral("UseProy"), false}, {QStringLiteral("Path"), QStringLiteral("/backups")},
            {QStringLiteral("User"), TWB::Test::SftpPeer::user()}, {QStringLiteral("Password"), password},
            {QStringLiteral("PrivateKey"), QString()}};
        const ServiceReply reply = client.call(QStringLiteral("SaveStorage"),
            {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("displayName"), QStringLiteral("SFTP")},
                {QStringLiteral("prefix"), accountPrefix}, {QStringLiteral("type"), 33},
                {QStringLiteral("params"), params}});
        return reply.success ? id : QUuid();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        m_root = m_service->environment().root();
        QVERIFY2(m_server.start(), qPrintable(m_server.output()));
        m_serverRoot = m_server.root();
        QVERIFY(QDir().mkpath(m_serverRoot + QStringLiteral("/backups")));

        QVERIFY2(m_service->start(), qPrintable(m_service->process().output()));
        m_client = std::make_unique<RawClient>();
        QVERIFY(m_client->connectTo(m_service->socketPath()));
        m_account = addSftpAccount(*m_client, prefix);
        QVERIFY(!m_account.isNull());
    }

    void cleanupTestCase() { m_service.reset(); }

    void backupAndRestoreOverSftpKeepTheSecretOffCommandLines()
    {
        m_source = m_root + QStringLiteral("/papers");
        EngineTestSupport::writeFile(m_source + QStringLiteral("/scan.raw"), EngineTestSupport::noise(1024 * 1024, 3));
        EngineTestSupport::writeFile(m_source + QStringLiteral("/index.txt"), "index\n");
        const auto plan = EngineTestSupport::backupPlan(m_account, QStringLiteral("Papers"), {m_source});
        QVERIFY(EngineTestSupport::save(*m_client, *plan));
        m_plain = plan->id();

        // Slow enough to look at restic and rclone while they run.
        EngineTestSupport::setOption(m_service->dataDir(), QStringLiteral("Cloud Bandwidth"), QStringLiteral("300"));
        m_client->clearNotifications();
        QVERIFY(m_client->call(QStringLiteral("PlanExecuteStart"), {{QStringLiteral("ID"), plan->id().toString()}})
                    .success);
        QMap<qint64, QByteArray> seen;
        QByteArray resticEnvironment;
        const qint64 service = m_service->process().pid();
        const bool ended = QTest::qWaitFor(
            [&] {
                const QMap<qint64, QByteArray> now = TWB::Test::descendants(service);
                for (auto it = now.constBegin(); it != now.constEnd(); ++it) {
                    seen.insert(it.key(), it.value());
                    if (it.value().startsWith(
                            QFile::encodeName(QStandardPaths::findExecutable(QStringLiteral("restic"))))
                        && resticEnvironment.isEmpty()) {
                        QFile environ(QStringLiteral("/proc/%1/environ").arg(it.key()));
                        if (environ.open(QIODevice::ReadOnly))
                            resticEnvironment = environ.readAll();
                    }
                }
                return m_client->countNotifications(QLatin1String(Type::PlanStateChanged), plan->id().toString()) >= 2;
            },
            120000);
        QVERIFY(ended);
        EngineTestSupport::setOption(m_service->dataDir(), QStringLiteral("Cloud Bandwidth"), QString());
        const RunOutcome outcome = EngineTestSupport::waitForEnd(*m_client, plan->id());
        QVERIFY2(outcome.status == 6, qPrintable(outcome.message));

        bool sawRestic = false;
        bool sawRclone = false;
        for (const QByteArray& command : qAsConst(seen)) {
            QVERIFY2(!command.contains(password.toUtf8()), command.constData());
            sawRestic = sawRestic || command.contains("restic");
            sawRclone = sawRclone || (command.contains("rclone") && command.contains("serve"));
        }
        QVERIFY(sawRestic);
        QVERIFY(sawRclone);
        // The secret went by the environment, obscured as rclone takes it.
        QVERIFY(resticEnvironment.contains("RCLONE_CONFIG_TWBSTORAGE_PASS="));
        QVERIFY(!resticEnvironment.contains(password.toUtf8()));
        QVERIFY(QFile::exists(QStringLiteral("%1/backups/%2/%3/config")
                                  .arg(m_serverRoot, prefix, plan->id().toString(QUuid::WithoutBraces))));
        QVERIFY(!m_service->storeBytes().contains(password.toUtf8()));

        const QString target = m_root + QStringLiteral("/papers-out");
        auto back = EngineTestSupport::restorePlan(m_account, {QStringLiteral("/TWB_VOLUMES/root") + m_source}, target);
        QVERIFY(EngineTestSupport::save(*m_client, *back));
        QCOMPARE(EngineTestSupport::run(*m_client, back->id()).status, 6);
        QCOMPARE(EngineTestSupport::tree(target + m_source), EngineTestSupport::tree(m_source));

        const auto encrypted = EngineTestSupport::backupPlan(m_account, QStringLiteral("Private"),
            {m_source + QStringLiteral("/index.txt")}, QStringLiteral("only I know"));
        QVERIFY(EngineTestSupport::save(*m_client, *encrypted));
        QCOMPARE(EngineTestSupport::run(*m_client, encrypted->id()).status, 6);
        m_encrypted = encrypted->id();
    }

    void anotherMachineRestoresAfterSynchronisingTheStorage()
    {
        QVERIFY(!m_plain.isNull());
        ServiceFixture other;
        QVERIFY2(other.start(), qPrintable(other.process().output()));
        RawClient client;
        QVERIFY(client.connectTo(other.socketPath()));
        const QUuid account = addSftpAccount(client, QStringLiteral("newbox"));
        QVERIFY(!account.isNull());

        auto synchronise = [&](const QJsonObject& extra) {
            client.clearNotifications();
            QJsonObject params {{QStringLiteral("id"), account.toString()}};
            for (auto it = extra.constBegin(); it != extra.constEnd(); ++it)
                params.insert(it.key(), it.value());
            const ServiceReply reply = client.call(QStringLiteral("SynchronizeRepository"), params);
            if (!reply.success)
                return QString(QStringLiteral("refused: ") + reply.error);
            if (!client.waitForNotification(QLatin1String(Type::StorageSyncFinished), account.toString(), 120000))
                return QStringLiteral("no end");
            for (const QJsonObject& message : client.notifications()) {
                if (QUuid(message.value(QStringLiteral("id")).toString()) == QUuid(Type::StorageSyncFinished))
                    return message.value(QStringLiteral("data")).toObject().value(QStringLiteral("message")).toString();
            }
            return QString();
        };

        // Without the password, the plan that had none opens by its open key; the other does not.
        const QString first = synchronise({});
        QCOMPARE(first, QStringLiteral("Synchronised 1 backups; 1 did not open with any key the service knows"));
        QVERIFY(client.countNotifications(QLatin1String(Type::StorageSyncStarted), account.toString()) == 1);
        const QJsonArray top
            = client
                  .call(QStringLiteral("GetRestoreContent"),
                      {{QStringLiteral("destination"), account.toString()}, {QStringLiteral("path"), QString()}})
                  .data.value(QStringLiteral("contentRestore"))
                  .toArray();
        QCOMPARE(top.size(), 1);
        QCOMPARE(top.first().toObject().value(QStringLiteral("Name")).toString(), prefix);

        const QString target = m_root + QStringLiteral("/other-out");
        auto back = EngineTestSupport::restorePlan(
            account, {QStringLiteral("/%1/TWB_VOLUMES/root%2").arg(prefix, m_source)}, target);
        QVERIFY(EngineTestSupport::save(client, *back));
        const RunOutcome restored = EngineTestSupport::run(client, back->id());
        QVERIFY2(restored.status == 6, qPrintable(restored.message));
        QCOMPARE(EngineTestSupport::tree(target + m_source), EngineTestSupport::tree(m_source));

        // With the user's password the encrypted backup opens too.
        QCOMPARE(synchronise({{QStringLiteral("password"), QStringLiteral("only I know")}}),
            QStringLiteral("Synchronised 2 backups"));
        const QString second = m_root + QStringLiteral("/other-private");
        auto privately = EngineTestSupport::restorePlan(
            account, {QStringLiteral("/%1/TWB_VOLUMES/root%2/index.txt").arg(prefix, m_source)}, second);
        QVERIFY(EngineTestSupport::save(client, *privately));
        QCOMPARE(EngineTestSupport::run(client, privately->id()).status, 6);
        QVERIFY(QFile::exists(second + m_source + QStringLiteral("/index.txt")));
    }
};

QTEST_GUILESS_MAIN(TestEngineSftp)
#include "tst_engine_sftp.moc"
