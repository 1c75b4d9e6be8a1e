#include "engine_test_support.h"
#include "raw_client.h"
#include "service_fixture.h"
#include "support/cloud_peers.h"

#include "platform/plan/backup_file.h"

#include <QFile>
#include <QJsonArray>
#include <QtTest>

#include <memory>

using TWB::Test::EngineTestSupport;
using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceReply;
using TWB::Test::SftpPeer;

namespace {

const QString archivePassword = QStringLiteral("moving day 7");
const QString planPassword = QStringLiteral("only the plan knows");

QStringList planIds(RawClient& client)
{
    QStringList ids;
    for (const QJsonValue& row :
        client.call(QStringLiteral("PlanGetList")).data.value(QStringLiteral("planList")).toArray())
        ids << row.toObject().value(QStringLiteral("ID")).toString();
    return ids;
}

QStringList accountIds(RawClient& client)
{
    QStringList ids;
    for (const QJsonValue& row : ServiceFixture::accounts(client))
        ids << row.toObject().value(QStringLiteral("ID")).toString();
    return ids;
}

QJsonObject options(RawClient& client)
{
    return client.call(QStringLiteral("GetProductOptions")).data.value(QStringLiteral("options")).toObject();
}

} // namespace

/// One machine exports its plans, accounts and options; a second machine's service takes them in and
/// runs the plan into the same SFTP storage with the secrets that came in the archive.
class TestServiceConfiguration : public QObject
{
    Q_OBJECT

private:
    SftpPeer m_sftp;
    ServiceFixture m_first;
    std::unique_ptr<ServiceFixture> m_second;
    RawClient m_one;
    RawClient m_two;
    QString m_archive;
    QUuid m_account;
    QUuid m_plan;

    ServiceReply import(
        const QString& path, const QString& password, const QString& existing = QStringLiteral("replace"))
    {
        return m_two.call(QStringLiteral("ImportConfiguration"),
            {{QStringLiteral("path"), path}, {QStringLiteral("password"), password},
                {QStringLiteral("existing"), existing}},
            60000);
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (!SftpPeer::missing().isEmpty())
            QSKIP(qPrintable(SftpPeer::missing()));
        QVERIFY2(m_sftp.start(), qPrintable(m_sftp.output()));
        QVERIFY2(m_first.start(), qPrintable(m_first.process().output()));
        QVERIFY(m_one.connectTo(m_first.socketPath()));
        m_second = std::make_unique<ServiceFixture>();
        QVERIFY2(m_second->start(), qPrintable(m_second->process().output()));
        QVERIFY(m_two.connectTo(m_second->socketPath()));

        m_account = QUuid::createUuid();
        const QJsonObject sftp {{QStringLiteral("Address"), QStringLiteral("127.0.0.1")},
            {QStringLiteral("Port"), int(m_sftp.port())}, {QStringLiteral("Path"), QStringLiteral("/")},
            {QStringLiteral("User"), SftpPeer::user()}, {QStringLiteral("Password"), SftpPeer::password()},
            {QStringLiteral("PrivateKey"), QString()}};
        QVERIFY(m_one
                    .call(QStringLiteral("SaveStorage"),
                        {{QStringLiteral("ID"), m_account.toString()},
                            {QStringLiteral("displayName"), QStringLiteral("NAS")},
                            {QStringLiteral("prefix"), QStringLiteral("oldbox")}, {QStringLiteral("type"), 33},
                            {QStringLiteral("params"), sftp}})
                    .success);
        const QString source = m_first.environment().root() + QStringLiteral("/letters");
        EngineTestSupport::writeFile(source + QStringLiteral("/a.txt"), "first letter\n");
        const auto plan = EngineTestSupport::backupPlan(m_account, QStringLiteral("Letters"), {source}, planPassword);
        QVERIFY(EngineTestSupport::save(m_one, *plan));
        m_plan = plan->id();
        QCOMPARE(EngineTestSupport::run(m_one, m_plan).status, 6);
        QVERIFY(m_one
                    .call(QStringLiteral("SetProductOptions"),
                        {{QStringLiteral("options"),
                            QJsonObject {{QStringLiteral("Cloud Bandwidth"), QStringLiteral("4000")},
                                {QStringLiteral("RetentionNumberOfVersions"), QStringLiteral("12")}}}})
                    .success);

        m_archive = m_first.environment().root() + QStringLiteral("/moving.twbconfiguration");
        const ServiceReply exported = m_one.call(QStringLiteral("ExportConfiguration"),
            {{QStringLiteral("path"), m_archive}, {QStringLiteral("password"), archivePassword}}, 60000);
        QVERIFY2(exported.success, qPrintable(exported.error));
        QFile file(m_archive);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        for (const QString& secret : {SftpPeer::password(), planPassword})
            QVERIFY2(!bytes.contains(secret.toUtf8()), qPrintable(secret));
    }

    void refusedArchiveChangesNothing_data()
    {
        QTest::addColumn<QByteArray>("damage");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("error");
        QTest::newRow("wrong password") << QByteArray() << QStringLiteral("moving day 8")
                                        << QStringLiteral("The password does not open the configuration archive");
        QTest::newRow("flipped byte") << QByteArray("flip") << archivePassword
                                      << QStringLiteral("The configuration archive is damaged");
        QTest::newRow("cut short") << QByteArray("cut") << archivePassword
                                   << QStringLiteral("The configuration archive is damaged");
        QTest::newRow("foreign file") << QByteArray("foreign") << archivePassword
                                      << QStringLiteral("The file is not a configuration archive");
    }

    void refusedArchiveChangesNothing()
    {
        QFETCH(QByteArray, damage);
        QFETCH(QString, password);
        QFETCH(QString, error);
        QFile original(m_archive);
        QVERIFY(original.open(QIODevice::ReadOnly));
        QByteArray bytes = original.readAll();
        const int content = bytes.indexOf("\"content\"") + 20;
        if (damage == "flip")
            bytes[content] = bytes[content] == 'A' ? 'B' : 'A';
        else if (damage == "cut")
            bytes.truncate(bytes.size() / 2);
        else if (damage == "foreign")
            bytes = "<?xml version=\"1.0\"?><plan/>";
        const QString path = m_second->environment().root() + QStringLiteral("/given.twbconfiguration");
        QFile given(path);
        QVERIFY(given.open(QIODevice::WriteOnly | QIODevice::Truncate));
        given.write(bytes);
        given.close();

        const QStringList accountsBefore = accountIds(m_two);
        const QJsonObject optionsBefore = options(m_two);
        const ServiceReply reply = import(path, password);
        QVERIFY(reply.received);
        QVERIFY(!reply.success);
        QCOMPARE(reply.error, error);
        QCOMPARE(reply.data.value(QStringLiteral("error")).toString(), error);
        QCOMPARE(planIds(m_two), QStringList());
        QCOMPARE(accountIds(m_two), accountsBefore);
        QCOMPARE(options(m_two), optionsBefore);
    }

    // The first machine's local storage is written before the SFTP account meets an account of its id
    // and another type here: the refusal must take the local storage back out too.
    void conflictMidwayLeavesNoPartOfTheArchive()
    {
        const QString folder = m_second->environment().root() + QStringLiteral("/clash");
        QVERIFY(m_two
                    .call(QStringLiteral("SaveStorage"),
                        ServiceFixture::localAccount(m_account, QStringLiteral("Clash"), folder))
                    .success);
        const QStringList accountsBefore = accountIds(m_two);
        const QJsonObject optionsBefore = options(m_two);
        const ServiceReply reply = import(m_archive, archivePassword);
        QVERIFY(!reply.success);
        QVERIFY2(reply.error.contains(QStringLiteral("an account keeps its type")), qPrintable(reply.error));
        QCOMPARE(accountIds(m_two), accountsBefore);
        QCOMPARE(planIds(m_two), QStringList());
        QCOMPARE(options(m_two), optionsBefore);
        QVERIFY(m_two.call(QStringLiteral("StorageDeleteFileSystem"), {{QStringLiteral("ID"), m_account.toString()}})
                    .success);
    }

    void secondMachineRunsTheImportedPlanWithItsSecrets()
    {
        const ServiceReply imported = import(m_archive, archivePassword);
        QVERIFY2(imported.success, qPrintable(imported.error));
        const QJsonObject counts = imported.data.value(QStringLiteral("ImportConfiguration")).toObject();
        QCOMPARE(counts.value(QStringLiteral("plansAdded")).toInt(), 1);
        QCOMPARE(counts.value(QStringLiteral("accountsAdded")).toInt(), 2); // the first machine's own local storage too

        QCOMPARE(planIds(m_two), QStringList {m_plan.toString()});
        QVERIFY(accountIds(m_two).contains(m_account.toString()));
        const QJsonObject taken = options(m_two);
        QCOMPARE(taken.value(QStringLiteral("Cloud Bandwidth")).toString(), QStringLiteral("4000"));
        QCOMPARE(taken.value(QStringLiteral("RetentionNumberOfVersions")).toString(), QStringLiteral("12"));
        // The local storage of the first machine moved into this machine's data folder.
        for (const QJsonValue& row : ServiceFixture::accounts(m_two)) {
            const QString path = row.toObject().value(QStringLiteral("Path")).toString();
            QVERIFY2(!path.startsWith(m_first.dataDir()), qPrintable(path));
        }

        // The SFTP password and the plan's password were sealed anew with this machine's key and open
        // the repository the first machine made.
        const auto outcome = EngineTestSupport::run(m_two, m_plan);
        QVERIFY2(outcome.status == 6, qPrintable(outcome.message));

        // Taken in a second time, keeping what exists, nothing changes.
        const ServiceReply again = import(m_archive, archivePassword, QStringLiteral("skip"));
        QVERIFY2(again.success, qPrintable(again.error));
        QCOMPARE(
            again.data.value(QStringLiteral("ImportConfiguration")).toObject().value(QStringLiteral("skipped")).toInt(),
            3);
    }
};

QTEST_GUILESS_MAIN(TestServiceConfiguration)
#include "tst_service_configuration.moc"
