#include "platform/cloud/rclone_remote_p.h"

#include "platform/cloud/account_keys.h"
#include "platform/cloud/endpoint_helper.h"
#include "platform/cloud/info.h"
#include "platform/cloud/info_factory.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

namespace TWL::Cloud::Detail {

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("TWL::Cloud::Operation", text);
}

QString text(const QVariantMap& config, const QString& key)
{
    return config.value(key).toString().trimmed();
}

bool flag(const QVariantMap& config, const QString& key, bool fallback)
{
    const QVariant value = config.value(key);
    if (!value.isValid() || value.isNull())
        return fallback;
    if (value.type() == QVariant::String) {
        const QString s = value.toString().trimmed().toLower();
        if (s.isEmpty())
            return fallback;
        return s == QLatin1String("true") || s == QLatin1String("1");
    }
    return value.toBool();
}

// The endpoint as a URL whose scheme follows "UseSsl"; `fallback` where the configuration has none.
QString endpointUrl(const QVariantMap& config, const QUrl& fallback)
{
    QString bare = Utitlity::EndpointHelper::toEndpoint(text(config, Key::Endpoint));
    bool ssl = flag(config, Key::UseSsl, true);
    if (bare.isEmpty()) {
        if (!fallback.isValid())
            return QString();
        bare = fallback.host() + (fallback.port() > 0 ? QStringLiteral(":%1").arg(fallback.port()) : QString());
    }
    return Utitlity::EndpointHelper::toEndpointWithScheme(bare, ssl);
}

QString hostOf(const QString& url)
{
    const QUrl parsed(url);
    if (!parsed.isValid() || parsed.host().isEmpty())
        return url;
    return parsed.port() > 0 ? QStringLiteral("%1:%2").arg(parsed.host()).arg(parsed.port()) : parsed.host();
}

void mapS3(const QVariantMap& config, RcloneRemote& remote)
{
    const Type type = remote.type;
    const bool amazon = amazonTypes().contains(type);
    const auto info = Info::InfoFactory::create(type).dynamicCast<Info::AmazonS3Like>();
    const QUrl fallback = info ? info->defaultEndpoint() : QUrl();
    // Amazon's own endpoint follows the bucket's region, which rclone finds itself.
    QString url;
    if (type == AmazonS3 || type == AmazonS3UB)
        url = fallback.toString();
    else
        url = endpointUrl(config, fallback);
    if (url.isEmpty()) {
        remote.error = tr("The account has no endpoint.");
        return;
    }
    QString provider = QStringLiteral("Other");
    if (amazon)
        provider = QStringLiteral("AWS");
    else if (type == GoogleStorage)
        provider = QStringLiteral("GCS");
    else if (type == Minio)
        provider = QStringLiteral("Minio");
    else if (type == Wasabi || type == WasabiUB || type == WasabiUBStage || type == WasabiStage)
        provider = QStringLiteral("Wasabi");
    else if (type == TWL::Cloud::AlibabaCloud)
        provider = QStringLiteral("Alibaba");
    auto& env = remote.environment;
    env.insert(RcloneRemote::variable("TYPE"), QStringLiteral("s3"));
    env.insert(RcloneRemote::variable("PROVIDER"), provider);
    env.insert(RcloneRemote::variable("ENV_AUTH"), QStringLiteral("false"));
    env.insert(RcloneRemote::variable("ACCESS_KEY_ID"), text(config, Key::AccessKey));
    env.insert(RcloneRemote::variable("SECRET_ACCESS_KEY"), config.value(Key::SecretKey).toString());
    if (!(type == AmazonS3 || type == AmazonS3UB))
        env.insert(RcloneRemote::variable("ENDPOINT"), url);
    const QString region = text(config, Key::Region);
    if (!region.isEmpty())
        env.insert(RcloneRemote::variable("REGION"), region);
    if (text(config, Key::Signature).compare(QLatin1String("V2"), Qt::CaseInsensitive) == 0)
        env.insert(RcloneRemote::variable("V2_AUTH"), QStringLiteral("true"));
    remote.host = hostOf(url);
}

// Azure's storage emulator serves its one account in the path of its URL, with a published key.
const char* const azureEmulatorAccount = "devstoreaccount1";

void mapAzure(const QVariantMap& config, RcloneRemote& remote)
{
    const QString account = text(config, Key::Username);
    if (account.isEmpty()) {
        remote.error = tr("The account has no storage account name.");
        return;
    }
    auto& env = remote.environment;
    env.insert(RcloneRemote::variable("TYPE"), QStringLiteral("azureblob"));
    env.insert(RcloneRemote::variable("ACCOUNT"), account);
    env.insert(RcloneRemote::variable("KEY"), config.value(Key::Password).toString());
    const QString bare = Utitlity::EndpointHelper::toEndpoint(text(config, Key::Endpoint)).toLower();
    const bool publicCloud = bare.isEmpty() || bare == QLatin1String("core.windows.net")
        || bare == QLatin1String("blob.core.windows.net")
        || bare == account.toLower() + QLatin1String(".blob.core.windows.net");
    if (publicCloud) {
        remote.host = account + QLatin1String(".blob.core.windows.net");
        return;
    }
    // rclone reaches an account at https://<account>.<endpoint>: its endpoint is the domain that follows
    // the account's name. Only the emulator is reached at a URL with the account in its path, and then
    // rclone signs with the emulator's own account and key.
    const QUrl typed(QStringLiteral("http://") + bare);
    const QString path = typed.path().section(QLatin1Char('/'), 1, 1);
    if (!path.isEmpty()) {
        if (path != QLatin1String(azureEmulatorAccount) || account != QLatin1String(azureEmulatorAccount)) {
            remote.error = tr("The endpoint \"%1\" holds a path, which only Azure's storage emulator with the "
                              "account \"%2\" may have. Enter the domain that follows the account's name, such "
                              "as blob.core.chinacloudapi.cn.")
                               .arg(bare, QLatin1String(azureEmulatorAccount));
            return;
        }
        const QString url = endpointUrl(config, QUrl());
        env.insert(RcloneRemote::variable("USE_EMULATOR"), QStringLiteral("true"));
        env.insert(RcloneRemote::variable("ENDPOINT"), url);
        remote.host = hostOf(url);
        return;
    }
    QString suffix = bare;
    if (suffix.startsWith(account.toLower() + QLatin1Char('.')))
        suffix = suffix.mid(account.size() + 1);
    if (suffix.startsWith(QLatin1String("core.")))
        suffix.prepend(QLatin1String("blob."));
    env.insert(RcloneRemote::variable("ENDPOINT"), suffix);
    remote.host = account + QLatin1Char('.') + suffix;
}

// A Google service account key as rclone reads it: the key file itself, or one built from its parts.
QString serviceAccountKey(const QVariantMap& config)
{
    const QString account = config.value(Key::ServiceAccount).toString();
    const QJsonDocument whole = QJsonDocument::fromJson(account.toUtf8());
    if (whole.isObject() && whole.object().contains(QStringLiteral("private_key")))
        return QString::fromUtf8(whole.toJson(QJsonDocument::Compact));
    const QJsonDocument file = QJsonDocument::fromJson(config.value(Key::PrivateKey).toByteArray());
    if (file.isObject() && file.object().contains(QStringLiteral("private_key")))
        return QString::fromUtf8(file.toJson(QJsonDocument::Compact));
    QJsonObject key;
    key.insert(QStringLiteral("type"), QStringLiteral("service_account"));
    key.insert(QStringLiteral("project_id"), text(config, Key::ProjectId));
    key.insert(QStringLiteral("private_key"), QString::fromUtf8(config.value(Key::PrivateKey).toByteArray()));
    key.insert(QStringLiteral("client_email"), account.trimmed());
    key.insert(QStringLiteral("token_uri"), QStringLiteral("https://oauth2.googleapis.com/token"));
    return QString::fromUtf8(QJsonDocument(key).toJson(QJsonDocument::Compact));
}

void mapGoogle(const QVariantMap& config, RcloneRemote& remote)
{
    const int auth = config.value(Key::AuthType).toInt();
    const Info::GoogleStorage storage;
    if (auth != GoogleServiceAccount && auth != GoogleInstalledApplication) {
        // HMAC keys work through Google's S3-compatible endpoint, which the form does not show.
        QVariantMap interoperable = config;
        if (text(config, Key::Endpoint).isEmpty())
            interoperable.insert(Key::Endpoint, storage.endpointHost());
        mapS3(interoperable, remote);
        return;
    }
    auto& env = remote.environment;
    env.insert(RcloneRemote::variable("TYPE"), QStringLiteral("google cloud storage"));
    env.insert(RcloneRemote::variable("PROJECT_NUMBER"), text(config, Key::ProjectId));
    remote.host = storage.endpointHost();
    if (!storage.jsonApiEndpoint().isEmpty())
        env.insert(RcloneRemote::variable("ENDPOINT"), storage.jsonApiEndpoint());
    if (auth == GoogleServiceAccount) {
        env.insert(RcloneRemote::variable("SERVICE_ACCOUNT_CREDENTIALS"), serviceAccountKey(config));
        return;
    }
    const QString refresh = config.value(Key::RefreshToken).toString();
    if (refresh.isEmpty()) {
        remote.error = tr("The account has not been authorised yet.");
        return;
    }
    // The refresh token belongs to the console's OAuth client: rclone must refresh it as that client.
    env.insert(RcloneRemote::variable("CLIENT_ID"), Info::GoogleStorage::oauthClientId());
    env.insert(RcloneRemote::variable("CLIENT_SECRET"), Info::GoogleStorage::oauthClientSecret());
    env.insert(RcloneRemote::variable("TOKEN_URL"), Info::GoogleStorage::oauthTokenUrl().toString());
    QJsonObject token;
    token.insert(QStringLiteral("refresh_token"), refresh);
    token.insert(QStringLiteral("token_type"), QStringLiteral("Bearer"));
    token.insert(QStringLiteral("expiry"), QStringLiteral("2000-01-01T00:00:00Z"));
    env.insert(RcloneRemote::variable("TOKEN"), QString::fromUtf8(QJsonDocument(token).toJson(QJsonDocument::Compact)));
}

void mapOpenStack(const QVariantMap& config, RcloneRemote& remote)
{
    const QString url = text(config, Key::Endpoint);
    if (url.isEmpty()) {
        remote.error = tr("The account has no authentication endpoint.");
        return;
    }
    auto& env = remote.environment;
    auto setIf = [&env](const char* option, const QString& value) {
        if (!value.isEmpty())
            env.insert(RcloneRemote::variable(option), value);
    };
    // "AuthType" is the Keystone version: 1, 2 (the default) or 3.
    const int version = config.value(Key::AuthType, 2).toInt() > 0 ? config.value(Key::AuthType, 2).toInt() : 2;
    env.insert(RcloneRemote::variable("TYPE"), QStringLiteral("swift"));
    env.insert(RcloneRemote::variable("USER"), text(config, Key::Username));
    env.insert(RcloneRemote::variable("KEY"), config.value(Key::ApiKey).toString());
    env.insert(RcloneRemote::variable("AUTH"), url);
    env.insert(RcloneRemote::variable("AUTH_VERSION"), QString::number(version));
    setIf("REGION", text(config, Key::Region));
    if (flag(config, Key::UseInternalUrl, false))
        env.insert(RcloneRemote::variable("ENDPOINT_TYPE"), QStringLiteral("internal"));
    const QString tenantName = text(config, Key::TenantName);
    const QString tenantId = text(config, Key::TenantId);
    if (version == 2) {
        setIf("TENANT", tenantName);
        setIf("TENANT_ID", tenantId);
    } else if (version == 3) {
        const QString project = text(config, Key::ProjectName);
        const QString projectId = text(config, Key::ProjectId);
        setIf("DOMAIN", text(config, Key::DomainName));
        setIf("TENANT", project.isEmpty() ? tenantName : project);
        setIf("TENANT_ID", projectId.isEmpty() ? tenantId : projectId);
        setIf("TENANT_DOMAIN", text(config, Key::DomainName));
    }
    remote.host = hostOf(url);
}

void mapBackBlaze(const QVariantMap& config, RcloneRemote& remote)
{
    auto& env = remote.environment;
    env.insert(RcloneRemote::variable("TYPE"), QStringLiteral("b2"));
    env.insert(RcloneRemote::variable("ACCOUNT"), text(config, Key::AccountId));
    env.insert(RcloneRemote::variable("KEY"), config.value(Key::ApplicationKey).toString());
    const QString endpoint = text(config, Key::Endpoint);
    if (!endpoint.isEmpty())
        env.insert(RcloneRemote::variable("ENDPOINT"), endpointUrl(config, QUrl()));
    remote.host = endpoint.isEmpty() ? QStringLiteral("api.backblazeb2.com") : hostOf(endpointUrl(config, QUrl()));
}

QString folder(QString path)
{
    path = path.trimmed();
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

void mapSftp(const QVariantMap& config, RcloneRemote& remote)
{
    const QString host = text(config, Key::Address);
    if (host.isEmpty()) {
        remote.error = tr("The account has no SFTP server address.");
        return;
    }
    auto& env = remote.environment;
    const int port = config.value(Key::Port).toInt() > 0 ? config.value(Key::Port).toInt() : 22;
    env.insert(RcloneRemote::variable("TYPE"), QStringLiteral("sftp"));
    env.insert(RcloneRemote::variable("HOST"), host);
    env.insert(RcloneRemote::variable("PORT"), QString::number(port));
    env.insert(RcloneRemote::variable("USER"), text(config, Key::User));
    // Hashes would be asked of the server by running commands there, which a plain SFTP server refuses.
    env.insert(RcloneRemote::variable("DISABLE_HASHCHECK"), QStringLiteral("true"));
    const QString password = config.value(Key::Password).toString();
    if (!password.isEmpty()) {
        env.insert(RcloneRemote::variable("PASS"), password);
        remote.obscured << RcloneRemote::variable("PASS");
    }
    const QString key = QString::fromUtf8(config.value(Key::PrivateKey).toByteArray());
    if (!key.trimmed().isEmpty()) {
        // rclone reads a PEM key from one line, with its line breaks written as "\n".
        QString oneLine = key;
        oneLine.replace(QLatin1String("\r\n"), QLatin1String("\\n"));
        oneLine.replace(QLatin1Char('\n'), QLatin1String("\\n"));
        env.insert(RcloneRemote::variable("KEY_PEM"), oneLine);
    }
    remote.base = folder(text(config, Key::Path));
    remote.host = port == 22 ? host : QStringLiteral("%1:%2").arg(host).arg(port);
}

} // namespace

QString RcloneRemote::variable(const char* option)
{
    return QStringLiteral("RCLONE_CONFIG_%1_%2").arg(remoteName().toUpper(), QLatin1String(option));
}

RcloneRemote RcloneRemote::fromConfig(const QVariantMap& config)
{
    RcloneRemote remote;
    remote.type = typeFromName(config.value(Key::CloudType).toString());
    remote.container = text(config, Key::ContainerName);
    const Type type = remote.type;
    if (type == Unknown) {
        remote.error = tr("The account's type is not known.");
    } else if (type == FileSystem) {
        remote.base = folder(text(config, Key::Path));
        remote.environment.insert(variable("TYPE"), QStringLiteral("local"));
    } else if (isS3Like(type)) {
        mapS3(config, remote);
    } else if (type == AzureBlob) {
        mapAzure(config, remote);
    } else if (type == GoogleStorage) {
        mapGoogle(config, remote);
    } else if (openStackTypes().contains(type)) {
        mapOpenStack(config, remote);
    } else if (type == BackBlaze) {
        mapBackBlaze(config, remote);
    } else if (type == Sftp) {
        mapSftp(config, remote);
    } else {
        remote.error = tr("Accounts of the type \"%1\" cannot be reached from here.").arg(typeName(type));
    }
    return remote;
}

QString RcloneRemote::root() const
{
    if (hasBuckets())
        return remoteName() + QLatin1Char(':');
    return remoteName() + QLatin1Char(':') + base;
}

QString RcloneRemote::path(const QString& inContainer, const QString& inside) const
{
    QString result;
    if (hasBuckets()) {
        result = root() + inContainer;
    } else {
        result = root();
        if (!inContainer.isEmpty()) {
            if (!result.endsWith(QLatin1Char('/')) && !result.endsWith(QLatin1Char(':')))
                result += QLatin1Char('/');
            result += inContainer;
        }
    }
    QString rest = inside;
    while (rest.startsWith(QLatin1Char('/')))
        rest.remove(0, 1);
    while (rest.endsWith(QLatin1Char('/')))
        rest.chop(1);
    if (!rest.isEmpty()) {
        if (!result.endsWith(QLatin1Char('/')) && !result.endsWith(QLatin1Char(':')))
            result += QLatin1Char('/');
        result += rest;
    }
    return result;
}

} // namespace TWL::Cloud::Detail
