#include "service/commands/certificate_commands.h"

#include "platform/logging/twl_debug.h"
#include "service/store/certificate_store.h"
#include "service/commands/command_router.h"
#include "service/commands/params.h"
#include "service/commands/peer_certificate_probe.h"
#include "service/commands/responder.h"
#include "service/store/transaction.h"

#include <QJsonArray>
#include <QUrl>

namespace TWB::Service {

namespace {
constexpr int httpsPort = 443;
} // namespace

void CertificateCommands::registerAt(CommandRouter& router)
{
    router.add(QStringLiteral("GetPeerSslCertificate"),
        [this](const QJsonObject& params, const Responder& respond) { peerCertificate(params, respond); });
    router.add(QStringLiteral("AppendToSslStorage"),
        [this](const QJsonObject& params, const Responder& respond) { appendToStorage(params, respond); });
    router.add(QStringLiteral("ReadFromSslStorage"),
        [this](const QJsonObject& params, const Responder& respond) { readStorage(params, respond); });
}

void CertificateCommands::peerCertificate(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    const QString endpoint = params.nonEmptyString("endpoint").trimmed();
    // Endpoints come as the user typed them: a bare host, host:port, or a URL with a scheme.
    const QUrl url = QUrl::fromUserInput(
        endpoint.contains(QLatin1String("://")) ? endpoint : QStringLiteral("https://") + endpoint);
    if (!url.isValid() || url.host().isEmpty())
        throw params.fault("endpoint", QStringLiteral("has no host name: \"%1\"").arg(endpoint.left(200)));
    const int port = url.port(httpsPort);
    auto* probe = new PeerCertificateProbe(url.host(), quint16(port), respond, m_owner);
    probe->start(m_timeoutMs);
}

void CertificateCommands::appendToStorage(const QJsonObject& request, const Responder& respond)
{
    const Params params(request, respond.command());
    const QString pem = params.nonEmptyString("pem");
    const QList<QSslCertificate> certificates = QSslCertificate::fromData(pem.toLatin1(), QSsl::Pem);
    if (certificates.isEmpty() || certificates.first().isNull())
        throw params.fault("pem", QStringLiteral("holds no PEM certificate"));
    CertificateStore store(m_database);
    QJsonArray fingerprints;
    Transaction transaction(m_database);
    for (const QSslCertificate& certificate : certificates) {
        store.add(certificate);
        fingerprints.append(CertificateStore::fingerprint(certificate));
    }
    transaction.commit();
    TWL::TwlDebug("TWB").info() << "Trusted" << certificates.size() << "certificate(s) of"
                                << certificates.first().subjectDisplayName();
    respond.success({{QStringLiteral("fingerprints"), fingerprints}});
}

void CertificateCommands::readStorage(const QJsonObject& request, const Responder& respond)
{
    Q_UNUSED(request)
    // The console's own cloud operations run rclone, which must trust what the user trusted here.
    QJsonArray certificates;
    const QList<QSslCertificate> all = CertificateStore(m_database).all();
    for (const QSslCertificate& certificate : all) {
        certificates.append(QJsonObject {{QStringLiteral("pem"), QString::fromLatin1(certificate.toPem())},
            {QStringLiteral("fingerprint"), CertificateStore::fingerprint(certificate)},
            {QStringLiteral("subject"), certificate.subjectDisplayName()}});
    }
    respond.success({{QStringLiteral("certificates"), certificates}});
}

} // namespace TWB::Service
