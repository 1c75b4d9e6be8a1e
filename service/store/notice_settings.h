#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace TWB::Service {

/// How the user hears of runs: the mail server through which the service sends plans' results, and
/// whether consoles show desktop notices. Kept in notices.ini of the data folder (mode 0600), the
/// mail password sealed by the local cipher. No host means no email.
struct NoticeSettings
{
    enum class Security { None, StartTls, Tls };

    QString host;
    int port = 0; // 0: the usual port of the security chosen
    Security security = Security::StartTls;
    QString user;
    QString password; // plain in memory only
    QString from;
    QString recipients; // separated by ";" or ","
    bool desktopNotices = true;

    bool isSet() const { return !host.isEmpty(); }
    /// The port to dial: the one set, or 25, 587 or 465 by security.
    int effectivePort() const;
    /// The sender's address: the one set, else the user name when it is an address.
    QString sender() const;
    QStringList recipientList() const;

    /// What a console may see: everything but the password, which is told only as "PasswordSet".
    QJsonObject toJson() const;
    /// Applies the keys a console sent onto these settings. "Password" absent keeps the stored one,
    /// "" clears it. Throws a sentence naming the first unknown key or unfit value.
    void apply(const QJsonObject& values);

    static NoticeSettings read(const QString& file);
    /// Replaces the file in one rename. Throws the reason when it cannot.
    void write(const QString& file) const;
};

} // namespace TWB::Service
