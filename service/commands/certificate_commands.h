#pragma once

#include <QJsonObject>

class QObject;

namespace TWB::Service {

class CommandRouter;
class Database;
class Responder;

/// "GetPeerSslCertificate", which fetches the certificate an endpoint shows,
/// "AppendToSslStorage", which keeps a certificate the user chose to trust, and "ReadFromSslStorage",
/// which gives all of them.
class CertificateCommands final
{
public:
    /// Probes of endpoints live under `owner`.
    CertificateCommands(Database& database, QObject* owner)
        : m_database(database)
        , m_owner(owner)
    { }
    CertificateCommands(const CertificateCommands&) = delete;
    CertificateCommands& operator=(const CertificateCommands&) = delete;

    void registerAt(CommandRouter& router);

    /// How long a TLS handshake may take before the request fails.
    void setHandshakeTimeout(int milliseconds) { m_timeoutMs = milliseconds; }

private:
    void peerCertificate(const QJsonObject& params, const Responder& respond);
    void appendToStorage(const QJsonObject& params, const Responder& respond);
    void readStorage(const QJsonObject& params, const Responder& respond);

    Database& m_database;
    QObject* m_owner; // not owned
    int m_timeoutMs = 20000;
};

} // namespace TWB::Service
