#include "platform/cloud/endpoint_helper.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QUrl>

namespace TWL::Utitlity {

namespace {

// The text split into what was typed before "://" and after it.
QPair<QString, QString> splitScheme(const QString& endpoint)
{
    const QString text = endpoint.trimmed();
    const int separator = text.indexOf(QLatin1String("://"));
    if (separator < 0)
        return {QString(), text};
    return {text.left(separator).toLower(), text.mid(separator + 3)};
}

QString withoutTrailingSlash(QString text)
{
    while (text.endsWith(QLatin1Char('/')))
        text.chop(1);
    return text;
}

} // namespace

EndpointHelper::EndpointHelper(const QString& endpoint, bool useSsl)
    : m_useSsl(useSsl)
{
    auto tr = [](const char* text) { return QCoreApplication::translate("EndpointHelper", text); };
    const QPair<QString, QString> parts = splitScheme(endpoint);
    if (parts.first == QLatin1String("https")) {
        m_useSsl = true;
    } else if (parts.first == QLatin1String("http")) {
        m_useSsl = false;
    } else if (!parts.first.isEmpty()) {
        m_error = tr("The endpoint must begin with http:// or https://, or with the host name.");
        return;
    }
    m_endpoint = withoutTrailingSlash(parts.second);
    if (m_endpoint.isEmpty()) {
        m_error = tr("Endpoint is empty");
        return;
    }
    if (m_endpoint.contains(QRegularExpression(QStringLiteral("\\s")))) {
        m_error = tr("The endpoint may not hold blanks.");
        return;
    }
    const QUrl url(QStringLiteral("https://") + m_endpoint, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty() || !url.userInfo().isEmpty() || url.hasQuery() || url.hasFragment()) {
        m_error = tr("\"%1\" is not a valid endpoint.").arg(m_endpoint);
        return;
    }
}

QString EndpointHelper::endpointWithScheme() const
{
    if (hasError())
        return QString();
    return (m_useSsl ? QStringLiteral("https://") : QStringLiteral("http://")) + m_endpoint;
}

QString EndpointHelper::toEndpoint(const QString& endpoint)
{
    return withoutTrailingSlash(splitScheme(endpoint).second);
}

QString EndpointHelper::toEndpointWithScheme(const QString& endpoint, bool useSsl)
{
    const QString bare = toEndpoint(endpoint);
    if (bare.isEmpty())
        return QString();
    return (useSsl ? QStringLiteral("https://") : QStringLiteral("http://")) + bare;
}

QPair<QString, QString> EndpointHelper::toPair(const QString& endpoint)
{
    const QPair<QString, QString> parts = splitScheme(endpoint);
    return {withoutTrailingSlash(parts.second), parts.first};
}

} // namespace TWL::Utitlity

namespace TWL::Utility {

QString StringFilters::prefixFilter(const QString& prefix)
{
    QString filtered;
    for (const QChar c : prefix) {
        if (c.isLetterOrNumber() || c == QLatin1Char('-') || c == QLatin1Char('_') || c == QLatin1Char('.'))
            filtered.append(c);
    }
    while (filtered.startsWith(QLatin1Char('.')))
        filtered.remove(0, 1);
    return filtered;
}

} // namespace TWL::Utility
