#pragma once

#include "support/cloud_peers.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace TWB::Test {

/// One message the sink took, decoded.
struct SinkMail
{
    QString from;
    QStringList to;
    QString subject;
    QString body;
};

/// An SMTP server on loopback (tests/support/smtp_sink.py) that keeps every message it takes. It
/// demands AUTH and refuses a wrong password.
class SmtpSink final : public CloudPeer
{
public:
    static QString user() { return QStringLiteral("mailer"); }
    static QString password() { return QStringLiteral("smtp Secret 9"); }

    /// With a certificate and key, STARTTLS is demanded before anything else.
    bool start(const QString& certificate = QString(), const QString& key = QString());
    /// Every message taken so far, oldest first.
    QList<SinkMail> messages() const;
};

} // namespace TWB::Test
