#include "platform/cloud/info.h"

#include "platform/cloud/info_factory.h"

#include <QCoreApplication>

namespace TWL::Cloud::Info {

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("TWL::Cloud::Info", text);
}

QUrl https(const char* host)
{
    return QUrl(QStringLiteral("https://") + QLatin1String(host));
}

} // namespace

Base::Base(Type type)
    : m_type(type)
{ }

Base::~Base() = default;

AmazonS3Like::AmazonS3Like(Type type)
    : Base(type)
{ }

QUrl AmazonS3Like::defaultEndpoint() const
{
    switch (type()) {
    case TWL::Cloud::AmazonS3:
    case AmazonS3UB:
        return https("s3.amazonaws.com");
    case AmazonS3Chinese:
        return https("s3.cn-north-1.amazonaws.com.cn");
    case TWL::Cloud::AlibabaCloud:
        return https("oss-us-east-1.aliyuncs.com");
    case Wasabi:
    case WasabiUB:
        return https("s3.wasabisys.com");
    case WasabiStage:
    case WasabiUBStage:
        return https("s3.stage.wasabisys.com");
    case DreamObjects:
        return https("objects-us-east-1.dream.io");
    case Cloudian:
        return https("s3-region1.cloudian.com");
    case Scality:
        return https("s3.scality.com");
    case CenturyLink:
        return https("canada.os.ctl.io");
    case ThinkOn:
        return https("s3.thinkon.com");
    case Verizon:
        return https("storage.verizon.com");
    default:
        return QUrl();
    }
}

int AmazonS3Like::defaultSignature() const
{
    // Only some older private clouds of the family speak AWS2 alone.
    return type() == CenturyLink ? 2 : 4;
}

QList<Choice> AmazonS3Like::regions() const
{
    if (type() == Wasabi || type() == WasabiUB)
        return {{tr("US East 1 (N. Virginia)"), QStringLiteral("us-east-1")},
            {tr("US East 2 (N. Virginia)"), QStringLiteral("us-east-2")},
            {tr("US Central 1 (Texas)"), QStringLiteral("us-central-1")},
            {tr("US West 1 (Oregon)"), QStringLiteral("us-west-1")},
            {tr("EU Central 1 (Amsterdam)"), QStringLiteral("eu-central-1")},
            {tr("EU West 1 (London)"), QStringLiteral("eu-west-1")},
            {tr("AP Northeast 1 (Tokyo)"), QStringLiteral("ap-northeast-1")}};
    if (type() == AmazonS3Chinese)
        return {{tr("China (Beijing)"), QStringLiteral("cn-north-1")},
            {tr("China (Ningxia)"), QStringLiteral("cn-northwest-1")}};
    return {};
}

AmazonS3::AmazonS3(Type type)
    : AmazonS3Like(type)
{ }

QList<Choice> AmazonS3::regions() const
{
    if (type() == AmazonS3Chinese)
        return AmazonS3Like::regions();
    return {{tr("US East (N. Virginia)"), QStringLiteral("us-east-1")},
        {tr("US East (Ohio)"), QStringLiteral("us-east-2")},
        {tr("US West (N. California)"), QStringLiteral("us-west-1")},
        {tr("US West (Oregon)"), QStringLiteral("us-west-2")}, {tr("Canada (Central)"), QStringLiteral("ca-central-1")},
        {tr("South America (Sao Paulo)"), QStringLiteral("sa-east-1")},
        {tr("Europe (Ireland)"), QStringLiteral("eu-west-1")}, {tr("Europe (London)"), QStringLiteral("eu-west-2")},
        {tr("Europe (Paris)"), QStringLiteral("eu-west-3")}, {tr("Europe (Frankfurt)"), QStringLiteral("eu-central-1")},
        {tr("Europe (Stockholm)"), QStringLiteral("eu-north-1")}, {tr("Europe (Milan)"), QStringLiteral("eu-south-1")},
        {tr("Asia Pacific (Tokyo)"), QStringLiteral("ap-northeast-1")},
        {tr("Asia Pacific (Seoul)"), QStringLiteral("ap-northeast-2")},
        {tr("Asia Pacific (Singapore)"), QStringLiteral("ap-southeast-1")},
        {tr("Asia Pacific (Sydney)"), QStringLiteral("ap-southeast-2")},
        {tr("Asia Pacific (Mumbai)"), QStringLiteral("ap-south-1")},
        {tr("Asia Pacific (Hong Kong)"), QStringLiteral("ap-east-1")},
        {tr("Middle East (Bahrain)"), QStringLiteral("me-south-1")},
        {tr("Africa (Cape Town)"), QStringLiteral("af-south-1")}};
}

AlibabaCloud::AlibabaCloud()
    : AmazonS3Like(TWL::Cloud::AlibabaCloud)
{ }

QList<Choice> AlibabaCloud::regions() const
{
    return {{tr("US (Virginia)"), QStringLiteral("oss-us-east-1")},
        {tr("US (Silicon Valley)"), QStringLiteral("oss-us-west-1")},
        {tr("Germany (Frankfurt)"), QStringLiteral("oss-eu-central-1")},
        {tr("UK (London)"), QStringLiteral("oss-eu-west-1")}, {tr("Singapore"), QStringLiteral("oss-ap-southeast-1")},
        {tr("Japan (Tokyo)"), QStringLiteral("oss-ap-northeast-1")},
        {tr("China (Hangzhou)"), QStringLiteral("oss-cn-hangzhou")},
        {tr("China (Shanghai)"), QStringLiteral("oss-cn-shanghai")},
        {tr("China (Beijing)"), QStringLiteral("oss-cn-beijing")},
        {tr("China (Shenzhen)"), QStringLiteral("oss-cn-shenzhen")},
        {tr("China (Hong Kong)"), QStringLiteral("oss-cn-hongkong")}};
}

AzureBlob::AzureBlob()
    : Base(TWL::Cloud::AzureBlob)
{ }

QUrl AzureBlob::defaultEndpoint() const
{
    return https("core.windows.net");
}

QList<Choice> AzureBlob::accountTypes() const
{
    return {{tr("General-purpose v2"), QStringLiteral("StorageV2")},
        {tr("General-purpose v1"), QStringLiteral("Storage")}, {tr("Blob storage"), QStringLiteral("BlobStorage")},
        {tr("Premium block blobs"), QStringLiteral("BlockBlobStorage")}};
}

QList<Choice> AzureBlob::accessType() const
{
    return {{tr("Private (no anonymous access)"), QStringLiteral("private")},
        {tr("Blob (anonymous read access for blobs only)"), QStringLiteral("blob")},
        {tr("Container (anonymous read access for containers and blobs)"), QStringLiteral("container")}};
}

BackBlaze::BackBlaze()
    : Base(TWL::Cloud::BackBlaze)
{ }

QUrl BackBlaze::defaultEndpoint() const
{
    return https("api.backblazeb2.com");
}

QList<Choice> BackBlaze::containerAccessType() const
{
    return {{tr("Private"), QStringLiteral("allPrivate")}, {tr("Public"), QStringLiteral("allPublic")}};
}

GoogleStorage::GoogleStorage()
    : Base(TWL::Cloud::GoogleStorage)
{ }

QUrl GoogleStorage::defaultEndpoint() const
{
    if (endpointOverridden())
        return QUrl(qEnvironmentVariable("TWB_GOOGLE_STORAGE_ENDPOINT").trimmed());
    return https("storage.googleapis.com");
}

bool GoogleStorage::endpointOverridden()
{
    return !qEnvironmentVariable("TWB_GOOGLE_STORAGE_ENDPOINT").trimmed().isEmpty();
}

QString GoogleStorage::endpointHost() const
{
    const QUrl storage = defaultEndpoint();
    return storage.port() > 0 ? QStringLiteral("%1:%2").arg(storage.host()).arg(storage.port()) : storage.host();
}

QString GoogleStorage::jsonApiEndpoint() const
{
    if (!endpointOverridden())
        return QString();
    return defaultEndpoint().toString(QUrl::StripTrailingSlash) + QStringLiteral("/storage/v1/");
}

namespace {

QUrl oauthProvider(const QString& path, const char* host)
{
    const QString base = qEnvironmentVariable("TWB_GOOGLE_OAUTH_PROVIDER").trimmed();
    if (base.isEmpty())
        return QUrl(QStringLiteral("https://%1%2").arg(QLatin1String(host), path));
    QUrl url(base);
    url.setPath(path);
    return url;
}

} // namespace

QUrl GoogleStorage::oauthAuthorizationUrl()
{
    return oauthProvider(QStringLiteral("/o/oauth2/auth"), "accounts.google.com");
}

QUrl GoogleStorage::oauthTokenUrl()
{
    return oauthProvider(QStringLiteral("/oauth2/v4/token"), "www.googleapis.com");
}

QString GoogleStorage::oauthClientId()
{
    return qEnvironmentVariable("TWB_GOOGLE_OAUTH_CLIENT_ID").trimmed();
}

QString GoogleStorage::oauthClientSecret()
{
    return qEnvironmentVariable("TWB_GOOGLE_OAUTH_CLIENT_SECRET").trimmed();
}

QString GoogleStorage::oauthScope()
{
    return QStringLiteral("https://www.googleapis.com/auth/devstorage.full_control email");
}

QList<Choice> GoogleStorage::regions() const
{
    return {{tr("United States (multi-region)"), QStringLiteral("US")},
        {tr("European Union (multi-region)"), QStringLiteral("EU")},
        {tr("Asia (multi-region)"), QStringLiteral("ASIA")}, {tr("Iowa"), QStringLiteral("us-central1")},
        {tr("South Carolina"), QStringLiteral("us-east1")}, {tr("Northern Virginia"), QStringLiteral("us-east4")},
        {tr("Oregon"), QStringLiteral("us-west1")}, {tr("Belgium"), QStringLiteral("europe-west1")},
        {tr("London"), QStringLiteral("europe-west2")}, {tr("Frankfurt"), QStringLiteral("europe-west3")},
        {tr("Netherlands"), QStringLiteral("europe-west4")}, {tr("Taiwan"), QStringLiteral("asia-east1")},
        {tr("Tokyo"), QStringLiteral("asia-northeast1")}, {tr("Singapore"), QStringLiteral("asia-southeast1")},
        {tr("Sydney"), QStringLiteral("australia-southeast1")}};
}

QList<Choice> GoogleStorage::storageType() const
{
    return {{tr("Standard"), QStringLiteral("STANDARD")}, {tr("Nearline"), QStringLiteral("NEARLINE")},
        {tr("Coldline"), QStringLiteral("COLDLINE")}, {tr("Archive"), QStringLiteral("ARCHIVE")}};
}

OpenStack::OpenStack(Type type)
    : Base(type)
{ }

QList<Choice> OpenStack::endpoints() const
{
    switch (type()) {
    case Rackspace:
        return {{tr("US"), QStringLiteral("https://identity.api.rackspacecloud.com/v2.0")},
            {tr("UK"), QStringLiteral("https://lon.identity.api.rackspacecloud.com/v2.0")}};
    case SoftLayer:
        return {{tr("Dallas"), QStringLiteral("https://dal05.objectstorage.softlayer.net/auth/v1.0")},
            {tr("Amsterdam"), QStringLiteral("https://ams01.objectstorage.softlayer.net/auth/v1.0")},
            {tr("Frankfurt"), QStringLiteral("https://fra02.objectstorage.softlayer.net/auth/v1.0")},
            {tr("London"), QStringLiteral("https://lon02.objectstorage.softlayer.net/auth/v1.0")},
            {tr("Tokyo"), QStringLiteral("https://tok02.objectstorage.softlayer.net/auth/v1.0")}};
    case OracleCloud:
        return {{tr("US Commercial 2"), QStringLiteral("https://us2.storage.oraclecloud.com/auth/v1.0")},
            {tr("EMEA Commercial 2"), QStringLiteral("https://em2.storage.oraclecloud.com/auth/v1.0")}};
    default:
        return {};
    }
}

Plain::Plain(Type type)
    : Base(type)
{ }

QSharedPointer<Base> InfoFactory::create(Type type)
{
    if (type == TWL::Cloud::AmazonS3 || type == AmazonS3Chinese || type == AmazonS3UB)
        return QSharedPointer<Base>(new AmazonS3(type));
    if (type == TWL::Cloud::AlibabaCloud)
        return QSharedPointer<Base>(new AlibabaCloud);
    if (s3CompatibleTypes().contains(type))
        return QSharedPointer<Base>(new AmazonS3Like(type));
    if (type == TWL::Cloud::AzureBlob)
        return QSharedPointer<Base>(new AzureBlob);
    if (type == TWL::Cloud::BackBlaze)
        return QSharedPointer<Base>(new BackBlaze);
    if (type == TWL::Cloud::GoogleStorage)
        return QSharedPointer<Base>(new GoogleStorage);
    if (openStackTypes().contains(type))
        return QSharedPointer<Base>(new OpenStack(type));
    if (isKnownType(type))
        return QSharedPointer<Base>(new Plain(type));
    return {};
}

QSharedPointer<Base> InfoFactory::create(const QVariantMap& config)
{
    return create(typeFromName(config.value(QStringLiteral("CloudType")).toString()));
}

} // namespace TWL::Cloud::Info
