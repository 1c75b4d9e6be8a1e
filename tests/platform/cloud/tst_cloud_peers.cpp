#include "cloud_test_support.h"

#include "platform/cloud/account_keys.h"
#include "platform/cloud/container_params.h"
#include "platform/cloud/get_prefix_operation.h"
#include "platform/cloud/list_containers.h"
#include "platform/cloud/listing.h"
#include "platform/cloud/listing_object.h"
#include "platform/cloud/operation_manager.h"
#include "support/cloud_peers.h"
#include "support/process_tree.h"
#include "support/log_capture.h"
#include "support/test_environment.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using TWB::Test::AzuritePeer;
using TWB::Test::CloudTestSupport;
using TWB::Test::LogCapture;
using TWB::Test::SftpPeer;
using TWB::Test::TestEnvironment;
using TWL::Cloud::IOperation;
using TWL::Cloud::OperationManager;
namespace Key = TWL::Cloud::Key;
namespace Operation = TWL::Cloud::Operation;

/// The cloud layer against Azure's emulator (azurite) and an SFTP server (rclone serve sftp) on loopback,
/// and against a local folder, which it reads itself.
class TestCloudPeers : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_environment;
    AzuritePeer m_azure;
    SftpPeer m_sftp;
    QTemporaryDir m_folder;
    QString m_azureMissing;
    QString m_sftpMissing;
    QPointer<OperationManager> m_manager;

    /// The peer's configuration with `container`; empty (and `why` set) when the peer is not running.
    QVariantMap peerConfig(const QString& backEnd, const QString& container, QString* why)
    {
        if (backEnd == QLatin1String("azure")) {
            *why = m_azureMissing;
            return m_azureMissing.isEmpty() ? m_azure.config(container) : QVariantMap();
        }
        QVariantMap config;
        if (backEnd == QLatin1String("folder")) {
            config = {{Key::CloudId, QUuid::createUuid()}, {Key::CloudType, QStringLiteral("FileSystem")},
                {Key::Path, m_folder.path()}};
        } else {
            *why = m_sftpMissing;
            if (!m_sftpMissing.isEmpty())
                return QVariantMap();
            config = m_sftp.config();
        }
        if (!container.isEmpty())
            config.insert(Key::ContainerName, container);
        return config;
    }

    QString hostOf(const QString& backEnd) const
    {
        if (backEnd == QLatin1String("folder"))
            return m_folder.path();
        return QStringLiteral("127.0.0.1:%1").arg(backEnd == QLatin1String("azure") ? m_azure.port() : m_sftp.port());
    }

    /// Makes an object with the layer's own container, then its content outside the layer under test.
    bool putObjects(const QString& backEnd, const QString& container, const QStringList& keys)
    {
        if (backEnd != QLatin1String("azure")) {
            const QString root = backEnd == QLatin1String("sftp") ? m_sftp.root() : m_folder.path();
            for (const QString& key : keys) {
                const QString path = root + QLatin1Char('/') + container + QLatin1Char('/') + key;
                QDir().mkpath(QFileInfo(path).path());
                QFile file(path);
                if (!file.open(QIODevice::WriteOnly) || file.write("x") != 1)
                    return false;
            }
            return true;
        }
        const QMap<QString, QString> remote {{QStringLiteral("TYPE"), QStringLiteral("azureblob")},
            {QStringLiteral("USE_EMULATOR"), QStringLiteral("true")},
            {QStringLiteral("ENDPOINT"),
                QStringLiteral("http://127.0.0.1:%1/%2").arg(m_azure.port()).arg(AzuritePeer::account())}};
        for (const QString& key : keys) {
            if (!CloudTestSupport::rcloneCopy(remote, QStringLiteral("peer:%1/%2").arg(container, key)))
                return false;
        }
        return true;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_environment = std::make_unique<TestEnvironment>();
        m_manager = OperationManager::instance();
        QVERIFY(m_manager);
        m_manager->setUseServiceTrustStore(false);
        m_azureMissing = AzuritePeer::missing();
        if (m_azureMissing.isEmpty())
            QVERIFY2(m_azure.start(), qPrintable(m_azure.output()));
        m_sftpMissing = SftpPeer::missing();
        if (m_sftpMissing.isEmpty())
            QVERIFY2(m_sftp.start(), qPrintable(m_sftp.output()));
    }

    void containersAreMadeListedAndChecked_data()
    {
        QTest::addColumn<QString>("backEnd");
        QTest::addColumn<QString>("missingMessage");
        QTest::newRow("azure") << QStringLiteral("azure")
                               << QStringLiteral("There is no bucket \"nobody-made-this\" on %1.");
        QTest::newRow("sftp") << QStringLiteral("sftp")
                              << QStringLiteral("There is no folder \"nobody-made-this\" on %1.");
        QTest::newRow("folder") << QStringLiteral("folder")
                                << QStringLiteral("The folder \"%1/nobody-made-this\" does not exist.");
    }

    void containersAreMadeListedAndChecked()
    {
        QFETCH(QString, backEnd);
        QFETCH(QString, missingMessage);
        QString why;
        const QVariantMap config = peerConfig(backEnd, QString(), &why);
        if (config.isEmpty())
            QSKIP(qPrintable(why));

        auto create
            = m_manager->createContainer(config, TWL::Cloud::ContainerParams::AzureBlob("box-one", QString()).json());
        QVERIFY(CloudTestSupport::run(create));
        QVERIFY2(!create->isError(), qPrintable(create->errorMessage() + create->errorDetails()));
        if (backEnd != QLatin1String("azure")) {
            const QString root = backEnd == QLatin1String("sftp") ? m_sftp.root() : m_folder.path();
            QVERIFY(QFileInfo(root + QStringLiteral("/box-one")).isDir());
        }

        auto list = m_manager->listContainers(config);
        QVERIFY(CloudTestSupport::run(list));
        QVERIFY2(!list->isError(), qPrintable(list->errorMessage() + list->errorDetails()));
        QVERIFY2(CloudTestSupport::containerNames(list).contains(QStringLiteral("box-one")),
            qPrintable(CloudTestSupport::containerNames(list).join(',')));

        auto check = m_manager->checkConfig(peerConfig(backEnd, QStringLiteral("box-one"), &why));
        QVERIFY(CloudTestSupport::run(check));
        QVERIFY2(!check->isError(), qPrintable(check->errorMessage() + check->errorDetails()));

        auto missing = m_manager->checkConfig(peerConfig(backEnd, QStringLiteral("nobody-made-this"), &why));
        QVERIFY(CloudTestSupport::run(missing));
        QCOMPARE(missing->errorCode(), int(IOperation::NoSuchContainer));
        QCOMPARE(missing->errorMessage(), missingMessage.arg(hostOf(backEnd)));
    }

    void failuresAreToldInTheUsersWords_data()
    {
        QTest::addColumn<QString>("backEnd");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");

        QTest::newRow("sftp wrong password")
            << QStringLiteral("sftp") << QString(Key::Password) << QVariant(QStringLiteral("not the password"))
            << int(IOperation::WrongCredentials)
            << QStringLiteral("The server refused the user name, the password or the private key.");
        QTest::newRow("sftp unknown user")
            << QStringLiteral("sftp") << QString(Key::User) << QVariant(QStringLiteral("mallory"))
            << int(IOperation::WrongCredentials)
            << QStringLiteral("The server refused the user name, the password or the private key.");
        QTest::newRow("sftp nobody listening")
            << QStringLiteral("sftp") << QString(Key::Port) << QVariant(int(SftpPeer::freePort()))
            << int(IOperation::HostUnreachable)
            << QStringLiteral("%1 could not be reached. Check the address and the network connection.");
        QTest::newRow("azure nobody listening")
            << QStringLiteral("azure") << Key::Endpoint
            << QVariant(QStringLiteral("127.0.0.1:%1/devstoreaccount1").arg(AzuritePeer::freePort()))
            << int(IOperation::HostUnreachable)
            << QStringLiteral("%1 could not be reached. Check the address and the network connection.");
        QTest::newRow("azure path of another account")
            << QStringLiteral("azure") << Key::Endpoint << QVariant(QStringLiteral("127.0.0.1:10000/someone"))
            << int(IOperation::BadConfiguration)
            << QStringLiteral("The endpoint \"127.0.0.1:10000/someone\" holds a path, which only Azure's storage "
                              "emulator with the account \"devstoreaccount1\" may have. Enter the domain that "
                              "follows the account's name, such as blob.core.chinacloudapi.cn.");
    }

    void failuresAreToldInTheUsersWords()
    {
        QFETCH(QString, backEnd);
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        QFETCH(int, code);
        QFETCH(QString, message);
        QString why;
        QVariantMap config = peerConfig(backEnd, QString(), &why);
        if (config.isEmpty())
            QSKIP(qPrintable(why));
        config.insert(key, value);

        LogCapture log;
        auto check = m_manager->checkConfig(config);
        QVERIFY(CloudTestSupport::run(check));
        QCOMPARE(check->errorCode(), code);
        if (message.contains(QLatin1String("%1")))
            message = message.arg(key == Key::Port ? QStringLiteral("127.0.0.1:%1").arg(value.toInt())
                    : key == Key::Endpoint         ? value.toString().section(QLatin1Char('/'), 0, 0)
                                                   : hostOf(backEnd));
        QCOMPARE(check->errorMessage(), message);
        // The secrets stay out of the log at every level.
        for (const LogCapture::Entry& entry : log.entries()) {
            QVERIFY2(!entry.message.contains(SftpPeer::password()), qPrintable(entry.message));
            QVERIFY2(!entry.message.contains(AzuritePeer::key()), qPrintable(entry.message));
        }
    }

    void listingFoldsFoldersAndFindsPrefixes_data()
    {
        QTest::addColumn<QString>("backEnd");
        QTest::newRow("azure") << QStringLiteral("azure");
        QTest::newRow("sftp") << QStringLiteral("sftp");
        QTest::newRow("folder") << QStringLiteral("folder");
    }

    void listingFoldsFoldersAndFindsPrefixes()
    {
        QFETCH(QString, backEnd);
        QString why;
        const QVariantMap config = peerConfig(backEnd, QStringLiteral("listing"), &why);
        if (config.isEmpty())
            QSKIP(qPrintable(why));
        auto create
            = m_manager->createContainer(config, TWL::Cloud::ContainerParams::AzureBlob("listing", QString()).json());
        QVERIFY(CloudTestSupport::run(create));
        QVERIFY2(!create->isError(), qPrintable(create->errorMessage() + create->errorDetails()));
        QVERIFY(putObjects(backEnd, QStringLiteral("listing"),
            {QStringLiteral("notes.txt"), QStringLiteral("TWB_laptop/a.txt"), QStringLiteral("TWB_desk/deep/b.txt"),
                QStringLiteral("docs/x y.txt")}));

        auto top = m_manager->listing(config, QString(), QString(), QStringLiteral("/"), 1000);
        QVERIFY(CloudTestSupport::run(top));
        QVERIFY2(!top->isError(), qPrintable(top->errorMessage() + top->errorDetails()));
        QCOMPARE(CloudTestSupport::names(top), QStringList({"TWB_desk/", "TWB_laptop/", "docs/", "notes.txt"}));

        auto inside = m_manager->listing(config, QStringLiteral("docs/"), QString(), QStringLiteral("/"), 1000);
        QVERIFY(CloudTestSupport::run(inside));
        QCOMPARE(CloudTestSupport::names(inside), QStringList({"docs/x y.txt"}));

        auto everything = m_manager->listing(config, QString(), QString(), QString(), 0);
        QVERIFY(CloudTestSupport::run(everything));
        QCOMPARE(CloudTestSupport::names(everything),
            QStringList({"TWB_desk/deep/b.txt", "TWB_laptop/a.txt", "docs/x y.txt", "notes.txt"}));

        auto nowhere = m_manager->listing(config, QStringLiteral("absent/"), QString(), QStringLiteral("/"), 1000);
        QVERIFY(CloudTestSupport::run(nowhere));
        QVERIFY2(!nowhere->isError(), qPrintable(nowhere->errorMessage()));
        QCOMPARE(CloudTestSupport::names(nowhere), QStringList());

        TWB::Operation::GetPrefixOperation prefixes(config, QStringLiteral("TWB_"));
        QSignalSpy found(&prefixes, &TWB::Operation::GetPrefixOperation::finished);
        QSignalSpy failed(&prefixes, &TWB::Operation::GetPrefixOperation::error);
        prefixes.exec();
        QVERIFY(found.wait(60000));
        QCOMPARE(failed.count(), 0);
        QCOMPARE(found.first().at(1).toStringList(), QStringList({"desk", "laptop"}));
    }

    void sftpLogsInWithAKeyFile()
    {
        if (!m_sftpMissing.isEmpty())
            QSKIP(qPrintable(m_sftpMissing));
        if (QStandardPaths::findExecutable(QStringLiteral("ssh-keygen")).isEmpty())
            QSKIP("ssh-keygen is not installed (openssh-client)");
        QTemporaryDir keys;
        const QString known = keys.filePath(QStringLiteral("known"));
        const QString stranger = keys.filePath(QStringLiteral("stranger"));
        for (const QString& path : {known, stranger}) {
            QProcess keygen;
            keygen.start(QStringLiteral("ssh-keygen"),
                {QStringLiteral("-q"), QStringLiteral("-t"), QStringLiteral("ed25519"), QStringLiteral("-N"), QString(),
                    QStringLiteral("-f"), path});
            QVERIFY(keygen.waitForFinished(30000) && keygen.exitCode() == 0);
        }
        SftpPeer peer;
        QVERIFY2(peer.start(known + QStringLiteral(".pub")), qPrintable(peer.output()));
        QDir().mkpath(peer.root() + QStringLiteral("/by-key"));

        auto keyed = [&peer](const QString& keyFile) {
            QVariantMap config = peer.config();
            QFile file(keyFile);
            file.open(QIODevice::ReadOnly);
            config.insert(Key::Password, QString());
            config.insert(Key::PrivateKey, file.readAll());
            return config;
        };
        auto list = m_manager->listContainers(keyed(known));
        QVERIFY(CloudTestSupport::run(list));
        QVERIFY2(!list->isError(), qPrintable(list->errorMessage() + list->errorDetails()));
        QCOMPARE(CloudTestSupport::containerNames(list), QStringList({"by-key"}));

        auto refused = m_manager->listContainers(keyed(stranger));
        QVERIFY(CloudTestSupport::run(refused));
        QCOMPARE(refused->errorCode(), int(IOperation::WrongCredentials));
    }

    void sftpPasswordStaysOffCommandLines()
    {
        if (!m_sftpMissing.isEmpty())
            QSKIP(qPrintable(m_sftpMissing));
        LogCapture log;
        auto list = m_manager->listContainers(m_sftp.config());
        QSignalSpy finished(list.data(), &IOperation::finished);
        list->exec();
        bool sawListing = false;
        // Polled with no pause: each rclone lives for a fraction of a second.
        while (finished.isEmpty()) {
            const QMap<qint64, QByteArray> now = TWB::Test::descendants(QCoreApplication::applicationPid());
            for (const QByteArray& command : now) {
                // The peer itself was given the password to check.
                if (command.contains("serve"))
                    continue;
                QVERIFY2(!command.contains(SftpPeer::password().toUtf8()), command.constData());
                sawListing = sawListing || command.contains("lsjson");
            }
            QCoreApplication::processEvents();
        }
        list->remove();
        QVERIFY2(!list->isError(), qPrintable(list->errorMessage() + list->errorDetails()));
        QVERIFY(sawListing);
        for (const LogCapture::Entry& entry : log.entries())
            QVERIFY2(!entry.message.contains(SftpPeer::password()), qPrintable(entry.message));
    }
};

QTEST_GUILESS_MAIN(TestCloudPeers)
#include "tst_cloud_peers.moc"
