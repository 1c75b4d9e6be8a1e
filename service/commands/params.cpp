#include "service/commands/params.h"

#include <cmath>

namespace TWB::Service {

QString Params::fault(const char* key, const QString& what) const
{
    return QStringLiteral("Parameter \"%1\" of %2 %3").arg(QLatin1String(key), m_command, what);
}

QJsonValue Params::required(const char* key) const
{
    const QJsonValue value = m_params.value(QLatin1String(key));
    if (value.isUndefined() || value.isNull())
        throw fault(key, QStringLiteral("is missing"));
    return value;
}

QString Params::string(const char* key) const
{
    const QJsonValue value = required(key);
    if (!value.isString())
        throw fault(key, QStringLiteral("is not a string"));
    return value.toString();
}

QString Params::optionalString(const char* key, const QString& fallback) const
{
    const QJsonValue value = m_params.value(QLatin1String(key));
    if (value.isUndefined() || value.isNull())
        return fallback;
    if (!value.isString())
        throw fault(key, QStringLiteral("is not a string"));
    return value.toString();
}

QString Params::nonEmptyString(const char* key) const
{
    const QString text = string(key);
    if (text.trimmed().isEmpty())
        throw fault(key, QStringLiteral("is empty"));
    return text;
}

QUuid Params::uuid(const char* key) const
{
    const QString text = string(key);
    const QUuid id(text);
    if (id.isNull())
        throw fault(key, QStringLiteral("is not an identifier: \"%1\"").arg(text.left(80)));
    return id;
}

QUuid Params::optionalUuid(const char* key) const
{
    const QString text = optionalString(key);
    if (text.isEmpty())
        return QUuid();
    const QUuid id(text);
    if (id.isNull() && text != QUuid().toString() && text != QUuid().toString(QUuid::WithoutBraces))
        throw fault(key, QStringLiteral("is not an identifier: \"%1\"").arg(text.left(80)));
    return id;
}

qint64 Params::integer(const char* key, qint64 minimum, qint64 maximum) const
{
    const QJsonValue value = required(key);
    qint64 n = 0;
    if (value.isDouble()) {
        const double d = value.toDouble();
        if (std::trunc(d) != d || std::abs(d) > 9.0e15)
            throw fault(key, QStringLiteral("is not a whole number"));
        n = qint64(d);
    } else if (value.isString()) {
        bool ok = false;
        n = value.toString().trimmed().toLongLong(&ok);
        if (!ok)
            throw fault(key, QStringLiteral("is not a whole number: \"%1\"").arg(value.toString().left(80)));
    } else {
        throw fault(key, QStringLiteral("is not a whole number"));
    }
    if (n < minimum || n > maximum)
        throw fault(key, QStringLiteral("is %1, outside %2 to %3").arg(n).arg(minimum).arg(maximum));
    return n;
}

qint64 Params::optionalInteger(const char* key, qint64 fallback, qint64 minimum, qint64 maximum) const
{
    const QJsonValue value = m_params.value(QLatin1String(key));
    if (value.isUndefined() || value.isNull())
        return fallback;
    return integer(key, minimum, maximum);
}

bool Params::optionalBool(const char* key, bool fallback) const
{
    const QJsonValue value = m_params.value(QLatin1String(key));
    if (value.isUndefined() || value.isNull())
        return fallback;
    if (value.isBool())
        return value.toBool();
    if (value.isString()) {
        const QString text = value.toString().trimmed().toLower();
        if (text == QLatin1String("true") || text == QLatin1String("1"))
            return true;
        if (text == QLatin1String("false") || text == QLatin1String("0"))
            return false;
    }
    if (value.isDouble() && (value.toDouble() == 0 || value.toDouble() == 1))
        return value.toDouble() == 1;
    throw fault(key, QStringLiteral("is not true or false"));
}

QJsonObject Params::object(const char* key) const
{
    const QJsonValue value = required(key);
    if (!value.isObject())
        throw fault(key, QStringLiteral("is not an object"));
    return value.toObject();
}

} // namespace TWB::Service
