#include "cloud_test_support.h"

#include "platform/cloud/account_keys.h"
#include "platform/cloud/amazon_operation_manager.h"
#include "platform/cloud/container_params.h"
#include "platform/cloud/get_prefix_operation.h"
#include "platform/cloud/lifecycle_policy.h"
#include "platform/cloud/list_containers.h"
#include "platform/cloud/listing.h"
#include "platform/cloud/listing_object.h"
#include "platform/cloud/operation_manager.h"
#include "platform/cloud/twb2twl.h"
#include "support/cloud_peers.h"
#include "support/process_tree.h"
#include "support/log_capture.h"
#include "support/test_environment.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using TWB::Test::CloudTestSupport;
using TWB::Test::LogCapture;
using TWB::Test::MotoPeer;
using TWB::Test::TestEnvironment;
using TWL::Cloud::IOperation;
using TWL::Cloud::OperationManager;
namespace Key = TWL::Cloud::Key;
namespace Operation = TWL::Cloud::Operation;

/// The cloud layer against moto's S3 server on loopback, which checks keys.
class TestCloudS3 : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_environment;
    MotoPeer m_moto;
    QPointer<OperationManager> m_manager;

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString why = MotoPeer::missing(); !why.isEmpty())
            QSKIP(qPrintable(why));
        m_environment = std::make_unique<TestEnvironment>();
        QVERIFY2(m_moto.start(), qPrintable(m_moto.output()));
        m_manager = OperationManager::instance();
        QVERIFY(m_manager);
        // These tests run without the service; trust comes from the system alone.
        m_manager->setUseServiceTrustStore(false);
    }

    void bucketsAreListedAndCreated()
    {
        const QVariantMap config = m_moto.config();
        auto create
            = m_manager->createContainer(config, TWL::Cloud::ContainerParams::AmazonS3Like("photos", {}).json());
        QVERIFY(CloudTestSupport::run(create));
        QVERIFY2(!create->isError(), qPrintable(create->errorMessage()));
        QCOMPARE(create->type(), QStringLiteral("CreateContainer"));

        auto list = m_manager->listContainers(config);
        QVERIFY(CloudTestSupport::run(list));
        QVERIFY2(!list->isError(), qPrintable(list->errorMessage()));
        QCOMPARE(list->state(), int(IOperation::Finished));
        QVERIFY(CloudTestSupport::containerNames(list).contains(QStringLiteral("photos")));
        QCOMPARE(m_manager->operation(list->id()), QSharedPointer<IOperation>());

        // Making a bucket the account already owns again is no failure.
        auto again = m_manager->createContainer(config, TWL::Cloud::ContainerParams::AmazonS3Like("photos", {}).json());
        QVERIFY(CloudTestSupport::run(again));
        QVERIFY2(!again->isError(), qPrintable(again->errorMessage()));

        auto check = m_manager->checkConfig(m_moto.config(QStringLiteral("photos")));
        QVERIFY(CloudTestSupport::run(check));
        QVERIFY2(!check->isError(), qPrintable(check->errorMessage()));
    }

    void failuresAreToldInTheUsersWords_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("secret");
        QTest::addColumn<QString>("endpoint");
        QTest::addColumn<QString>("bucket");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("rcloneWords");

        QTest::newRow("wrong secret") << QString() << QStringLiteral("not-the-secret") << QString() << QString()
                                      << int(IOperation::WrongCredentials)
                                      << QStringLiteral("The storage refused the secret key.")
                                      << QStringLiteral("SignatureDoesNotMatch");
        QTest::newRow("unknown key") << QStringLiteral("AKIAUNKNOWNKEY000000") << QString() << QString() << QString()
                                     << int(IOperation::WrongCredentials)
                                     << QStringLiteral("The storage refused the access key.")
                                     << QStringLiteral("InvalidAccessKeyId");
        QTest::newRow("no such bucket") << QString() << QString() << QString() << QStringLiteral("nobody-made-this")
                                        << int(IOperation::NoSuchContainer)
                                        << QStringLiteral("There is no bucket \"nobody-made-this\" on %1.")
                                        << QStringLiteral("directory not found");
        QTest::newRow("host unreachable")
            << QString() << QString() << QStringLiteral("127.0.0.1:%1").arg(MotoPeer::freePort()) << QString()
            << int(IOperation::HostUnreachable)
            << QStringLiteral("%1 could not be reached. Check the address and the network connection.")
            << QStringLiteral("connection refused");
        QTest::newRow("unknown host") << QString() << QString() << QStringLiteral("no-such-host.invalid") << QString()
                                      << int(IOperation::HostUnreachable)
                                      << QStringLiteral("The host %1 could not be found. Check the address.")
                                      << QStringLiteral("no such host");
    }

    void failuresAreToldInTheUsersWords()
    {
        QFETCH(QString, key);
        QFETCH(QString, secret);
        QFETCH(QString, endpoint);
        QFETCH(QString, bucket);
        QFETCH(int, code);
        QFETCH(QString, message);
        QFETCH(QString, rcloneWords);

        QVariantMap config = m_moto.config(bucket);
        if (!key.isEmpty())
            config.insert(Key::AccessKey, key);
        if (!secret.isEmpty())
            config.insert(Key::SecretKey, secret);
        if (!endpoint.isEmpty())
            config.insert(Key::Endpoint, endpoint);

        LogCapture log;
        auto check = m_manager->checkConfig(config);
        QVERIFY(CloudTestSupport::run(check));
        QVERIFY(check->isError());
        QCOMPARE(check->errorCode(), code);
        if (message.contains(QLatin1String("%1")))
            message = message.arg(endpoint.isEmpty() ? m_moto.endpoint() : endpoint);
        QCOMPARE(check->errorMessage(), message);
        QVERIFY2(check->errorDetails().contains(rcloneWords), qPrintable(check->errorDetails()));
        // rclone's own words reach the log at debug level only.
        bool logged = false;
        for (const LogCapture::Entry& entry : log.entries()) {
            if (entry.message.contains(rcloneWords)) {
                QCOMPARE(entry.type, QtDebugMsg);
                logged = true;
            }
        }
        QVERIFY(logged);
    }

    void aCaBundleOfTheUsersEnvironmentDoesNotReachRclone()
    {
        // rclone's S3 back-end gives up with "LoadCustomCABundleError" whenever AWS_CA_BUNDLE is set.
        const QByteArray saved = qgetenv("AWS_CA_BUNDLE");
        qputenv("AWS_CA_BUNDLE", "/etc/ssl/certs/ca-certificates.crt");
        auto list = m_manager->listContainers(m_moto.config());
        const bool ran = CloudTestSupport::run(list);
        if (saved.isNull())
            qunsetenv("AWS_CA_BUNDLE");
        else
            qputenv("AWS_CA_BUNDLE", saved);
        QVERIFY(ran);
        QVERIFY2(!list->isError(), qPrintable(list->errorDetails()));
    }

    void listingFoldsFoldersAndPages()
    {
        const QVariantMap config = m_moto.config(QStringLiteral("listing"));
        auto create
            = m_manager->createContainer(config, TWL::Cloud::ContainerParams::AmazonS3Like("listing", {}).json());
        QVERIFY(CloudTestSupport::run(create));
        const QString plan = QUuid::createUuid().toString(QUuid::WithoutBraces);
        for (const QString& key : {QStringLiteral("notes.txt"), QStringLiteral("TWB_laptop/a.txt"),
                 QStringLiteral("TWB_desk/deep/b.txt"), QStringLiteral("office/%1/config").arg(plan),
                 QStringLiteral("office/%1/data/00/0011").arg(plan), QStringLiteral("docs/x y.txt")})
            QVERIFY(CloudTestSupport::putObject(config, QStringLiteral("listing"), key));

        auto top = m_manager->listing(config, QString(), QString(), QStringLiteral("/"), 1000);
        QVERIFY(CloudTestSupport::run(top));
        QVERIFY2(!top->isError(), qPrintable(top->errorMessage()));
        auto* page = qobject_cast<Operation::Listing*>(top.data());
        QVERIFY(page);
        QCOMPARE(CloudTestSupport::names(page->data()),
            QStringList({"TWB_desk/", "TWB_laptop/", "docs/", "notes.txt", "office/"}));
        QVERIFY(page->marker().isEmpty());
        const TWL::Cloud::Api::ListingObject folder(page->data().first().toObject());
        QVERIFY(folder.isFolder());
        QVERIFY(!TWL::Cloud::Api::ListingObject(page->data().at(3).toObject()).isFolder());

        auto roots = m_manager->listing(config, QStringLiteral("TWB_"), QString(), QStringLiteral("/"), 1000);
        QVERIFY(CloudTestSupport::run(roots));
        QCOMPARE(CloudTestSupport::names(roots), QStringList({"TWB_desk/", "TWB_laptop/"}));
        QCOMPARE(qobject_cast<Operation::Listing*>(roots.data())->prefix(), QStringLiteral("TWB_"));

        auto inside = m_manager->listing(config, QStringLiteral("docs/"), QString(), QStringLiteral("/"), 1000);
        QVERIFY(CloudTestSupport::run(inside));
        QCOMPARE(CloudTestSupport::names(inside), QStringList({"docs/x y.txt"}));

        // Two at a time: the marker leads through the pages, and the last has none.
        QStringList paged;
        QString marker;
        int pages = 0;
        do {
            auto next = m_manager->listing(config, QString(), marker, QStringLiteral("/"), 2);
            QVERIFY(CloudTestSupport::run(next));
            auto* listing = qobject_cast<Operation::Listing*>(next.data());
            QVERIFY(listing->data().size() <= 2);
            paged << CloudTestSupport::names(listing->data());
            marker = listing->marker();
            ++pages;
        } while (!marker.isEmpty() && pages < 10);
        QCOMPARE(pages, 3);
        QCOMPARE(paged, CloudTestSupport::names(page->data()));

        TWB::Operation::GetPrefixOperation prefixes(config, QStringLiteral("TWB_"));
        QSignalSpy found(&prefixes, &TWB::Operation::GetPrefixOperation::finished);
        QSignalSpy failed(&prefixes, &TWB::Operation::GetPrefixOperation::error);
        prefixes.exec();
        QVERIFY(found.wait(60000));
        QCOMPARE(failed.count(), 0);
        QCOMPARE(found.first().at(0).toUuid(), prefixes.id());
        QCOMPARE(found.first().at(1).toStringList(), QStringList({"desk", "laptop", "office"}));
    }

    void prefixesOfAMissingBucketEndInAnError()
    {
        TWB::Operation::GetPrefixOperation prefixes(m_moto.config(QStringLiteral("not-made")), QStringLiteral("TWB_"));
        QSignalSpy failed(&prefixes, &TWB::Operation::GetPrefixOperation::error);
        prefixes.exec();
        QVERIFY(failed.wait(60000));
        QCOMPARE(failed.first().at(1).toInt(), int(IOperation::NoSuchContainer));
    }

    void lifecyclePolicyIsLoadedSavedAndDeleted()
    {
        const QVariantMap config = m_moto.config(QStringLiteral("photos"));
        const QPointer<TWL::Cloud::AmazonOperationManager> amazon = TWL::Cloud::AmazonOperationManager::instance();
        QVERIFY(amazon);
        auto load = [&] {
            auto operation = amazon->loadLifecyclePolicy(config);
            if (!CloudTestSupport::run(operation) || operation->isError())
                return QByteArray("failed: ") + operation->errorMessage().toUtf8();
            return qobject_cast<Operation::Amazon::LoadLifecyclePolicy*>(operation.data())->data();
        };
        QCOMPARE(load(), QByteArray());

        const QByteArray policy = "<LifecycleConfiguration><Rule><ID>TWB_laptop/</ID><Filter><Prefix>TWB_laptop/"
                                  "</Prefix></Filter><Status>Enabled</Status><Transition><Days>30</Days>"
                                  "<StorageClass>GLACIER</StorageClass></Transition></Rule></LifecycleConfiguration>";
        auto save = amazon->saveLifecyclePolicy(config, policy);
        QVERIFY(CloudTestSupport::run(save));
        QVERIFY2(!save->isError(), qPrintable(save->errorMessage() + save->errorDetails()));
        QCOMPARE(save->type(), QStringLiteral("Amazon_SaveLifecyclePolicy"));
        const QByteArray stored = load();
        QVERIFY2(stored.contains("<ID>TWB_laptop/</ID>") && stored.contains("GLACIER"), stored.constData());

        auto remove = amazon->deleteLifecyclePolicy(config);
        QVERIFY(CloudTestSupport::run(remove));
        QVERIFY2(!remove->isError(), qPrintable(remove->errorMessage()));
        QCOMPARE(load(), QByteArray());

        QVariantMap wrong = config;
        wrong.insert(Key::SecretKey, QStringLiteral("not-the-secret"));
        auto refused = amazon->loadLifecyclePolicy(wrong);
        QVERIFY(CloudTestSupport::run(refused));
        QCOMPARE(refused->errorCode(), int(IOperation::WrongCredentials));
        QVERIFY(!amazon->loadLifecyclePolicy(m_moto.config()));
    }

    void secretsStayOffCommandLinesAndLogs()
    {
        LogCapture log;
        const QString secret = m_moto.secretKey();
        auto list = m_manager->listContainers(m_moto.config());
        QSignalSpy finished(list.data(), &IOperation::finished);
        list->exec();
        QMap<qint64, QByteArray> seen;
        QByteArray environment;
        // Polled with no pause, since rclone lives for a fraction of a second.
        while (finished.isEmpty()) {
            const QMap<qint64, QByteArray> now = TWB::Test::descendants(QCoreApplication::applicationPid());
            for (auto it = now.constBegin(); it != now.constEnd(); ++it) {
                if (it.value().contains("lsjson") && environment.isEmpty())
                    environment = TWB::Test::environmentOf(it.key());
                // A process that has ended and waits to be reaped shows no command line.
                if (!it.value().isEmpty())
                    seen.insert(it.key(), it.value());
            }
            QCoreApplication::processEvents();
        }
        list->remove();
        QVERIFY2(!list->isError(), qPrintable(list->errorMessage()));
        bool sawRclone = false;
        for (const QByteArray& command : qAsConst(seen)) {
            QVERIFY2(!command.contains(secret.toUtf8()), command.constData());
            sawRclone = sawRclone || command.contains("lsjson");
        }
        QVERIFY(sawRclone);
        QVERIFY(environment.contains("RCLONE_CONFIG_TWBSTORAGE_SECRET_ACCESS_KEY=" + secret.toUtf8()));
        QVERIFY(!environment.contains("AWS_CA_BUNDLE="));
        for (const LogCapture::Entry& entry : log.entries())
            QVERIFY2(!entry.message.contains(secret), qPrintable(entry.message));
    }

    void savedDocumentReachesTheSameBucket()
    {
        const QVariantMap config = TWB::DataConverter::StorageConfig::Twb2Twl::fromTwb(QJsonObject {
            {QStringLiteral("Type"), 11}, {QStringLiteral("DetailParams"), m_moto.document(QStringLiteral("photos"))}});
        QCOMPARE(config.value(Key::SecretKey).toString(), m_moto.secretKey());
        auto check = m_manager->checkConfig(config);
        QVERIFY(CloudTestSupport::run(check));
        QVERIFY2(!check->isError(), qPrintable(check->errorMessage()));
    }
};

QTEST_GUILESS_MAIN(TestCloudS3)
#include "tst_cloud_s3.moc"
