#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QUuid>

namespace TWB::Service {

/// Reads the params of one request. A missing or malformed parameter throws a sentence that
/// names the parameter and the command, which the router sends back as the failure text.
class Params final
{
public:
    Params(const QJsonObject& params, const QString& command)
        : m_params(params)
        , m_command(command)
    { }

    bool has(const char* key) const { return m_params.contains(QLatin1String(key)); }

    /// A string that must be there; it may be empty.
    QString string(const char* key) const;
    QString optionalString(const char* key, const QString& fallback = QString()) const;
    /// A string that must be there and hold more than blanks.
    QString nonEmptyString(const char* key) const;
    /// An identifier in any form QUuid reads, never the null one.
    QUuid uuid(const char* key) const;
    /// An identifier, or a null one when the key is absent or empty.
    QUuid optionalUuid(const char* key) const;
    /// A whole number in [minimum, maximum]; numbers written as strings are accepted too.
    qint64 integer(const char* key, qint64 minimum, qint64 maximum) const;
    qint64 optionalInteger(const char* key, qint64 fallback, qint64 minimum, qint64 maximum) const;
    bool optionalBool(const char* key, bool fallback) const;
    QJsonObject object(const char* key) const;

    /// The failure text for a parameter: Parameter "KEY" of COMMAND WHAT.
    QString fault(const char* key, const QString& what) const;

private:
    QJsonValue required(const char* key) const;

    QJsonObject m_params;
    QString m_command;
};

} // namespace TWB::Service
