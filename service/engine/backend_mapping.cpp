#include "service/engine/backend_mapping.h"

#include "platform/cloud/info.h"
#include "platform/crypt/local_password.h"
#include "service/store/account_store.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

namespace TWB::Service {

namespace {

constexpr int fileSystem = 1;
constexpr int amazonS3 = 2;
constexpr int azureBlob = 3;
constexpr int googleStorage = 7;
constexpr int amazonS3China = 20;
constexpr int minio = 21;
constexpr int wasabi = 29;
constexpr int alibabaCloud = 30;
constexpr int backBlaze = 31;
constexpr int sftp = 33;
constexpr int amazonS3Ub = 37;

// Google's "AuthType": 0 access and secret key, 1 service account, 2 installed application.
constexpr int googleServiceAccount = 1;
constexpr int googleInstalledApplication = 2;

const QSet<int> amazonTypes = {amazonS3, amazonS3China, amazonS3Ub};
const QSet<int> s3CompatibleTypes
    = {11, 12, 13, 14, 15, 16, 17, 18, 19, 22, 23, 24, 25, 26, 27, 21, 28, 29, 30, 34, 35, 36};
// The OpenStack family without Google, which the type tables list there but which speaks its own API.
const QSet<int> openStackTypes = {4, 5, 6, 8, 9, 10};

// Amazon storage classes by the plan's number; the first four restic sets itself.
QString amazonClassName(int storageClass)
{
    switch (storageClass) {
    case 3:
        return QStringLiteral("GLACIER");
    case 4:
        return QStringLiteral("STANDARD_IA");
    case 5:
        return QStringLiteral("ONEZONE_IA");
    case 6:
        return QStringLiteral("INTELLIGENT_TIERING");
    case 7:
        return QStringLiteral("DEEP_ARCHIVE");
    case 8:
        return QStringLiteral("GLACIER_IR");
    default:
        return QStringLiteral("STANDARD");
    }
}

bool resticSetsClass(int storageClass)
{
    return storageClass == 1 || storageClass == 4 || storageClass == 5 || storageClass == 6;
}

class Document
{
public:
    explicit Document(const QJsonObject& document)
        : m_document(document)
    { }

    QString text(const char* key) const
    {
        const QJsonValue value = m_document.value(QLatin1String(key));
        if (value.isDouble())
            return QString::number(value.toDouble(), 'f', 0);
        return value.toString().trimmed();
    }
    // A secret as the console saved it: sealed with the local cipher, or plain from a script.
    QString secret(const char* key) const
    {
        const QString stored = m_document.value(QLatin1String(key)).toString();
        if (stored.isEmpty())
            return QString();
        const QString opened = SHARED::cryptNS::decrypt_local_password(stored);
        return opened.isEmpty() ? stored : opened;
    }
    bool flag(const char* key, bool fallback) const
    {
        const QJsonValue value = m_document.value(QLatin1String(key));
        if (value.isBool())
            return value.toBool();
        if (value.isDouble())
            return value.toDouble() != 0;
        if (value.isString())
            return value.toString() == QLatin1String("true") || value.toString() == QLatin1String("1");
        return fallback;
    }
    int number(const char* key, int fallback) const
    {
        const QJsonValue value = m_document.value(QLatin1String(key));
        if (value.isDouble())
            return value.toInt();
        bool ok = false;
        const int n = value.toString().toInt(&ok);
        return ok ? n : fallback;
    }

private:
    QJsonObject m_document;
};

// An endpoint as typed, with or without scheme and trailing slash; the scheme follows "UseSsl"
// where the document has it, else what was typed, else https.
struct Endpoint
{
    QString host;
    bool ssl = true;
    QString url() const { return (ssl ? QStringLiteral("https://") : QStringLiteral("http://")) + host; }
};

Endpoint endpointOf(const Document& document, const QString& fallbackHost)
{
    Endpoint endpoint;
    QString text = document.text("Endpoint");
    bool typedSsl = true;
    if (text.startsWith(QLatin1String("https://"), Qt::CaseInsensitive)) {
        text = text.mid(8);
    } else if (text.startsWith(QLatin1String("http://"), Qt::CaseInsensitive)) {
        text = text.mid(7);
        typedSsl = false;
    }
    while (text.endsWith(QLatin1Char('/')))
        text.chop(1);
    endpoint.host = text.isEmpty() ? fallbackHost : text;
    endpoint.ssl = document.flag("UseSsl", typedSsl);
    return endpoint;
}

// Amazon's own S3 endpoints, global and Chinese, where a bucket may be addressed by host name.
bool isAmazonHost(const QString& host)
{
    const QString name = host.section(QLatin1Char(':'), 0, 0).toLower();
    for (const QLatin1String domain : {QLatin1String("amazonaws.com"), QLatin1String("amazonaws.com.cn")}) {
        if (name == domain || name.endsWith(QLatin1Char('.') + domain))
            return true;
    }
    return false;
}

QString rcloneKey(const char* option)
{
    return QStringLiteral("RCLONE_CONFIG_%1_%2").arg(BackendMapping::remoteName().toUpper(), QLatin1String(option));
}

QString bucketRoot(const QString& bucket)
{
    return BackendMapping::remoteName() + QLatin1Char(':') + bucket + QLatin1Char('/');
}

void mapS3(const Account& account, const Document& doc, const StorageOptions& options, BackendTarget& target)
{
    const bool amazon = amazonTypes.contains(account.type);
    const bool google = account.type == googleStorage;
    QString fallbackHost;
    if (account.type == amazonS3China)
        fallbackHost = QStringLiteral("s3.cn-north-1.amazonaws.com.cn");
    else if (amazon)
        fallbackHost = QStringLiteral("s3.amazonaws.com");
    else if (google)
        fallbackHost = TWL::Cloud::Info::GoogleStorage().endpointHost();
    // The console leaves the endpoint of Amazon S3 to the back-end, whatever the document holds.
    const Endpoint endpoint = account.type == amazonS3 || account.type == amazonS3Ub ? Endpoint {fallbackHost, true}
                                                                                     : endpointOf(doc, fallbackHost);
    const QString bucket = doc.text("ContainerName");
    if (bucket.isEmpty()) {
        target.error = QStringLiteral("The account has no bucket (\"ContainerName\")");
        return;
    }
    if (endpoint.host.isEmpty()) {
        target.error = QStringLiteral("The account has no endpoint");
        return;
    }
    const QString accessKey = doc.text("AccessKey");
    const QString secretKey = doc.secret("SecretKey");
    const QString region = doc.text("Region");
    // "Signature" 2 is AWS2; anything else reads as AWS4.
    const bool signatureV2 = !google && doc.number("Signature", 4) == 2;
    const int storageClass = amazon ? options.amazonStorageClass : 1;
    const bool sse = amazon && options.serverSideEncryption;
    const bool amazonHost = amazon && isAmazonHost(endpoint.host);
    // The accelerated endpoint exists only beside Amazon's own.
    const bool accelerate
        = (account.type == amazonS3 || account.type == amazonS3China) && amazonHost && options.transferAcceleration;

    target.environment.insert(QStringLiteral("AWS_ACCESS_KEY_ID"), accessKey);
    target.environment.insert(QStringLiteral("AWS_SECRET_ACCESS_KEY"), secretKey);
    target.repositoryRoot = QStringLiteral("s3:%1/%2/").arg(endpoint.url(), bucket);
    if (!region.isEmpty())
        target.options << QStringLiteral("s3.region=%1").arg(region);
    if (storageClass != 1 && resticSetsClass(storageClass))
        target.options << QStringLiteral("s3.storage-class=%1").arg(amazonClassName(storageClass));

    QString provider = QStringLiteral("Other");
    // rclone puts the bucket into the host name for every AWS account, whatever it is told, and restic
    // does so only on Amazon's own hosts. An Amazon account on another endpoint (a gateway, a proxy)
    // would work until its plan needs rclone, for an archive class or server side encryption, and then
    // fail on a host name that does not exist: there it is a plain S3 server to rclone too.
    if (amazonHost)
        provider = QStringLiteral("AWS");
    else if (google)
        provider = QStringLiteral("GCS");
    else if (account.type == minio)
        provider = QStringLiteral("Minio");
    else if (account.type == wasabi || account.type == 34 || account.type == 35 || account.type == 36)
        provider = QStringLiteral("Wasabi");
    else if (account.type == alibabaCloud)
        provider = QStringLiteral("Alibaba");
    target.rcloneEnvironment.insert(rcloneKey("TYPE"), QStringLiteral("s3"));
    target.rcloneEnvironment.insert(rcloneKey("PROVIDER"), provider);
    target.rcloneEnvironment.insert(rcloneKey("ENV_AUTH"), QStringLiteral("false"));
    target.rcloneEnvironment.insert(rcloneKey("ACCESS_KEY_ID"), accessKey);
    target.rcloneEnvironment.insert(rcloneKey("SECRET_ACCESS_KEY"), secretKey);
    if (!amazon || account.type == amazonS3China)
        target.rcloneEnvironment.insert(rcloneKey("ENDPOINT"), endpoint.url());
    if (!region.isEmpty())
        target.rcloneEnvironment.insert(rcloneKey("REGION"), region);
    if (storageClass != 1)
        target.rcloneEnvironment.insert(rcloneKey("STORAGE_CLASS"), amazonClassName(storageClass));
    if (sse)
        target.rcloneEnvironment.insert(rcloneKey("SERVER_SIDE_ENCRYPTION"), QStringLiteral("AES256"));
    if (signatureV2)
        target.rcloneEnvironment.insert(rcloneKey("V2_AUTH"), QStringLiteral("true"));
    if (accelerate)
        target.rcloneEnvironment.insert(rcloneKey("USE_ACCELERATE_ENDPOINT"), QStringLiteral("true"));
    target.rcloneRoot = bucketRoot(bucket);
    // restic's S3 back-end signs with AWS4 only and knows neither the archive classes, nor server
    // side encryption, nor the accelerated endpoint.
    target.throughRclone = signatureV2 || !resticSetsClass(storageClass) || sse || accelerate;
}

bool isDefaultAzureEndpoint(const QString& host, const QString& accountName)
{
    const QString lower = host.toLower();
    return lower.isEmpty() || lower == QLatin1String("core.windows.net")
        || lower == QLatin1String("blob.core.windows.net")
        || lower == accountName.toLower() + QLatin1String(".blob.core.windows.net");
}

void mapAzure(const Document& doc, const StorageOptions& options, BackendTarget& target)
{
    const QString container = doc.text("ContainerName");
    const QString name = doc.text("UserName");
    const QString key = doc.secret("Password");
    if (container.isEmpty() || name.isEmpty()) {
        target.error = QStringLiteral("The account has no container or no account name");
        return;
    }
    const Endpoint endpoint = endpointOf(doc, QString());
    target.environment.insert(QStringLiteral("AZURE_ACCOUNT_NAME"), name);
    target.environment.insert(QStringLiteral("AZURE_ACCOUNT_KEY"), key);
    target.repositoryRoot = QStringLiteral("azure:%1:/").arg(container);

    target.rcloneEnvironment.insert(rcloneKey("TYPE"), QStringLiteral("azureblob"));
    target.rcloneEnvironment.insert(rcloneKey("ACCOUNT"), name);
    target.rcloneEnvironment.insert(rcloneKey("KEY"), key);
    const bool defaultEndpoint = isDefaultAzureEndpoint(endpoint.host, name);
    if (!defaultEndpoint) {
        // rclone reaches an account at https://<account>.<endpoint>: its endpoint is the domain that follows
        // the account's name. Only the storage emulator has the account in its URL's path, and rclone then
        // needs its emulator mode.
        const QString path = endpoint.host.section(QLatin1Char('/'), 1, 1);
        if (!path.isEmpty()) {
            if (path != QLatin1String("devstoreaccount1") || name != path) {
                target.error = QStringLiteral("The Azure endpoint \"%1\" holds a path, which only the storage "
                                              "emulator's account devstoreaccount1 may have")
                                   .arg(endpoint.host);
                return;
            }
            target.rcloneEnvironment.insert(rcloneKey("USE_EMULATOR"), QStringLiteral("true"));
            target.rcloneEnvironment.insert(rcloneKey("ENDPOINT"), endpoint.url());
        } else {
            QString domain = endpoint.host.toLower();
            if (domain.startsWith(name.toLower() + QLatin1Char('.')))
                domain = domain.mid(name.size() + 1);
            if (domain.startsWith(QLatin1String("core.")))
                domain.prepend(QLatin1String("blob."));
            target.rcloneEnvironment.insert(rcloneKey("ENDPOINT"), domain);
        }
    }
    if (options.azureAccessTier == 1)
        target.rcloneEnvironment.insert(rcloneKey("ACCESS_TIER"), QStringLiteral("Cool"));
    else if (options.azureAccessTier == 2)
        target.rcloneEnvironment.insert(rcloneKey("ACCESS_TIER"), QStringLiteral("Archive"));
    target.rcloneRoot = bucketRoot(container);
    // restic's Azure back-end knows only the public cloud's endpoint and no access tier.
    target.throughRclone = !defaultEndpoint || options.azureAccessTier != 0;
}

// A service account key file as Google writes it; the console keeps its parts, or the whole file.
QByteArray serviceAccountKey(const Document& doc)
{
    const QString account = doc.secret("ServiceAccount");
    const QJsonDocument whole = QJsonDocument::fromJson(account.toUtf8());
    if (whole.isObject() && whole.object().contains(QStringLiteral("private_key")))
        return whole.toJson(QJsonDocument::Compact);
    QJsonObject key;
    key.insert(QStringLiteral("type"), QStringLiteral("service_account"));
    key.insert(QStringLiteral("project_id"), doc.secret("ProjectId"));
    key.insert(QStringLiteral("private_key"), doc.secret("PrivateKey"));
    key.insert(QStringLiteral("client_email"), account);
    key.insert(QStringLiteral("token_uri"), QStringLiteral("https://oauth2.googleapis.com/token"));
    return QJsonDocument(key).toJson(QJsonDocument::Compact);
}

void mapGoogle(const Account& account, const Document& doc, const StorageOptions& options, const QString& runFolder,
    BackendTarget& target)
{
    const int auth = doc.number("AuthType", 0);
    if (auth != googleServiceAccount && auth != googleInstalledApplication) {
        // HMAC keys work through Google's S3-compatible endpoint.
        mapS3(account, doc, options, target);
        return;
    }
    const QString bucket = doc.text("ContainerName");
    if (bucket.isEmpty()) {
        target.error = QStringLiteral("The account has no bucket (\"ContainerName\")");
        return;
    }
    using TWL::Cloud::Info::GoogleStorage;
    const GoogleStorage storage;
    const QString project = doc.secret("ProjectId");
    target.rcloneEnvironment.insert(rcloneKey("TYPE"), QStringLiteral("google cloud storage"));
    target.rcloneEnvironment.insert(rcloneKey("PROJECT_NUMBER"), project);
    if (!storage.jsonApiEndpoint().isEmpty())
        target.rcloneEnvironment.insert(rcloneKey("ENDPOINT"), storage.jsonApiEndpoint());
    target.rcloneRoot = bucketRoot(bucket);
    if (auth == googleServiceAccount) {
        const QByteArray key = serviceAccountKey(doc);
        const QString file = QStringLiteral("google-service-account.json");
        target.files.insert(file, key);
        target.environment.insert(QStringLiteral("GOOGLE_PROJECT_ID"), project);
        target.environment.insert(
            QStringLiteral("GOOGLE_APPLICATION_CREDENTIALS"), runFolder + QLatin1Char('/') + file);
        target.rcloneEnvironment.insert(rcloneKey("SERVICE_ACCOUNT_CREDENTIALS"), QString::fromUtf8(key));
        target.repositoryRoot = QStringLiteral("gs:%1:/").arg(bucket);
        // restic's Google back-end knows Google's own address only.
        target.throughRclone = GoogleStorage::endpointOverridden();
        return;
    }
    const QString refresh = doc.secret("RefreshToken");
    if (refresh.isEmpty()) {
        target.error = QStringLiteral("The Google account has not been authorised yet (no \"RefreshToken\")");
        return;
    }
    // The refresh token belongs to the console's OAuth client, and only that client may refresh it: rclone
    // would otherwise use its own.
    if (GoogleStorage::oauthClientId().isEmpty()) {
        target.error = QStringLiteral("The Google account was authorised as an installed application, but the "
                                      "service has no OAuth client (TWB_GOOGLE_OAUTH_CLIENT_ID)");
        return;
    }
    target.rcloneEnvironment.insert(rcloneKey("CLIENT_ID"), GoogleStorage::oauthClientId());
    target.rcloneEnvironment.insert(rcloneKey("CLIENT_SECRET"), GoogleStorage::oauthClientSecret());
    target.rcloneEnvironment.insert(rcloneKey("TOKEN_URL"), GoogleStorage::oauthTokenUrl().toString());
    // restic's own Google back-end takes no refresh token: the installed application goes through rclone.
    QJsonObject token;
    token.insert(QStringLiteral("refresh_token"), refresh);
    token.insert(QStringLiteral("token_type"), QStringLiteral("Bearer"));
    token.insert(QStringLiteral("expiry"), QStringLiteral("2000-01-01T00:00:00Z"));
    target.rcloneEnvironment.insert(
        rcloneKey("TOKEN"), QString::fromUtf8(QJsonDocument(token).toJson(QJsonDocument::Compact)));
    target.throughRclone = true;
}

void mapOpenStack(const Document& doc, BackendTarget& target)
{
    const QString container = doc.text("ContainerName");
    const QString url = doc.text("Endpoint");
    if (container.isEmpty() || url.isEmpty()) {
        target.error = QStringLiteral("The account has no container or no authentication endpoint");
        return;
    }
    const QString user = doc.text("UserName");
    const QString key = doc.secret("ApiKey");
    const QString region = doc.text("Region");
    // "AuthType" is the Keystone version: 1, 2 (the default) or 3.
    const int version = doc.number("AuthType", 2);
    const bool internal = doc.flag("UseInternalUrl", false);
    auto setIf = [&target](const char* name, const QString& value) {
        if (!value.isEmpty())
            target.environment.insert(QLatin1String(name), value);
    };
    target.repositoryRoot = QStringLiteral("swift:%1:/").arg(container);
    target.rcloneEnvironment.insert(rcloneKey("TYPE"), QStringLiteral("swift"));
    target.rcloneEnvironment.insert(rcloneKey("USER"), user);
    target.rcloneEnvironment.insert(rcloneKey("KEY"), key);
    target.rcloneEnvironment.insert(rcloneKey("AUTH"), url);
    target.rcloneEnvironment.insert(rcloneKey("AUTH_VERSION"), QString::number(version));
    if (!region.isEmpty())
        target.rcloneEnvironment.insert(rcloneKey("REGION"), region);
    if (internal)
        target.rcloneEnvironment.insert(rcloneKey("ENDPOINT_TYPE"), QStringLiteral("internal"));
    target.rcloneRoot = bucketRoot(container);
    if (version == 1) {
        setIf("ST_AUTH", url);
        setIf("ST_USER", user);
        setIf("ST_KEY", key);
        return;
    }
    setIf("OS_AUTH_URL", url);
    setIf("OS_USERNAME", user);
    setIf("OS_PASSWORD", key);
    setIf("OS_REGION_NAME", region);
    if (internal)
        target.environment.insert(QStringLiteral("OS_ENDPOINT_TYPE"), QStringLiteral("internalURL"));
    const QString tenantId = doc.text("TenantId");
    const QString tenantName = doc.text("TenantName");
    if (version == 2) {
        setIf("OS_TENANT_ID", tenantId);
        setIf("OS_TENANT_NAME", tenantName);
        auto setRclone = [&target](const char* name, const QString& value) {
            if (!value.isEmpty())
                target.rcloneEnvironment.insert(rcloneKey(name), value);
        };
        setRclone("TENANT_ID", tenantId);
        setRclone("TENANT", tenantName);
        return;
    }
    setIf("OS_USER_DOMAIN_ID", doc.text("DomainId"));
    setIf("OS_USER_DOMAIN_NAME", doc.text("DomainName"));
    if (doc.flag("UseScope", true)) {
        setIf("OS_PROJECT_NAME", doc.text("ProjectName").isEmpty() ? tenantName : doc.text("ProjectName"));
        setIf("OS_TENANT_ID", doc.text("ProjectId").isEmpty() ? tenantId : doc.text("ProjectId"));
        setIf("OS_PROJECT_DOMAIN_ID", doc.text("DomainId"));
        setIf("OS_PROJECT_DOMAIN_NAME", doc.text("DomainName"));
    }
    auto setRclone = [&target](const char* name, const QString& value) {
        if (!value.isEmpty())
            target.rcloneEnvironment.insert(rcloneKey(name), value);
    };
    setRclone("DOMAIN", doc.text("DomainName"));
    setRclone("TENANT", doc.text("ProjectName").isEmpty() ? tenantName : doc.text("ProjectName"));
    setRclone("TENANT_ID", doc.text("ProjectId").isEmpty() ? tenantId : doc.text("ProjectId"));
    setRclone("TENANT_DOMAIN", doc.text("DomainName"));
}

void mapBackBlaze(const Document& doc, BackendTarget& target)
{
    const QString bucket = doc.text("ContainerName");
    if (bucket.isEmpty()) {
        target.error = QStringLiteral("The account has no bucket (\"ContainerName\")");
        return;
    }
    const QString id = doc.text("AccountId");
    const QString key = doc.secret("ApplicationKey");
    target.environment.insert(QStringLiteral("B2_ACCOUNT_ID"), id);
    target.environment.insert(QStringLiteral("B2_ACCOUNT_KEY"), key);
    target.repositoryRoot = QStringLiteral("b2:%1:").arg(bucket);
    target.rcloneEnvironment.insert(rcloneKey("TYPE"), QStringLiteral("b2"));
    target.rcloneEnvironment.insert(rcloneKey("ACCOUNT"), id);
    target.rcloneEnvironment.insert(rcloneKey("KEY"), key);
    target.rcloneRoot = bucketRoot(bucket);
}

QString folderRoot(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    if (path.isEmpty())
        return QString();
    return path == QLatin1String("/") ? path : path + QLatin1Char('/');
}

void mapSftp(const Document& doc, BackendTarget& target)
{
    const QString host = doc.text("Address");
    if (host.isEmpty()) {
        target.error = QStringLiteral("The account has no SFTP server (\"Address\")");
        return;
    }
    target.rcloneEnvironment.insert(rcloneKey("TYPE"), QStringLiteral("sftp"));
    target.rcloneEnvironment.insert(rcloneKey("HOST"), host);
    target.rcloneEnvironment.insert(rcloneKey("PORT"), QString::number(doc.number("Port", 22)));
    target.rcloneEnvironment.insert(rcloneKey("USER"), doc.text("User"));
    const QString password = doc.secret("Password");
    if (!password.isEmpty()) {
        target.rcloneEnvironment.insert(rcloneKey("PASS"), password);
        target.obscured << rcloneKey("PASS");
    }
    const QString key = doc.secret("PrivateKey");
    if (!key.isEmpty()) {
        // rclone reads a PEM key from one line, with its line breaks written as "\n".
        QString oneLine = key;
        oneLine.replace(QLatin1String("\r\n"), QLatin1String("\\n"));
        oneLine.replace(QLatin1Char('\n'), QLatin1String("\\n"));
        target.rcloneEnvironment.insert(rcloneKey("KEY_PEM"), oneLine);
    }
    target.rcloneRoot = BackendMapping::remoteName() + QLatin1Char(':') + folderRoot(doc.text("Path"));
    // restic's own SFTP back-end runs ssh, which cannot be given a password.
    target.throughRclone = true;
}

} // namespace

QString BackendTarget::repository(const QString& prefix, const QString& plan) const
{
    const QString relative = prefix + QLatin1Char('/') + plan;
    if (throughRclone)
        return QStringLiteral("rclone:") + rcloneRoot + relative;
    return repositoryRoot + relative;
}

QMap<QString, QString> BackendTarget::resticEnvironment() const
{
    QMap<QString, QString> all = environment;
    if (throughRclone) {
        for (auto it = rcloneEnvironment.constBegin(); it != rcloneEnvironment.constEnd(); ++it)
            all.insert(it.key(), it.value());
    }
    return all;
}

BackendTarget BackendMapping::map(const Account& account, const StorageOptions& options, const QString& runFolder)
{
    BackendTarget target;
    const Document doc(account.document);
    if (account.type == fileSystem) {
        const QString path = folderRoot(doc.text("Path"));
        if (path.isEmpty() || !path.startsWith(QLatin1Char('/'))) {
            target.error = QStringLiteral("The file-system account has no absolute folder (\"Path\")");
            return target;
        }
        target.repositoryRoot = path;
        target.rcloneEnvironment.insert(rcloneKey("TYPE"), QStringLiteral("local"));
        target.rcloneRoot = remoteName() + QLatin1Char(':') + path;
    } else if (amazonTypes.contains(account.type) || s3CompatibleTypes.contains(account.type)) {
        mapS3(account, doc, options, target);
    } else if (account.type == azureBlob) {
        mapAzure(doc, options, target);
    } else if (account.type == googleStorage) {
        mapGoogle(account, doc, options, runFolder, target);
    } else if (openStackTypes.contains(account.type)) {
        mapOpenStack(doc, target);
    } else if (account.type == backBlaze) {
        mapBackBlaze(doc, target);
    } else if (account.type == sftp) {
        mapSftp(doc, target);
    } else {
        target.error = QStringLiteral("Backups into storage accounts of type %1 are not supported").arg(account.type);
    }
    return target;
}

} // namespace TWB::Service
