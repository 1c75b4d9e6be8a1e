#include "platform/cloud/account_keys.h"

namespace TWL::Cloud {

namespace {

QStringList openStackVersionKeys()
{
    return {Key::TenantId, Key::TenantName, Key::DomainId, Key::DomainName, Key::UseScope, Key::ProjectName,
        Key::ProjectId};
}

} // namespace

QStringList savedDocumentKeys(Type type, int authType)
{
    if (type == FileSystem)
        return {Key::Path};
    if (type == AmazonS3)
        return {Key::AccessKey, Key::SecretKey, Key::ContainerName, Key::UseSsl, Key::Archive2Glacier, Key::Signature};
    if (isS3Like(type))
        return {Key::AccessKey, Key::SecretKey, Key::ContainerName, Key::UseSsl, Key::Endpoint, Key::Signature};
    if (type == AzureBlob)
        return {Key::UserName, Key::Password, Key::Type, Key::ContainerName, Key::UseSsl, Key::Endpoint};
    if (type == GoogleStorage) {
        if (authType == GoogleServiceAccount)
            return {
                Key::ContainerName, Key::AuthType, Key::ServiceAccount, Key::ProjectId, Key::PrivateKey, Key::UseSsl};
        if (authType == GoogleInstalledApplication)
            return {Key::ContainerName, Key::AuthType, Key::RefreshToken, Key::ProjectId, Key::UseSsl};
        return {Key::ContainerName, Key::AuthType, Key::AccessKey, Key::SecretKey, Key::UseSsl};
    }
    if (openStackTypes().contains(type))
        return QStringList {Key::AuthType, Key::UserName, Key::ApiKey, Key::Endpoint, Key::ContainerName,
                   Key::UseInternalUrl, Key::Region}
        + openStackVersionKeys();
    if (type == BackBlaze)
        return {Key::AccountId, Key::ApplicationKey, Key::ContainerName, Key::ContainerId};
    if (type == Sftp)
        return {Key::Address, Key::Port, Key::KeepAlive, Key::UseProy, Key::Path, Key::User, Key::Password,
            Key::PrivateKey};
    return {};
}

QStringList savedSecretKeys(Type type, int authType)
{
    if (type == AzureBlob)
        return {Key::Password};
    if (type == GoogleStorage) {
        if (authType == GoogleServiceAccount)
            return {Key::ServiceAccount, Key::ProjectId, Key::PrivateKey};
        if (authType == GoogleInstalledApplication)
            return {Key::RefreshToken, Key::ProjectId};
        return {Key::SecretKey};
    }
    if (isS3Like(type))
        return {Key::SecretKey};
    if (openStackTypes().contains(type))
        return {Key::ApiKey};
    if (type == BackBlaze)
        return {Key::ApplicationKey};
    if (type == Sftp)
        return {Key::Password, Key::PrivateKey};
    return {};
}

QStringList cloudConfigKeys(Type type, int authType)
{
    QStringList keys {Key::CloudId, Key::CloudType};
    if (type == FileSystem)
        keys << Key::Path;
    else if (type == AmazonS3 || type == AmazonS3Chinese)
        keys << Key::AccessKey << Key::SecretKey << Key::UseSsl << Key::ContainerName;
    else if (isS3Like(type))
        keys << Key::AccessKey << Key::SecretKey << Key::UseSsl << Key::Endpoint << Key::ContainerName
             << Key::Signature;
    else if (type == AzureBlob)
        keys << Key::UseSsl << Key::Username << Key::Password << Key::ContainerName << Key::Type << Key::Endpoint;
    else if (type == GoogleStorage && authType == GoogleServiceAccount)
        keys << Key::ContainerName << Key::AuthType << Key::PrivateKey << Key::ProjectId << Key::ServiceAccount
             << Key::UseSsl;
    else if (type == GoogleStorage && authType == GoogleInstalledApplication)
        keys << Key::ContainerName << Key::AuthType << Key::ProjectId << Key::InitCode << Key::RefreshToken
             << Key::UseSsl;
    else if (type == GoogleStorage)
        keys << Key::ContainerName << Key::AuthType << Key::AccessKey << Key::SecretKey << Key::UseSsl;
    else if (openStackTypes().contains(type))
        keys << Key::Endpoint << Key::Username << Key::ApiKey << Key::UseInternalUrl << Key::AuthType << Key::Region
             << Key::ContainerName << openStackVersionKeys();
    else if (type == BackBlaze)
        keys << Key::AccountId << Key::ApplicationKey << Key::ContainerName;
    else if (type == Sftp)
        keys << Key::Address << Key::Port << Key::KeepAlive << Key::UseProxy << Key::Path << Key::User << Key::Password
             << Key::PrivateKey;
    else
        return {};
    return keys;
}

} // namespace TWL::Cloud
