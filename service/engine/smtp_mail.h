#pragma once

#include "service/store/notice_settings.h"

#include <QByteArray>
#include <QList>
#include <QSslCertificate>
#include <QString>

#include <functional>

class QObject;

namespace TWB::Service {

/// One plain-text email, sent through the mail server of the settings with libcurl.
class SmtpMail final
{
public:
    SmtpMail(const NoticeSettings& settings, const QString& subject, const QString& body);

    /// Certificates the user chose to trust, for a mail server whose certificate no authority signed:
    /// they are trusted beside the system's authorities.
    void setTrustedCertificates(const QList<QSslCertificate>& certificates) { m_trusted = certificates; }

    /// The whole message as it goes on the wire: headers, then the body in base64 lines.
    QByteArray message() const;
    /// Sends it and waits: the reason it failed, or an empty text. Blocks for up to a minute, so never
    /// on the service's main thread.
    QString send() const;
    /// Sends it on a thread of its own and calls `done` with send()'s answer on `context`'s thread;
    /// not at all when `context` is gone by then.
    void sendLater(QObject* context, std::function<void(const QString& error)> done) const;

private:
    NoticeSettings m_settings;
    QString m_subject;
    QString m_body;
    QList<QSslCertificate> m_trusted;
};

} // namespace TWB::Service
