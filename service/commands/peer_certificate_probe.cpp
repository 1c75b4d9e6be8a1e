#include "service/commands/peer_certificate_probe.h"

#include "platform/logging/twl_debug.h"

#include <QJsonObject>
#include <QSslSocket>

namespace TWB::Service {

PeerCertificateProbe::PeerCertificateProbe(const QString& host, quint16 port, const Responder& respond, QObject* parent)
    : QObject(parent)
    , m_host(host)
    , m_port(port)
    , m_respond(respond)
    , m_socket(new QSslSocket(this))
{
    // The point is to see a certificate that does not verify, so the handshake must not stop at it.
    m_socket->setPeerVerifyMode(QSslSocket::QueryPeer);
    connect(m_socket, &QSslSocket::encrypted, this, &PeerCertificateProbe::onEncrypted);
    connect(m_socket, QOverload<const QList<QSslError>&>::of(&QSslSocket::sslErrors), m_socket,
        [this](const QList<QSslError>&) { m_socket->ignoreSslErrors(); });
    connect(m_socket, &QAbstractSocket::errorOccurred, this, &PeerCertificateProbe::onError);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &PeerCertificateProbe::onTimeout);
}

void PeerCertificateProbe::start(int timeoutMs)
{
    TWL::TwlDebug("TWB").debug() << "Fetching the certificate of" << m_host << m_port;
    m_timer.start(timeoutMs);
    m_socket->connectToHostEncrypted(m_host, m_port);
}

void PeerCertificateProbe::onEncrypted()
{
    const QSslCertificate certificate = m_socket->peerCertificate();
    if (certificate.isNull())
        m_respond.fail(QStringLiteral("%1:%2 showed no certificate").arg(m_host).arg(m_port));
    else
        m_respond.success({{QStringLiteral("pem"), QString::fromLatin1(certificate.toPem())}});
    finish();
}

void PeerCertificateProbe::onError(QAbstractSocket::SocketError)
{
    if (m_respond.hasReplied())
        return;
    m_respond.fail(
        QStringLiteral("No TLS handshake with %1:%2: %3").arg(m_host).arg(m_port).arg(m_socket->errorString()));
    finish();
}

void PeerCertificateProbe::onTimeout()
{
    m_respond.fail(QStringLiteral("No TLS handshake with %1:%2 within %3 seconds")
                       .arg(m_host)
                       .arg(m_port)
                       .arg(m_timer.interval() / 1000));
    finish();
}

void PeerCertificateProbe::finish()
{
    m_timer.stop();
    m_socket->disconnect(this);
    m_socket->abort();
    deleteLater();
}

} // namespace TWB::Service
