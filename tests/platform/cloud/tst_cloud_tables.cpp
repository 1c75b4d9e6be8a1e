#include "platform/cloud/account_keys.h"
#include "platform/cloud/cloud_type.h"
#include "platform/cloud/container_params.h"
#include "platform/cloud/endpoint_helper.h"
#include "platform/cloud/info_factory.h"
#include "platform/cloud/operation_manager.h"
#include "platform/cloud/twb2twl.h"
#include "platform/crypt/local_password.h"
#include "support/test_environment.h"

#include <QtTest>

#include <memory>

using namespace TWL::Cloud;
using TWB::DataConverter::StorageConfig::Twb2Twl;
using TWL::Utitlity::EndpointHelper;

/// The back-end tables, the two views of an account document and the helpers the forms lean on.
class TestCloudTables : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TWB::Test::TestEnvironment> m_environment;

private Q_SLOTS:
    void initTestCase() { m_environment = std::make_unique<TWB::Test::TestEnvironment>(); }

    void savedDocumentBecomesCloudConfiguration_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QJsonObject>("document");
        QTest::addColumn<QVariantMap>("expected");

        const QString sealed = SHARED::cryptNS::encrypt_local_password(QStringLiteral("s3cr3t"));
        QTest::newRow("S3 compatible, AWS2")
            << int(S3Compatible)
            << QJsonObject {{Key::AccessKey, "AK"}, {Key::SecretKey, sealed}, {Key::ContainerName, "b"},
                   {Key::UseSsl, false}, {Key::Endpoint, "s3.example.net"}, {Key::Signature, 2}}
            << QVariantMap {{Key::CloudType, "S3Compatible"}, {Key::AccessKey, "AK"}, {Key::SecretKey, "s3cr3t"},
                   {Key::ContainerName, "b"}, {Key::UseSsl, false}, {Key::Endpoint, "s3.example.net"},
                   {Key::Signature, "V2"}};
        QTest::newRow("older document's signature 0 reads as AWS4")
            << int(Minio)
            << QJsonObject {{Key::AccessKey, "AK"}, {Key::SecretKey, sealed}, {Key::ContainerName, "b"},
                   {Key::UseSsl, true}, {Key::Endpoint, "m:9000"}, {Key::Signature, 0}}
            << QVariantMap {{Key::CloudType, "Minio"}, {Key::AccessKey, "AK"}, {Key::SecretKey, "s3cr3t"},
                   {Key::ContainerName, "b"}, {Key::UseSsl, true}, {Key::Endpoint, "m:9000"}, {Key::Signature, "V4"}};
        QTest::newRow("Amazon China keeps its endpoint out")
            << int(AmazonS3Chinese)
            << QJsonObject {{Key::AccessKey, "AK"}, {Key::SecretKey, sealed}, {Key::ContainerName, "b"},
                   {Key::UseSsl, true}, {Key::Endpoint, "changed.example.cn"}}
            << QVariantMap {{Key::CloudType, "AmazonS3Chinese"}, {Key::AccessKey, "AK"}, {Key::SecretKey, "s3cr3t"},
                   {Key::ContainerName, "b"}, {Key::UseSsl, true}};
        QTest::newRow("Azure user name") << int(AzureBlob)
                                         << QJsonObject {{Key::UserName, "acct"}, {Key::Password, sealed},
                                                {Key::Type, "StorageV2"}, {Key::ContainerName, "c"},
                                                {Key::UseSsl, true}, {Key::Endpoint, "core.windows.net"}}
                                         << QVariantMap {{Key::CloudType, "AzureBlob"}, {Key::Username, "acct"},
                                                {Key::Password, "s3cr3t"}, {Key::Type, "StorageV2"},
                                                {Key::ContainerName, "c"}, {Key::UseSsl, true},
                                                {Key::Endpoint, "core.windows.net"}};
        QTest::newRow("SFTP proxy switch")
            << int(Sftp)
            << QJsonObject {{Key::Address, "h"}, {Key::Port, 2222}, {Key::KeepAlive, true}, {Key::UseProy, true},
                   {Key::Path, "/b"}, {Key::User, "u"}, {Key::Password, sealed}, {Key::PrivateKey, QString()}}
            << QVariantMap {{Key::CloudType, "Sftp"}, {Key::Address, "h"}, {Key::Port, 2222}, {Key::KeepAlive, true},
                   {Key::UseProxy, true}, {Key::Path, "/b"}, {Key::User, "u"}, {Key::Password, "s3cr3t"},
                   {Key::PrivateKey, QString()}};
        QTest::newRow("Google installed application")
            << int(GoogleStorage)
            << QJsonObject {{Key::ContainerName, "g"}, {Key::AuthType, 2}, {Key::RefreshToken, sealed},
                   {Key::ProjectId, SHARED::cryptNS::encrypt_local_password(QStringLiteral("proj"))}, {Key::UseSsl, 1}}
            << QVariantMap {{Key::CloudType, "GoogleStorage"}, {Key::ContainerName, "g"}, {Key::AuthType, 2},
                   {Key::ProjectId, "proj"}, {Key::InitCode, QString()}, {Key::RefreshToken, "s3cr3t"},
                   {Key::UseSsl, true}};
    }

    void savedDocumentBecomesCloudConfiguration()
    {
        QFETCH(int, type);
        QFETCH(QJsonObject, document);
        QFETCH(QVariantMap, expected);

        for (const QVariantMap& config : {Twb2Twl::fromTwb(document, Type(type)),
                 Twb2Twl::fromTwb(
                     QJsonObject {{QStringLiteral("Type"), type}, {QStringLiteral("DetailParams"), document}})}) {
            QVERIFY(!config.value(Key::CloudId).toUuid().isNull());
            QVariantMap rest = config;
            rest.remove(Key::CloudId);
            QCOMPARE(QStringList(rest.keys()), QStringList(expected.keys()));
            for (auto it = expected.constBegin(); it != expected.constEnd(); ++it)
                QCOMPARE(rest.value(it.key()).toString(), it.value().toString());
            // Every key of the table for the type is one the configuration may hold.
            for (const QString& key : rest.keys())
                QVERIFY2(cloudConfigKeys(Type(type), document.value(Key::AuthType).toInt()).contains(key)
                        || key == Key::Region,
                    qPrintable(key));
        }
    }

    void documentAloneTellsItsType_data()
    {
        QTest::addColumn<QJsonObject>("document");
        QTest::addColumn<int>("type");
        QTest::newRow("sftp") << QJsonObject {{Key::Address, "h"}, {Key::UseProy, false}} << int(Sftp);
        QTest::newRow("azure") << QJsonObject {{Key::UserName, "a"}, {Key::Password, "p"}} << int(AzureBlob);
        QTest::newRow("amazon") << QJsonObject {{Key::AccessKey, "a"}, {Key::Archive2Glacier, false}} << int(AmazonS3);
        QTest::newRow("s3 endpoint") << QJsonObject {{Key::AccessKey, "a"}, {Key::Endpoint, "e"}} << int(S3Compatible);
        QTest::newRow("folder") << QJsonObject {{Key::Path, "/x"}} << int(FileSystem);
        QTest::newRow("nothing") << QJsonObject {{QStringLiteral("Colour"), "red"}} << int(Unknown);
    }

    void documentAloneTellsItsType()
    {
        QFETCH(QJsonObject, document);
        QFETCH(int, type);
        QCOMPARE(int(Twb2Twl::guessType(document)), type);
        QCOMPARE(Twb2Twl::fromTwb(document).isEmpty(), type == Unknown);
        QCOMPARE(Twb2Twl::fromTwb(document).value(Key::CloudType).toString(), typeName(Type(type)));
    }

    void endpointsAreReadAsTyped_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("useSsl");
        QTest::addColumn<QString>("withScheme");
        QTest::addColumn<bool>("sslAfter");
        QTest::newRow("bare host") << "s3.example.net" << true << "https://s3.example.net" << true;
        QTest::newRow("typed http wins") << "http://127.0.0.1:9000/" << true << "http://127.0.0.1:9000" << false;
        QTest::newRow("typed https wins") << " HTTPS://minio.lan:9000 " << false << "https://minio.lan:9000" << true;
        QTest::newRow("path kept") << "host/acct" << false << "http://host/acct" << false;
        QTest::newRow("other scheme") << "ftp://host" << true << "" << true;
    }

    void endpointsAreReadAsTyped()
    {
        QFETCH(QString, typed);
        QFETCH(bool, useSsl);
        QFETCH(QString, withScheme);
        QFETCH(bool, sslAfter);
        EndpointHelper helper(typed, useSsl);
        QCOMPARE(helper.endpointWithScheme(), withScheme);
        QCOMPARE(helper.hasError(), withScheme.isEmpty());
        QCOMPARE(helper.lastErrorMessage().isEmpty(), !withScheme.isEmpty());
        QCOMPARE(helper.useSsl(), sslAfter);
        if (!helper.hasError()) {
            helper.setUseSsl(!sslAfter);
            QCOMPARE(helper.endpointWithScheme().startsWith(QLatin1String("https://")), !sslAfter);
        }
    }

    void configurationsOfNoKnownTypeMakeNoOperation()
    {
        const QPointer<OperationManager> manager = OperationManager::instance();
        QVERIFY(manager);
        QVERIFY(!manager->listContainers({}));
        QVERIFY(!manager->checkConfig({{Key::CloudType, QStringLiteral("Nimbus")}}));
        QVERIFY(!manager->listing({{Key::CloudType, QStringLiteral("32")}}, {}, {}, QStringLiteral("/"), 1000));
        QCOMPARE(manager->count(), 0);
    }
};

QTEST_GUILESS_MAIN(TestCloudTables)
#include "tst_cloud_tables.moc"
