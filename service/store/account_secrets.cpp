#include "service/store/account_secrets.h"

#include "platform/crypt/local_password.h"

namespace TWB::Service {

namespace {
constexpr int googleStorage = 7;
constexpr int googleServiceAccount = 1;
} // namespace

QStringList AccountSecrets::keys(int type, const QJsonObject& document)
{
    QStringList secrets;
    const QStringList always = {QStringLiteral("SecretKey"), QStringLiteral("Password"), QStringLiteral("ApiKey"),
        QStringLiteral("ApplicationKey"), QStringLiteral("PrivateKey"), QStringLiteral("RefreshToken"),
        QStringLiteral("ServiceAccount")};
    for (const QString& key : always) {
        if (document.contains(key))
            secrets << key;
    }
    // A Google service account keeps its project id secret; the other ways of signing in do not.
    if (type == googleStorage && document.value(QStringLiteral("AuthType")).toInt() == googleServiceAccount
        && document.contains(QStringLiteral("ProjectId")))
        secrets << QStringLiteral("ProjectId");
    return secrets;
}

QJsonObject AccountSecrets::seal(int type, QJsonObject document)
{
    const QStringList secrets = keys(type, document);
    for (const QString& key : secrets) {
        const QJsonValue value = document.value(key);
        if (value.isNull())
            continue;
        if (!value.isString())
            throw QStringLiteral("The secret \"%1\" of the account is not a string").arg(key);
        if (value.toString().isEmpty())
            continue;
        if (!SHARED::cryptNS::decrypt_local_password(value.toString()).isEmpty())
            continue;
        const QString sealed = SHARED::cryptNS::encrypt_local_password(value.toString());
        if (sealed.isEmpty())
            throw QStringLiteral("Cannot encipher \"%1\" of the account: the local key is not available").arg(key);
        document.insert(key, sealed);
    }
    return document;
}

} // namespace TWB::Service
