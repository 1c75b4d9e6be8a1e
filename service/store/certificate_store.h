#pragma once

#include <QDateTime>
#include <QList>
#include <QSslCertificate>
#include <QString>

namespace TWB::Service {

class Database;

/// Certificates the user chose to trust, kept by their SHA-256 fingerprint.
class CertificateStore final
{
public:
    explicit CertificateStore(Database& database)
        : m_database(database)
    { }

    /// Adds the certificate; true when it was not there yet.
    bool add(const QSslCertificate& certificate);
    QList<QSslCertificate> all();
    static QString fingerprint(const QSslCertificate& certificate);

private:
    Database& m_database;
};

} // namespace TWB::Service
