#include "cloud_test_support.h"
#include "service_fixture.h"

#include "platform/cloud/operation_manager.h"
#include "platform/communication/connection_manager.h"
#include "support/cloud_peers.h"
#include "support/service_process.h"
#include "support/test_environment.h"

#include <QJsonArray>
#include <QSignalSpy>
#include <QSslCertificate>
#include <QtTest>

#include <memory>

using TWB::Test::CloudPeer;
using TWB::Test::CloudTestSupport;
using TWB::Test::MotoPeer;
using TWB::Test::ServiceProcess;
using TWB::Test::TestEnvironment;
using TWL::Cloud::IOperation;
using TWL::Cloud::OperationManager;

/// Trust in a self-signed S3 endpoint: refused at first, then granted through the service's certificate
/// store, which each rclone run reads.
class TestCloudTrust : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestEnvironment> m_environment;
    std::unique_ptr<ServiceProcess> m_service;
    QTemporaryDir m_certificates;
    QString m_certificate;
    MotoPeer m_moto;
    QPointer<OperationManager> m_manager;

    static QJsonObject call(const QString& name, const QJsonObject& params, QString* failure)
    {
        const TWB::Test::ServiceReply reply = TWB::Test::ServiceFixture::callThroughChannel(name, params);
        *failure = reply.success ? QString() : reply.error;
        return reply.data;
    }

    int listBuckets()
    {
        auto list = m_manager->listContainers(m_moto.config());
        if (!CloudTestSupport::run(list))
            return -1;
        return list->errorCode();
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString why = MotoPeer::missing(); !why.isEmpty())
            QSKIP(qPrintable(why));
        m_environment = std::make_unique<TestEnvironment>();
        QString key;
        QVERIFY(CloudPeer::makeCertificate(m_certificates.path(), &m_certificate, &key));
        QVERIFY2(m_moto.start(m_certificate, key), qPrintable(m_moto.output()));
        m_service = std::make_unique<ServiceProcess>(m_environment->socketPath(), m_environment->dataDir());
        QVERIFY2(m_service->start(), qPrintable(m_service->output()));
        QVERIFY(TWB::Common::Communication::ConnectionManager::instance());
        TestEnvironment::speedUpChannel();
        QTRY_VERIFY(TWB::Common::Communication::ConnectionManager::instance()->isLocalManagmentConnected());
        m_manager = OperationManager::instance();
        QVERIFY(m_manager);
        QVERIFY(m_manager->useServiceTrustStore());
    }

    void cleanupTestCase()
    {
        if (m_service)
            QVERIFY2(m_service->terminate(), qPrintable(m_service->output()));
    }

    void trustGrantedInTheServiceReachesRclone()
    {
        auto refused = m_manager->listContainers(m_moto.config());
        QVERIFY(CloudTestSupport::run(refused));
        QCOMPARE(refused->errorCode(), int(IOperation::CertificateNotTrusted));
        QCOMPARE(
            refused->errorMessage(), QStringLiteral("The certificate of %1 is not trusted.").arg(m_moto.endpoint()));

        // The dialog shows what the peer presents, and the user trusts it.
        QString failure;
        const QJsonObject shown = call(
            QStringLiteral("GetPeerSslCertificate"), {{QStringLiteral("endpoint"), m_moto.endpoint()}}, &failure);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        const QString pem = shown.value(QStringLiteral("pem")).toString();
        QFile file(m_certificate);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QSslCertificate(pem.toLatin1()), QSslCertificate(file.readAll()));
        call(QStringLiteral("AppendToSslStorage"), {{QStringLiteral("pem"), pem}}, &failure);
        QVERIFY2(failure.isEmpty(), qPrintable(failure));

        const QJsonArray stored
            = call(QStringLiteral("ReadFromSslStorage"), {}, &failure).value(QStringLiteral("certificates")).toArray();
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        QCOMPARE(stored.size(), 1);
        QCOMPARE(QSslCertificate(stored.first().toObject().value(QStringLiteral("pem")).toString().toLatin1()),
            QSslCertificate(pem.toLatin1()));

        QCOMPARE(listBuckets(), int(IOperation::NoError));

        // The trust lives in the service: without asking it, the endpoint is a stranger again.
        m_manager->setUseServiceTrustStore(false);
        QCOMPARE(listBuckets(), int(IOperation::CertificateNotTrusted));
        m_manager->addTrustedCertificate(pem.toLatin1());
        QCOMPARE(listBuckets(), int(IOperation::NoError));
    }
};

QTEST_GUILESS_MAIN(TestCloudTrust)
#include "tst_cloud_trust.moc"
