#include "raw_client.h"
#include "service_fixture.h"
#include "support/cloud_peers.h"

#include "service/store/certificate_store.h"
#include "service/store/database.h"

#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <memory>

using TWB::Test::RawClient;
using TWB::Test::ServiceFixture;
using TWB::Test::ServiceReply;

namespace {

/// A TLS endpoint with a self-signed certificate, which no store trusts.
class TlsServer final : public QTcpServer
{
public:
    TlsServer(const QSslCertificate& certificate, const QSslKey& key)
        : m_certificate(certificate)
        , m_key(key)
    { }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto* socket = new QSslSocket(this);
        if (!socket->setSocketDescriptor(descriptor)) {
            delete socket;
            return;
        }
        socket->setLocalCertificate(m_certificate);
        socket->setPrivateKey(m_key);
        connect(socket, &QAbstractSocket::disconnected, socket, &QObject::deleteLater);
        socket->startServerEncryption();
    }

private:
    QSslCertificate m_certificate;
    QSslKey m_key;
};

/// Accepts and hangs up at once, as a plain service on a port that was thought to speak TLS.
class HangUpServer final : public QTcpServer
{
protected:
    void incomingConnection(qintptr descriptor) override
    {
        QTcpSocket socket;
        socket.setSocketDescriptor(descriptor);
        socket.write("HTTP/1.0 400 Bad Request\r\n\r\n");
        socket.waitForBytesWritten(1000);
        socket.close();
    }
};

QJsonObject endpoint(const QString& text)
{
    return {{QStringLiteral("endpoint"), text}};
}

} // namespace

class TestServiceCertificates : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ServiceFixture> m_service;
    std::unique_ptr<RawClient> m_client;
    QSslCertificate m_certificate;
    QSslKey m_key;

private Q_SLOTS:
    void initTestCase()
    {
        if (!QSslSocket::supportsSsl())
            QSKIP("Qt has no TLS back-end on this machine");
        m_service = std::make_unique<ServiceFixture>();
        QString certificate;
        QString privateKey;
        QVERIFY(TWB::Test::CloudPeer::makeCertificate(m_service->environment().root(), &certificate, &privateKey));
        QFile cert(certificate);
        QFile key(privateKey);
        QVERIFY(cert.open(QIODevice::ReadOnly) && key.open(QIODevice::ReadOnly));
        m_certificate = QSslCertificate(&cert, QSsl::Pem);
        m_key = QSslKey(&key, QSsl::Rsa, QSsl::Pem);
        QVERIFY(!m_certificate.isNull() && !m_key.isNull());

        m_client = std::make_unique<RawClient>();
        QVERIFY2(m_service->startWithConsoles(*m_client), qPrintable(m_service->process().output()));
    }

    void untrustedPeerShowsItsCertificate_data()
    {
        QTest::addColumn<QString>("form");
        QTest::newRow("host and port") << "127.0.0.1:%1";
        QTest::newRow("URL with a path") << "https://127.0.0.1:%1/bucket/key";
        QTest::newRow("name and port") << "localhost:%1";
    }

    void untrustedPeerShowsItsCertificate()
    {
        QFETCH(QString, form);
        TlsServer server(m_certificate, m_key);
        QVERIFY(server.listen(QHostAddress::LocalHost));
        // The console's dialog waits for this reply; the service answers it when the handshake is done.
        const ServiceReply reply = ServiceFixture::callThroughChannel(
            QStringLiteral("GetPeerSslCertificate"), endpoint(form.arg(server.serverPort())));
        QVERIFY2(reply.success, qPrintable(reply.error));
        const QSslCertificate shown(reply.data.value(QStringLiteral("pem")).toString().toLatin1(), QSsl::Pem);
        QCOMPARE(shown, m_certificate);
    }

    void otherClientsAreServedDuringAHandshake()
    {
        // A peer that accepts and never answers the TLS hello holds its request, not the service.
        QTcpServer silent;
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        const QString pending = m_client->send(
            QStringLiteral("GetPeerSslCertificate"), endpoint(QStringLiteral("127.0.0.1:%1").arg(silent.serverPort())));
        QTRY_VERIFY(silent.hasPendingConnections());
        RawClient other;
        QVERIFY(other.connectTo(m_service->socketPath()));
        QVERIFY(other.call(QStringLiteral("PlanGetList")).success);
        QVERIFY(!m_client->reply(pending).received);
        silent.close();
    }

    void failedHandshakesNameTheEndpoint_data()
    {
        QTest::addColumn<bool>("listening");
        QTest::newRow("nothing listens") << false;
        QTest::newRow("not TLS") << true;
    }

    void failedHandshakesNameTheEndpoint()
    {
        QFETCH(bool, listening);
        HangUpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        const quint16 port = server.serverPort();
        if (!listening)
            server.close();
        const ServiceReply reply = m_client->call(
            QStringLiteral("GetPeerSslCertificate"), endpoint(QStringLiteral("127.0.0.1:%1").arg(port)));
        QVERIFY(reply.received);
        QVERIFY(!reply.success);
        QVERIFY2(reply.error.startsWith(QStringLiteral("No TLS handshake with 127.0.0.1:%1").arg(port)),
            qPrintable(reply.error));
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QJsonObject>("params");
        QTest::addColumn<QString>("error");
        const QString peer = QStringLiteral("GetPeerSslCertificate");
        const QString append = QStringLiteral("AppendToSslStorage");
        QTest::newRow("no endpoint") << peer << QJsonObject()
                                     << "Parameter \"endpoint\" of GetPeerSslCertificate is missing";
        QTest::newRow("empty endpoint") << peer << endpoint(QStringLiteral(" "))
                                        << "Parameter \"endpoint\" of GetPeerSslCertificate is empty";
        QTest::newRow("no host") << peer << endpoint(QStringLiteral("https://:443/"))
                                 << "Parameter \"endpoint\" of GetPeerSslCertificate has no host name";
        QTest::newRow("not PEM") << append << QJsonObject {{QStringLiteral("pem"), QStringLiteral("hello")}}
                                 << "Parameter \"pem\" of AppendToSslStorage holds no PEM certificate";
        QTest::newRow("no PEM") << append << QJsonObject() << "Parameter \"pem\" of AppendToSslStorage is missing";
    }

    void refusals()
    {
        QFETCH(QString, command);
        QFETCH(QJsonObject, params);
        QFETCH(QString, error);
        const ServiceReply reply = m_client->call(command, params);
        QVERIFY(!reply.success);
        QVERIFY2(reply.error.startsWith(error), qPrintable(reply.error));
    }

    void trustedCertificateIsKeptAcrossARestart()
    {
        const QString pem = QString::fromLatin1(m_certificate.toPem());
        const ServiceReply added
            = ServiceFixture::callThroughChannel(QStringLiteral("AppendToSslStorage"), {{QStringLiteral("pem"), pem}});
        QVERIFY2(added.success, qPrintable(added.error));
        QCOMPARE(added.data.value(QStringLiteral("fingerprints")).toArray().first().toString(),
            TWB::Service::CertificateStore::fingerprint(m_certificate));
        // Trusting it twice keeps one.
        QVERIFY(m_client->call(QStringLiteral("AppendToSslStorage"), {{QStringLiteral("pem"), pem}}).success);

        QVERIFY2(m_service->restart(), qPrintable(m_service->process().output()));
        TWB::Service::Database store(m_service->storeFile());
        store.open();
        QCOMPARE(TWB::Service::CertificateStore(store).all(), QList<QSslCertificate>({m_certificate}));
        QVERIFY(m_client->connectTo(m_service->socketPath()));
    }
};

QTEST_MAIN(TestServiceCertificates)
#include "tst_service_certificates.moc"
