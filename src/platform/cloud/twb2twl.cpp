#include "platform/cloud/twb2twl.h"

#include "platform/cloud/account_keys.h"
#include "platform/crypt/local_password.h"

#include <QUuid>

namespace TWB::DataConverter::StorageConfig {

using namespace TWL::Cloud;

namespace {

// A secret as saved: enciphered by the console; a document written by hand may hold it plain.
QString opened(const QJsonObject& document, const QString& key)
{
    const QString stored = document.value(key).toString();
    if (stored.isEmpty())
        return QString();
    const QString plain = SHARED::cryptNS::decrypt_local_password(stored);
    return plain.isEmpty() ? stored : plain;
}

void copy(const QJsonObject& document, QVariantMap& config, const QString& from, const QString& to = QString())
{
    if (document.contains(from))
        config.insert(to.isEmpty() ? from : to, document.value(from).toVariant());
}

bool flag(const QJsonObject& document, const QString& key, bool fallback)
{
    const QJsonValue value = document.value(key);
    if (value.isBool())
        return value.toBool();
    if (value.isDouble())
        return value.toDouble() != 0;
    if (value.isString())
        return value.toString() == QLatin1String("true") || value.toString() == QLatin1String("1");
    return fallback;
}

} // namespace

Type Twb2Twl::guessType(const QJsonObject& document)
{
    if (document.contains(Key::CloudType)) {
        const QJsonValue value = document.value(Key::CloudType);
        const Type type = value.isDouble() ? (isKnownType(value.toInt()) ? Type(value.toInt()) : Unknown)
                                           : typeFromName(value.toString());
        if (type != Unknown)
            return type;
    }
    if (document.contains(Key::Address))
        return Sftp;
    if (document.contains(Key::ApplicationKey))
        return BackBlaze;
    if (document.contains(Key::ApiKey))
        return Openstack;
    if (document.contains(Key::AuthType) && document.contains(Key::ContainerName))
        return GoogleStorage;
    if (document.contains(Key::UserName) && document.contains(Key::Password))
        return AzureBlob;
    if (document.contains(Key::Archive2Glacier))
        return AmazonS3;
    if (document.contains(Key::AccessKey))
        return document.value(Key::Endpoint).toString().trimmed().isEmpty() ? AmazonS3 : S3Compatible;
    if (document.contains(Key::Path))
        return FileSystem;
    return Unknown;
}

QVariantMap Twb2Twl::fromTwb(const QJsonObject& account)
{
    // A whole row: its "Type" is the truth, its "DetailParams" the document.
    if (account.contains(QStringLiteral("DetailParams")) && account.value(QStringLiteral("DetailParams")).isObject()) {
        const int type = account.value(QStringLiteral("Type")).toInt();
        const QJsonObject document = account.value(QStringLiteral("DetailParams")).toObject();
        return fromTwb(document, isKnownType(type) ? Type(type) : guessType(document));
    }
    return fromTwb(account, guessType(account));
}

QVariantMap Twb2Twl::fromTwb(const QJsonObject& document, Type type)
{
    if (type == Unknown || !isKnownType(type))
        return {};
    QVariantMap config;
    config.insert(Key::CloudId, QUuid::createUuid());
    config.insert(Key::CloudType, typeName(type));
    const int authType = document.value(Key::AuthType).toVariant().toInt();
    if (type == FileSystem) {
        copy(document, config, Key::Path);
    } else if (type == GoogleStorage) {
        copy(document, config, Key::ContainerName);
        config.insert(Key::AuthType, authType);
        if (authType == GoogleServiceAccount) {
            config.insert(Key::PrivateKey, opened(document, Key::PrivateKey).toUtf8());
            config.insert(Key::ProjectId, opened(document, Key::ProjectId));
            config.insert(Key::ServiceAccount, opened(document, Key::ServiceAccount));
            config.insert(Key::UseSsl, true);
        } else if (authType == GoogleInstalledApplication) {
            config.insert(Key::ProjectId, opened(document, Key::ProjectId));
            config.insert(Key::InitCode, QString());
            config.insert(Key::RefreshToken, opened(document, Key::RefreshToken));
            config.insert(Key::UseSsl, true);
        } else {
            copy(document, config, Key::AccessKey);
            config.insert(Key::SecretKey, opened(document, Key::SecretKey));
            config.insert(Key::UseSsl, flag(document, Key::UseSsl, true));
        }
    } else if (isS3Like(type)) {
        copy(document, config, Key::AccessKey);
        config.insert(Key::SecretKey, opened(document, Key::SecretKey));
        config.insert(Key::UseSsl, flag(document, Key::UseSsl, true));
        copy(document, config, Key::ContainerName);
        copy(document, config, Key::Region);
        if (type != AmazonS3 && type != AmazonS3Chinese) {
            copy(document, config, Key::Endpoint);
            if (document.contains(Key::Signature))
                config.insert(Key::Signature,
                    document.value(Key::Signature).toVariant().toInt() == SignatureAws2 ? QStringLiteral("V2")
                                                                                        : QStringLiteral("V4"));
        }
    } else if (type == AzureBlob) {
        config.insert(Key::UseSsl, flag(document, Key::UseSsl, true));
        copy(document, config, Key::UserName, Key::Username);
        config.insert(Key::Password, opened(document, Key::Password));
        copy(document, config, Key::ContainerName);
        copy(document, config, Key::Type);
        copy(document, config, Key::Endpoint);
    } else if (openStackTypes().contains(type)) {
        copy(document, config, Key::Endpoint);
        copy(document, config, Key::UserName, Key::Username);
        config.insert(Key::ApiKey, opened(document, Key::ApiKey));
        config.insert(Key::UseInternalUrl, flag(document, Key::UseInternalUrl, false));
        copy(document, config, Key::AuthType);
        copy(document, config, Key::Region);
        copy(document, config, Key::ContainerName);
        for (const QString& key : {Key::TenantId, Key::TenantName, Key::DomainId, Key::DomainName, Key::UseScope,
                 Key::ProjectName, Key::ProjectId})
            copy(document, config, key);
    } else if (type == BackBlaze) {
        copy(document, config, Key::AccountId);
        config.insert(Key::ApplicationKey, opened(document, Key::ApplicationKey));
        copy(document, config, Key::ContainerName);
    } else if (type == Sftp) {
        copy(document, config, Key::Address);
        copy(document, config, Key::Port);
        copy(document, config, Key::KeepAlive);
        copy(document, config, Key::UseProy, Key::UseProxy);
        copy(document, config, Key::Path);
        copy(document, config, Key::User);
        config.insert(Key::Password, opened(document, Key::Password));
        config.insert(Key::PrivateKey, opened(document, Key::PrivateKey));
    }
    return config;
}

} // namespace TWB::DataConverter::StorageConfig
