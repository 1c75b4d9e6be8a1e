#include "platform/cloud/s3_signer_p.h"

#include <QCryptographicHash>
#include <QMessageAuthenticationCode>
#include <QStringList>
#include <QUrlQuery>

#include <algorithm>

namespace TWL::Cloud::Detail {

namespace {

QByteArray hmac(const QByteArray& key, const QByteArray& message)
{
    return QMessageAuthenticationCode::hash(message, key, QCryptographicHash::Sha256);
}

QByteArray sha256Hex(const QByteArray& data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Sha256).toHex();
}

// Percent-encoding as the signature wants it: everything but unreserved characters.
QByteArray encode(const QString& text)
{
    return QUrl::toPercentEncoding(text, QByteArray("-_.~"));
}

} // namespace

QNetworkRequest S3Signer::sign(const QByteArray& verb, const QUrl& url, const QByteArray& body,
    const QMap<QByteArray, QByteArray>& headers, const QDateTime& now) const
{
    const QByteArray amzDate = now.toUTC().toString(QStringLiteral("yyyyMMdd'T'HHmmss'Z'")).toLatin1();
    const QByteArray day = amzDate.left(8);
    const QByteArray payloadHash = sha256Hex(body);
    QByteArray host = url.host().toLatin1();
    const bool defaultPort = url.port() < 0 || (url.scheme() == QLatin1String("https") && url.port() == 443)
        || (url.scheme() == QLatin1String("http") && url.port() == 80);
    if (!defaultPort)
        host += ':' + QByteArray::number(url.port());

    QMap<QByteArray, QByteArray> signedHeaders;
    for (auto it = headers.constBegin(); it != headers.constEnd(); ++it)
        signedHeaders.insert(it.key().toLower(), it.value().trimmed());
    signedHeaders.insert("host", host);
    signedHeaders.insert("x-amz-date", amzDate);
    signedHeaders.insert("x-amz-content-sha256", payloadHash);

    QByteArray canonicalHeaders;
    QList<QByteArray> names;
    for (auto it = signedHeaders.constBegin(); it != signedHeaders.constEnd(); ++it) {
        canonicalHeaders += it.key() + ':' + it.value() + '\n';
        names << it.key();
    }
    const QByteArray signedNames = names.join(';');

    QList<QPair<QByteArray, QByteArray>> query;
    const auto items = QUrlQuery(url).queryItems(QUrl::FullyDecoded);
    for (const auto& item : items)
        query.append({encode(item.first), encode(item.second)});
    std::sort(query.begin(), query.end());
    QList<QByteArray> queryParts;
    for (const auto& item : qAsConst(query))
        queryParts << item.first + '=' + item.second;

    QByteArray path = url.path(QUrl::FullyEncoded).toLatin1();
    if (path.isEmpty())
        path = "/";
    const QByteArray canonicalRequest = verb + '\n' + path + '\n' + queryParts.join('&') + '\n' + canonicalHeaders
        + '\n' + signedNames + '\n' + payloadHash;
    const QByteArray scope = day + '/' + region.toLatin1() + "/s3/aws4_request";
    const QByteArray toSign = "AWS4-HMAC-SHA256\n" + amzDate + '\n' + scope + '\n' + sha256Hex(canonicalRequest);
    QByteArray key = hmac("AWS4" + secretKey.toUtf8(), day);
    key = hmac(key, region.toLatin1());
    key = hmac(key, "s3");
    key = hmac(key, "aws4_request");
    const QByteArray signature = hmac(key, toSign).toHex();

    QNetworkRequest request(url);
    for (auto it = signedHeaders.constBegin(); it != signedHeaders.constEnd(); ++it) {
        if (it.key() != "host")
            request.setRawHeader(it.key(), it.value());
    }
    request.setRawHeader("Authorization",
        "AWS4-HMAC-SHA256 Credential=" + accessKey.toUtf8() + '/' + scope + ", SignedHeaders=" + signedNames
            + ", Signature=" + signature);
    return request;
}

} // namespace TWL::Cloud::Detail
