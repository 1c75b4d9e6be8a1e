#include "platform/cloud/lifecycle_policy.h"

#include "platform/cloud/account_keys.h"
#include "platform/cloud/endpoint_helper.h"
#include "platform/cloud/info_factory.h"
#include "platform/cloud/operation_manager.h"
#include "platform/cloud/rclone_errors_p.h"
#include "platform/cloud/rclone_remote_p.h"
#include "platform/cloud/s3_signer_p.h"
#include "platform/logging/twl_debug.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSslConfiguration>
#include <QSslError>
#include <QUrlQuery>

namespace TWL::Cloud::Operation::Amazon {

namespace {

// The bucket's URL, path style, with "?lifecycle".
QUrl lifecycleUrl(const QVariantMap& config, const Type type)
{
    QString endpoint = Utitlity::EndpointHelper::toEndpoint(config.value(Key::Endpoint).toString().trimmed());
    const bool ssl = config.value(Key::UseSsl, true).toBool();
    if (endpoint.isEmpty() || type == TWL::Cloud::AmazonS3 || type == AmazonS3UB) {
        const auto info = Info::InfoFactory::create(type).dynamicCast<Info::AmazonS3Like>();
        if (!info)
            return QUrl();
        endpoint = Utitlity::EndpointHelper::toEndpoint(info->defaultEndpoint().toString());
    }
    QUrl url(Utitlity::EndpointHelper::toEndpointWithScheme(endpoint, ssl));
    const QString bucket = config.value(Key::ContainerName).toString().trimmed();
    url.setPath(url.path() + QLatin1Char('/') + bucket);
    url.setQuery(QStringLiteral("lifecycle="));
    return url;
}

} // namespace

LifecyclePolicyOperation::LifecyclePolicyOperation(
    const QString& type, const QByteArray& verb, const QVariantMap& config, const QByteArray& body, QObject* parent)
    : IOperation(type, config, parent)
    , m_verb(verb)
    , m_body(body)
{ }

void LifecyclePolicyOperation::exec()
{
    if (!startOnce())
        return;
    const QVariantMap config = cloudConfig();
    const Type type = typeFromName(config.value(Key::CloudType).toString());
    if (!isS3Like(type) || config.value(Key::ContainerName).toString().trimmed().isEmpty()) {
        fail(BadConfiguration, tr("Lifecycle rules need an S3 account with a bucket."));
        return;
    }
    const QUrl url = lifecycleUrl(config, type);
    if (!url.isValid() || url.host().isEmpty()) {
        fail(BadConfiguration, tr("The account has no endpoint."));
        return;
    }
    setState(Running);
    Detail::S3Signer signer;
    signer.accessKey = config.value(Key::AccessKey).toString().trimmed();
    signer.secretKey = config.value(Key::SecretKey).toString();
    signer.region = config.value(Key::Region).toString().trimmed();
    if (signer.region.isEmpty())
        signer.region = QStringLiteral("us-east-1");
    QMap<QByteArray, QByteArray> headers;
    if (m_verb == "PUT") {
        headers.insert("content-md5", QCryptographicHash::hash(m_body, QCryptographicHash::Md5).toBase64());
        headers.insert("content-type", "application/xml");
    }
    QNetworkRequest request = signer.sign(m_verb, url, m_body, headers);
    QSslConfiguration ssl = QSslConfiguration::defaultConfiguration();
    if (const QPointer<OperationManager> manager = OperationManager::instance()) {
        for (const QByteArray& pem : manager->trustedCertificates())
            ssl.addCaCertificates(QSslCertificate::fromData(pem, QSsl::Pem));
    }
    request.setSslConfiguration(ssl);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    m_network = new QNetworkAccessManager(this);
    m_reply = m_network->sendCustomRequest(request, m_verb, m_body);
    connect(m_reply.data(), &QNetworkReply::finished, this, &LifecyclePolicyOperation::onFinished);
}

void LifecyclePolicyOperation::cancel()
{
    if (state() == Finished)
        return;
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
    }
    IOperation::cancel();
}

void LifecyclePolicyOperation::onFinished()
{
    if (!m_reply)
        return;
    QNetworkReply* reply = m_reply;
    reply->deleteLater();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QByteArray body = reply->readAll();
    if (status >= 200 && status < 300) {
        take(body);
        succeed();
        return;
    }
    const QString code
        = QRegularExpression(QStringLiteral("<Code>([^<]*)</Code>")).match(QString::fromUtf8(body)).captured(1);
    if (m_verb == "GET" && status == 404 && code == QLatin1String("NoSuchLifecycleConfiguration")) {
        take(QByteArray());
        succeed();
        return;
    }
    Detail::RcloneRemote remote;
    remote.type = typeFromName(cloudConfig().value(Key::CloudType).toString());
    remote.host = reply->url().host();
    QString words = code;
    if (status == 0 || words.isEmpty())
        words = reply->errorString();
    if (reply->error() == QNetworkReply::SslHandshakeFailedError)
        words = QStringLiteral("x509: certificate is not trusted");
    else if (reply->error() == QNetworkReply::ConnectionRefusedError
        || reply->error() == QNetworkReply::HostNotFoundError)
        words = QStringLiteral("connection refused");
    TWL::TwlDebug("TWB").debug() << "S3 answered" << status << code << reply->errorString();
    const Detail::Failure failure
        = Detail::explainRclone(remote, words.toUtf8(), cloudConfig().value(Key::ContainerName).toString().trimmed());
    fail(failure.code, failure.message, QString::fromUtf8(body.left(1000)));
}

LoadLifecyclePolicy::LoadLifecyclePolicy(const QVariantMap& config, QObject* parent)
    : LifecyclePolicyOperation(QStringLiteral("Amazon_LoadLifecyclePolicy"), "GET", config, QByteArray(), parent)
{ }

SaveLifecyclePolicy::SaveLifecyclePolicy(const QVariantMap& config, const QByteArray& xml, QObject* parent)
    : LifecyclePolicyOperation(QStringLiteral("Amazon_SaveLifecyclePolicy"), "PUT", config, xml, parent)
{ }

DeleteLifecyclePolicy::DeleteLifecyclePolicy(const QVariantMap& config, QObject* parent)
    : LifecyclePolicyOperation(QStringLiteral("Amazon_DeleteLifecyclePolicy"), "DELETE", config, QByteArray(), parent)
{ }

} // namespace TWL::Cloud::Operation::Amazon
