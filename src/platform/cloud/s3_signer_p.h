#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QMap>
#include <QNetworkRequest>
#include <QString>
#include <QUrl>

namespace TWL::Cloud::Detail {

/// Signs one S3 request with AWS Signature Version 4, for the few calls rclone has no command for.
struct S3Signer
{
    QString accessKey;
    QString secretKey;
    QString region;

    /// A request for `verb` on `url` (its query is part of what is signed) with `body`; `headers` are
    /// added and signed, "host", "x-amz-date" and "x-amz-content-sha256" always.
    QNetworkRequest sign(const QByteArray& verb, const QUrl& url, const QByteArray& body,
        const QMap<QByteArray, QByteArray>& headers, const QDateTime& now = QDateTime::currentDateTimeUtc()) const;
};

} // namespace TWL::Cloud::Detail
