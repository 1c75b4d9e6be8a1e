#include "platform/cloud/rclone_errors_p.h"

#include "platform/cloud/ioperation.h"

#include <QCoreApplication>
#include <QStringList>

namespace TWL::Cloud::Detail {

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("TWL::Cloud::Operation", text);
}

bool has(const QString& text, std::initializer_list<const char*> words)
{
    for (const char* word : words) {
        if (text.contains(QLatin1String(word), Qt::CaseInsensitive))
            return true;
    }
    return false;
}

bool isSwift(const RcloneRemote& remote)
{
    return openStackTypes().contains(remote.type) && remote.type != GoogleStorage;
}

QString credentialsSentence(const RcloneRemote& remote)
{
    switch (remote.type) {
    case Sftp:
        return tr("The server refused the user name, the password or the private key.");
    case AzureBlob:
        return tr("Azure refused the storage account name or its access key.");
    case BackBlaze:
        return tr("Backblaze refused the account ID or the application key.");
    default:
        if (isSwift(remote))
            return tr("The identity service refused the user name or the key, or the tenant or project.");
        return tr("The storage refused the access key.");
    }
}

} // namespace

Failure explainRclone(const RcloneRemote& remote, const QByteArray& errors, const QString& container)
{
    const QString text = QString::fromUtf8(errors);
    const QString host = remote.host.isEmpty() ? tr("the storage") : remote.host;
    const bool buckets = remote.hasBuckets();
    if (has(text, {"LoadCustomCABundleError"}))
        return {IOperation::Failed, tr("The certificates this computer trusts could not be read.")};
    if (has(text,
            {"x509:", "certificate signed by unknown authority", "certificate is not trusted",
                "certificate has expired", "certificate is valid for", "unknown certificate authority"}))
        return {IOperation::CertificateNotTrusted, tr("The certificate of %1 is not trusted.").arg(host)};
    if (has(text,
            {"server gave HTTP response to HTTPS client", "first record does not look like a TLS handshake",
                "tls: handshake failure"}))
        return {IOperation::BadConfiguration,
            tr("%1 does not answer over SSL. Turn off \"Use SSL\" in the advanced settings, or check the endpoint.")
                .arg(host)};
    if (has(text, {"SignatureDoesNotMatch"}))
        return {IOperation::WrongCredentials, tr("The storage refused the secret key.")};
    if (has(text,
            {"InvalidAccessKeyId", "InvalidClientTokenId", "AuthenticationFailed", "unable to authenticate",
                "bad_auth_token", "unauthorized", "Invalid credentials", "invalid_grant", "401 ", "status 401",
                "AccountNameInvalid", "InvalidAuthenticationInfo", "incorrect account", "bad credentials",
                "Authorization Failed"}))
        return {IOperation::WrongCredentials, credentialsSentence(remote)};
    // Swift signs in before anything else: a page missing there means the identity URL is wrong.
    if (isSwift(remote) && has(text, {"Failed to create file system"})
        && has(text, {"HTTP Error: 404", "404 Not Found"}))
        return {IOperation::BadConfiguration,
            tr("%1 has no identity service at this address. Check the auth URL and the auth version.").arg(host)};
    if (has(text, {"BucketAlreadyExists", "ContainerAlreadyExists", "ContainerBeingDeleted"}))
        return {IOperation::ContainerExists,
            tr("The name \"%1\" is taken: bucket names are shared by all users of the service. Choose another.")
                .arg(container)};
    if (has(text, {"InvalidBucketName", "InvalidResourceName", "InvalidContainerName", "OutOfRangeInput"}))
        return {IOperation::BadConfiguration, tr("The storage does not allow the name \"%1\".").arg(container)};
    if (has(text,
            {"AccessDenied", "permission denied", "403 Forbidden", "status 403", "AuthorizationFailure",
                "AuthorizationPermissionMismatch", "Forbidden", "not authorized"}))
        return {IOperation::PermissionDenied, tr("Permission denied: the account may not do this on %1.").arg(host)};
    if (has(text,
            {"NoSuchBucket", "ContainerNotFound", "directory not found", "bucket not found", "container not found",
                "NotFound", "no such file or directory", "file does not exist"})) {
        if (container.isEmpty())
            return {IOperation::NoSuchContainer, tr("The folder does not exist on %1.").arg(host)};
        if (isSwift(remote))
            return {IOperation::NoSuchContainer, tr("There is no container \"%1\" on %2.").arg(container, host)};
        return {IOperation::NoSuchContainer,
            buckets ? tr("There is no bucket \"%1\" on %2.").arg(container, host)
                    : tr("There is no folder \"%1\" on %2.").arg(container, host)};
    }
    if (has(text, {"no such host", "server misbehaving", "Temporary failure in name resolution"}))
        return {IOperation::HostUnreachable, tr("The host %1 could not be found. Check the address.").arg(host)};
    if (has(text,
            {"connection refused", "network is unreachable", "no route to host", "i/o timeout", "connection reset",
                "dial tcp", "EOF", "couldn't connect", "context deadline exceeded"}))
        return {IOperation::HostUnreachable,
            tr("%1 could not be reached. Check the address and the network connection.").arg(host)};
    if (has(text, {"didn't find section in config file", "config file", "unknown backend", "invalid", "empty"}))
        return {IOperation::BadConfiguration, tr("The account's settings are incomplete or wrong.")};
    return {IOperation::Failed, tr("The storage could not be reached. The log has the details.")};
}

} // namespace TWL::Cloud::Detail
