#include "raw_client.h"
#include "service_fixture.h"

#include "platform/communication/notification_types.h"
#include "platform/crypt/local_password.h"
#include "service/catalog/version_catalog.h"
#include "service/store/database.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QtTest>

#include <memory>

using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceReply;
namespace Type = TWB::Common::Communication::Notification::Type;

namespace {

QJsonObject row(RawClient& client, const QUuid& id)
{
    const QJsonArray rows = ServiceFixture::accounts(client);
    for (const QJsonValue& value : rows) {
        if (QUuid(value.toObject().value(QStringLiteral("ID")).toString()) == id)
            return value.toObject();
    }
    return QJsonObject();
}

QString unique(const char* what)
{
    return QStringLiteral("%1-%2").arg(QLatin1String(what), QUuid::createUuid().toString(QUuid::WithoutBraces));
}

} // namespace

class TestServiceStorages : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_listener;

private Q_SLOTS:
    void initTestCase()
    {
        m_service = std::make_unique<ServiceFixture>();
        m_listener = std::make_unique<RawClient>();
        QVERIFY2(m_service->startWithConsoles(*m_listener), qPrintable(m_service->process().output()));
    }

    void init() { m_listener->clearNotifications(); }

    void secretsAreSealedAtRest_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QJsonObject>("document");
        QTest::addColumn<QStringList>("secrets");
        QTest::addColumn<QStringList>("plain");

        QTest::newRow("Amazon S3") << 2
                                   << QJsonObject {{QStringLiteral("AccessKey"), unique("access")},
                                          {QStringLiteral("SecretKey"), unique("secret")},
                                          {QStringLiteral("ContainerName"), QStringLiteral("bucket")}}
                                   << QStringList {QStringLiteral("SecretKey")}
                                   << QStringList {QStringLiteral("AccessKey")};
        QTest::newRow("Azure") << 3
                               << QJsonObject {{QStringLiteral("UserName"), unique("user")},
                                      {QStringLiteral("Password"), unique("password")},
                                      {QStringLiteral("ContainerName"), QStringLiteral("box")}}
                               << QStringList {QStringLiteral("Password")} << QStringList {QStringLiteral("UserName")};
        QTest::newRow("Google service account")
            << 7
            << QJsonObject {{QStringLiteral("AuthType"), 1}, {QStringLiteral("ServiceAccount"), unique("service")},
                   {QStringLiteral("ProjectId"), unique("project")}, {QStringLiteral("PrivateKey"), unique("key")},
                   {QStringLiteral("ContainerName"), QStringLiteral("gcs")}}
            << QStringList {QStringLiteral("ServiceAccount"), QStringLiteral("ProjectId"), QStringLiteral("PrivateKey")}
            << QStringList();
        QTest::newRow("Google installed application")
            << 7
            << QJsonObject {{QStringLiteral("AuthType"), 2}, {QStringLiteral("RefreshToken"), unique("token")},
                   {QStringLiteral("ProjectId"), unique("project")},
                   {QStringLiteral("ContainerName"), QStringLiteral("gcs")}}
            << QStringList {QStringLiteral("RefreshToken")} << QStringList {QStringLiteral("ProjectId")};
        QTest::newRow("OpenStack") << 6
                                   << QJsonObject {{QStringLiteral("UserName"), unique("user")},
                                          {QStringLiteral("ApiKey"), unique("api")},
                                          {QStringLiteral("ContainerName"), QStringLiteral("swift")}}
                                   << QStringList {QStringLiteral("ApiKey")}
                                   << QStringList {QStringLiteral("UserName")};
        QTest::newRow("Backblaze B2") << 31
                                      << QJsonObject {{QStringLiteral("AccountId"), unique("account")},
                                             {QStringLiteral("ApplicationKey"), unique("application")},
                                             {QStringLiteral("ContainerName"), QStringLiteral("b2")}}
                                      << QStringList {QStringLiteral("ApplicationKey")}
                                      << QStringList {QStringLiteral("AccountId")};
        QTest::newRow("SFTP") << 33
                              << QJsonObject {{QStringLiteral("Address"), QStringLiteral("sftp.example.org")},
                                     {QStringLiteral("User"), unique("user")},
                                     {QStringLiteral("Password"), unique("pw")},
                                     {QStringLiteral("PrivateKey"), unique("pk")}}
                              << QStringList {QStringLiteral("Password"), QStringLiteral("PrivateKey")}
                              << QStringList {QStringLiteral("User")};
    }

    void secretsAreSealedAtRest()
    {
        QFETCH(int, type);
        QFETCH(QJsonObject, document);
        QFETCH(QStringList, secrets);
        QFETCH(QStringList, plain);
        const QUuid id = QUuid::createUuid();
        const ServiceReply saved = m_listener->call(QStringLiteral("SaveStorage"),
            {{QStringLiteral("ID"), id.toString()}, {QStringLiteral("displayName"), QStringLiteral("Cloud")},
                {QStringLiteral("prefix"), QStringLiteral("laptop")}, {QStringLiteral("type"), type},
                {QStringLiteral("params"), document}});
        QVERIFY2(saved.success, qPrintable(saved.error));

        const QByteArray store = m_service->storeBytes();
        const QJsonObject kept = row(*m_listener, id).value(QStringLiteral("DetailParams")).toObject();
        for (const QString& key : secrets) {
            const QString secret = document.value(key).toString();
            QVERIFY2(!store.contains(secret.toUtf8()), qPrintable(key));
            QVERIFY(kept.value(key).toString() != secret);
            // The console opens them with the same key, which it shares through the data folder.
            QCOMPARE(SHARED::cryptNS::decrypt_local_password(kept.value(key).toString()), secret);
        }
        for (const QString& key : plain)
            QCOMPARE(kept.value(key), document.value(key));
    }

    void secretsSealedByTheConsoleAreKeptAsTheyAre()
    {
        const QString sealed = SHARED::cryptNS::encrypt_local_password(QStringLiteral("sealed by the dialog"));
        QVERIFY(!sealed.isEmpty());
        const QUuid id = QUuid::createUuid();
        QJsonObject params = ServiceFixture::s3Account(id, QStringLiteral("S3"), sealed);
        QVERIFY(m_listener->call(QStringLiteral("SaveStorage"), params).success);
        const QJsonObject kept = row(*m_listener, id).value(QStringLiteral("DetailParams")).toObject();
        QCOMPARE(kept.value(QStringLiteral("SecretKey")).toString(), sealed);
    }

    void saveStorageRefusals_data()
    {
        QTest::addColumn<QJsonObject>("params");
        QTest::addColumn<QString>("error");
        const QUuid id = QUuid::createUuid();
        const QString folder = QDir::tempPath() + QStringLiteral("/twb-unused");
        const QJsonObject good = ServiceFixture::localAccount(id, QStringLiteral("Disk"), folder);
        auto with = [&good](const char* key, const QJsonValue& value) {
            QJsonObject params = good;
            params.insert(QLatin1String(key), value);
            return params;
        };
        auto without = [&good](const char* key) {
            QJsonObject params = good;
            params.remove(QLatin1String(key));
            return params;
        };
        QTest::newRow("no ID") << without("ID") << "Parameter \"ID\" of SaveStorage is missing";
        QTest::newRow("ID not an id") << with("ID", QStringLiteral("disk"))
                                      << "Parameter \"ID\" of SaveStorage is not an identifier";
        QTest::newRow("no name") << with("displayName", QStringLiteral(" "))
                                 << "Parameter \"displayName\" of SaveStorage is empty";
        QTest::newRow("type 32") << with("type", 32)
                                 << "Parameter \"type\" of SaveStorage is 32, which is no storage type";
        QTest::newRow("type 99") << with("type", 99) << "Parameter \"type\" of SaveStorage is 99, outside 1 to 38";
        QTest::newRow("type text") << with("type", QStringLiteral("S3"))
                                   << "Parameter \"type\" of SaveStorage is not a whole number";
        QTest::newRow("no prefix") << without("prefix") << "Parameter \"prefix\" of SaveStorage is missing";
        QTest::newRow("prefix with a slash") << with("prefix", QStringLiteral("a/b"))
                                             << "Parameter \"prefix\" of SaveStorage holds one of the characters";
        QTest::newRow("no document") << without("params") << "Parameter \"params\" of SaveStorage is missing";
        QTest::newRow("document not an object")
            << with("params", QStringLiteral("/tmp")) << "Parameter \"params\" of SaveStorage is not an object";
        QTest::newRow("no folder") << with("params", QJsonObject()) << "has no \"Path\" for the file-system account";
        QTest::newRow("relative folder") << with(
            "params", QJsonObject {{QStringLiteral("Path"), QStringLiteral("backups")}})
                                         << "holds the folder \"backups\", which is not an absolute path";
        QTest::newRow("folder under a file")
            << with("params", QJsonObject {{QStringLiteral("Path"), QStringLiteral("/dev/null/backups")}})
            << "which cannot be created";
        QJsonObject s3 = ServiceFixture::s3Account(id, QStringLiteral("S3"), QStringLiteral("x"));
        QJsonObject document = s3.value(QStringLiteral("params")).toObject();
        document.remove(QStringLiteral("ContainerName"));
        s3.insert(QStringLiteral("params"), document);
        QTest::newRow("no container") << s3 << "Parameter \"params\" of SaveStorage has no \"ContainerName\"";
        QJsonObject sftp = with("type", 33);
        sftp.insert(QStringLiteral("params"), QJsonObject {{QStringLiteral("User"), QStringLiteral("me")}});
        QTest::newRow("no SFTP address") << sftp << "has no \"Address\" of the SFTP server";
        QJsonObject secret = s3;
        secret.insert(QStringLiteral("params"),
            QJsonObject {{QStringLiteral("ContainerName"), QStringLiteral("b")}, {QStringLiteral("SecretKey"), 42}});
        QTest::newRow("secret not a text") << secret << "The secret \"SecretKey\" of the account is not a string";
    }

    void saveStorageRefusals()
    {
        QFETCH(QJsonObject, params);
        QFETCH(QString, error);
        const int before = ServiceFixture::accounts(*m_listener).size();
        const ServiceReply reply = m_listener->call(QStringLiteral("SaveStorage"), params);
        QVERIFY(reply.received);
        QVERIFY(!reply.success);
        QVERIFY2(reply.error.contains(error), qPrintable(reply.error));
        QCOMPARE(reply.data.value(QStringLiteral("SaveStorage")).toString(), QStringLiteral("error"));
        QCOMPARE(ServiceFixture::accounts(*m_listener).size(), before);
        QCOMPARE(m_listener->notifications().size(), 0);
    }

    void accountKeepsItsType()
    {
        const QUuid id = QUuid::createUuid();
        QVERIFY(m_listener
                    ->call(QStringLiteral("SaveStorage"),
                        ServiceFixture::s3Account(id, QStringLiteral("S3"), QStringLiteral("k")))
                    .success);
        QJsonObject params = ServiceFixture::s3Account(id, QStringLiteral("S3"), QStringLiteral("k"));
        params.insert(QStringLiteral("type"), 29);
        const ServiceReply reply = m_listener->call(QStringLiteral("SaveStorage"), params);
        QVERIFY(!reply.success);
        QVERIFY2(reply.error.contains(QStringLiteral("an account keeps its type")), qPrintable(reply.error));
        QCOMPARE(row(*m_listener, id).value(QStringLiteral("Type")).toInt(), 2);
    }

    void removedAccountIsAnnouncedAndItsCatalogDropped()
    {
        const QUuid id = QUuid::createUuid();
        const QUuid other = QUuid::createUuid();
        const QString folder = m_service->environment().root() + QStringLiteral("/removed");
        QVERIFY(
            m_listener
                ->call(QStringLiteral("SaveStorage"), ServiceFixture::localAccount(id, QStringLiteral("Gone"), folder))
                .success);
        QVERIFY(m_listener
                    ->call(QStringLiteral("SaveStorage"),
                        ServiceFixture::localAccount(other, QStringLiteral("Stays"), folder))
                    .success);
        {
            TWB::Service::Database store(m_service->storeFile());
            store.open();
            TWB::Service::VersionCatalog catalog(store);
            TWB::Service::CatalogVersion version;
            version.snapshot = QStringLiteral("a1");
            version.backupTime = QDateTime::currentDateTimeUtc();
            catalog.addVersion(id, QStringLiteral("laptop"), QStringLiteral("/TWB_VOLUMES/root/a.txt"), version);
            catalog.addVersion(other, QStringLiteral("laptop"), QStringLiteral("/TWB_VOLUMES/root/b.txt"), version);
        }
        QCOMPARE(
            row(*m_listener, id).value(QStringLiteral("PrefixArray")).toArray(), QJsonArray {QStringLiteral("laptop")});
        m_listener->clearNotifications();

        const ServiceReply removed = ServiceFixture::callThroughChannel(
            QStringLiteral("StorageDeleteFileSystem"), {{QStringLiteral("ID"), id.toString()}});
        QVERIFY2(removed.success, qPrintable(removed.error));
        QCOMPARE(removed.data.value(QStringLiteral("storageDeleteFileSystem")).toString(), QStringLiteral("success"));
        QVERIFY(m_listener->waitForNotification(QLatin1String(Type::StorageRemoved), id.toString()));
        QVERIFY(row(*m_listener, id).isEmpty());
        // The backups themselves are the user's: removing the account leaves the folder alone.
        QVERIFY(QFileInfo(folder).isDir());

        TWB::Service::Database store(m_service->storeFile());
        store.open();
        TWB::Service::VersionCatalog catalog(store);
        QVERIFY(!catalog.hasContent(id));
        QVERIFY(catalog.hasContent(other));

        const ServiceReply again
            = m_listener->call(QStringLiteral("StorageDeleteFileSystem"), {{QStringLiteral("ID"), id.toString()}});
        QVERIFY(!again.success);
        QCOMPARE(again.error,
            QStringLiteral("Parameter \"ID\" of StorageDeleteFileSystem names no storage account: %1")
                .arg(id.toString()));
        QCOMPARE(again.data.value(QStringLiteral("storageDeleteFileSystem")).toString(), QStringLiteral("error"));
    }

    void accountsSurviveARestartAndTheFirstOneIsNotMadeAgain()
    {
        const QUuid first = ServiceFixture::firstAccount(*m_listener);
        QVERIFY(m_listener->call(QStringLiteral("StorageDeleteFileSystem"), {{QStringLiteral("ID"), first.toString()}})
                    .success);
        const QJsonArray before = ServiceFixture::accounts(*m_listener);

        QVERIFY2(m_service->restart(), qPrintable(m_service->process().output()));
        RawClient client;
        QVERIFY(client.connectTo(m_service->socketPath()));
        QCOMPARE(ServiceFixture::accounts(client), before);
        QVERIFY(row(client, first).isEmpty());
    }
};

QTEST_MAIN(TestServiceStorages)
#include "tst_service_storages.moc"
