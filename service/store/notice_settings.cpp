#include "service/store/notice_settings.h"

#include "platform/crypt/local_password.h"

#include <QFile>
#include <QHostInfo>
#include <QRegularExpression>
#include <QSettings>

namespace TWB::Service {

namespace {

const QString keyHost = QStringLiteral("Host");
const QString keyPort = QStringLiteral("Port");
const QString keySecurity = QStringLiteral("Security");
const QString keyUser = QStringLiteral("User");
const QString keyPassword = QStringLiteral("Password");
const QString keyFrom = QStringLiteral("From");
const QString keyTo = QStringLiteral("To");
const QString keyDesktop = QStringLiteral("DesktopNotifications");

const QStringList securityNames = {QStringLiteral("none"), QStringLiteral("starttls"), QStringLiteral("tls")};

bool isAddress(const QString& text)
{
    static const QRegularExpression address(QStringLiteral("^[^@\\s<>,;\"]+@[^@\\s<>,;\"]+$"));
    return address.match(text).hasMatch();
}

QStringList splitAddresses(const QString& text)
{
    static const QRegularExpression separators(QStringLiteral("[;,]"));
    QStringList list;
    for (const QString& part : text.split(separators)) {
        if (!part.trimmed().isEmpty())
            list << part.trimmed();
    }
    return list;
}

} // namespace

int NoticeSettings::effectivePort() const
{
    if (port > 0)
        return port;
    switch (security) {
    case Security::None:
        return 25;
    case Security::StartTls:
        return 587;
    case Security::Tls:
        return 465;
    }
    return 25;
}

QString NoticeSettings::sender() const
{
    if (!from.isEmpty())
        return from;
    if (isAddress(user))
        return user;
    return QStringLiteral("tidewrack@%1").arg(QHostInfo::localHostName());
}

QStringList NoticeSettings::recipientList() const
{
    return splitAddresses(recipients);
}

QJsonObject NoticeSettings::toJson() const
{
    return {{keyHost, host}, {keyPort, port > 0 ? QString::number(port) : QString()},
        {keySecurity, securityNames.value(static_cast<int>(security))}, {keyUser, user},
        {QStringLiteral("PasswordSet"), !password.isEmpty()}, {keyFrom, from}, {keyTo, recipients},
        {keyDesktop, desktopNotices ? QStringLiteral("true") : QStringLiteral("false")}};
}

void NoticeSettings::apply(const QJsonObject& values)
{
    static const QStringList known = {keyHost, keyPort, keySecurity, keyUser, keyPassword, keyFrom, keyTo, keyDesktop};
    NoticeSettings next = *this;
    for (auto it = values.constBegin(); it != values.constEnd(); ++it) {
        if (!known.contains(it.key()))
            throw QStringLiteral("Unknown email setting \"%1\"").arg(it.key().left(80));
        if (!it.value().isString())
            throw QStringLiteral("The email setting \"%1\" is not a text").arg(it.key());
    }
    auto text = [&values](const QString& key, const QString& current) {
        return values.contains(key) ? values.value(key).toString().trimmed() : current;
    };
    auto refuse = [](const QString& key, const QString& value) {
        return QStringLiteral("The email setting \"%1\" cannot be \"%2\"").arg(key, value.left(80));
    };

    next.host = text(keyHost, host);
    static const QRegularExpression hostName(QStringLiteral("^([A-Za-z0-9_.-]+|\\[[0-9A-Fa-f:.]+\\])$"));
    if (!next.host.isEmpty() && !hostName.match(next.host).hasMatch())
        throw refuse(keyHost, next.host);
    if (values.contains(keyPort)) {
        const QString value = text(keyPort, QString());
        bool ok = value.isEmpty();
        next.port = ok ? 0 : value.toInt(&ok);
        if (!ok || next.port < 0 || next.port > 65535)
            throw refuse(keyPort, value);
    }
    if (values.contains(keySecurity)) {
        const int index = securityNames.indexOf(text(keySecurity, QString()));
        if (index < 0)
            throw refuse(keySecurity, text(keySecurity, QString()));
        next.security = static_cast<Security>(index);
    }
    next.user = text(keyUser, user);
    // A password may begin or end with spaces: it is taken as it is.
    if (values.contains(keyPassword))
        next.password = values.value(keyPassword).toString();
    next.from = text(keyFrom, from);
    if (!next.from.isEmpty() && !isAddress(next.from))
        throw refuse(keyFrom, next.from);
    next.recipients = text(keyTo, recipients);
    for (const QString& address : splitAddresses(next.recipients)) {
        if (!isAddress(address))
            throw refuse(keyTo, address);
    }
    if (values.contains(keyDesktop)) {
        const QString value = text(keyDesktop, QString());
        if (value != QLatin1String("true") && value != QLatin1String("false"))
            throw refuse(keyDesktop, value);
        next.desktopNotices = value == QLatin1String("true");
    }
    *this = next;
}

NoticeSettings NoticeSettings::read(const QString& file)
{
    const QSettings stored(file, QSettings::IniFormat);
    NoticeSettings settings;
    settings.host = stored.value(keyHost).toString();
    settings.port = stored.value(keyPort).toInt();
    const int security = securityNames.indexOf(stored.value(keySecurity).toString());
    if (security >= 0)
        settings.security = static_cast<Security>(security);
    settings.user = stored.value(keyUser).toString();
    settings.password = SHARED::cryptNS::decrypt_local_password(stored.value(keyPassword).toString());
    settings.from = stored.value(keyFrom).toString();
    settings.recipients = stored.value(keyTo).toString();
    settings.desktopNotices = stored.value(keyDesktop).toString() != QLatin1String("false");
    return settings;
}

void NoticeSettings::write(const QString& file) const
{
    const QString sealed = SHARED::cryptNS::encrypt_local_password(password);
    if (!password.isEmpty() && sealed.isEmpty())
        throw QStringLiteral("Cannot seal the email password: the local key cannot be read");
    // QSettings writes through QSaveFile: the new file replaces the old one whole.
    QSettings stored(file, QSettings::IniFormat);
    stored.clear();
    stored.setValue(keyHost, host);
    stored.setValue(keyPort, port);
    stored.setValue(keySecurity, securityNames.value(static_cast<int>(security)));
    stored.setValue(keyUser, user);
    stored.setValue(keyPassword, sealed);
    stored.setValue(keyFrom, from);
    stored.setValue(keyTo, recipients);
    stored.setValue(keyDesktop, desktopNotices ? QStringLiteral("true") : QStringLiteral("false"));
    stored.sync();
    if (stored.status() != QSettings::NoError)
        throw QStringLiteral("Cannot write the email settings file %1").arg(file);
    QFile::setPermissions(file, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

} // namespace TWB::Service
