#include "service/store/certificate_store.h"

#include "service/store/database.h"
#include "service/store/store_time.h"

namespace TWB::Service {

QString CertificateStore::fingerprint(const QSslCertificate& certificate)
{
    return QString::fromLatin1(certificate.digest(QCryptographicHash::Sha256).toHex());
}

bool CertificateStore::add(const QSslCertificate& certificate)
{
    QSqlQuery query = m_database.prepare(
        QStringLiteral("INSERT OR IGNORE INTO certificates (fingerprint, pem, subject, expires_utc, added_utc) "
                       "VALUES (?, ?, ?, ?, ?)"));
    query.addBindValue(Database::text(fingerprint(certificate)));
    query.addBindValue(Database::text(QString::fromLatin1(certificate.toPem())));
    query.addBindValue(Database::text(certificate.subjectDisplayName()));
    query.addBindValue(Database::text(StoreTime::toText(certificate.expiryDate())));
    query.addBindValue(Database::text(StoreTime::now()));
    m_database.exec(query);
    return query.numRowsAffected() > 0;
}

QList<QSslCertificate> CertificateStore::all()
{
    QSqlQuery query = m_database.prepare(QStringLiteral("SELECT pem FROM certificates ORDER BY added_utc, rowid"));
    m_database.exec(query);
    QList<QSslCertificate> certificates;
    while (query.next())
        certificates.append(QSslCertificate(query.value(0).toByteArray(), QSsl::Pem));
    return certificates;
}

} // namespace TWB::Service
