#include "platform/soap/email_addresses_confirmed.h"

#include "platform/logging/twl_debug.h"
#include "platform/rebranding/rebranding.h"

#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

namespace TWB::SOAP {

EmailAddressesConfirmed::EmailAddressesConfirmed() = default;

QUrl EmailAddressesConfirmed::serviceUrl()
{
    const QString own = qEnvironmentVariable("TWB_EMAIL_SERVICE_URL");
    if (!own.isEmpty())
        return QUrl(own);
    const QString site = TWB::Defines::Rebranding().value(QStringLiteral("WebSite")).toString();
    return QUrl(site + QStringLiteral("/api/notification/confirmed"));
}

bool EmailAddressesConfirmed::isAllowed(const QString& email, const QString& userName)
{
    status = 0;
    QNetworkAccessManager network;
    QNetworkRequest request(serviceUrl());
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    const QJsonObject body {{QStringLiteral("email"), email}, {QStringLiteral("userName"), userName}};
    QNetworkReply* reply = network.post(request, QJsonDocument(body).toJson(QJsonDocument::Compact));
    QEventLoop loop;
    QTimer limit;
    limit.setSingleShot(true);
    QObject::connect(&limit, &QTimer::timeout, reply, &QNetworkReply::abort);
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    limit.start(TimeoutMs);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QByteArray data = reply->readAll();
    if (reply->error() != QNetworkReply::NoError)
        TWL::TwlDebug("TWB").warning() << "Email confirmation service:" << reply->errorString();
    reply->deleteLater();
    if (status != 200)
        return false;
    return QJsonDocument::fromJson(data).object().value(QStringLiteral("confirmed")).toBool();
}

} // namespace TWB::SOAP
