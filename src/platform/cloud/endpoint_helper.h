#pragma once

#include "platform/twbplatform_export.h"

#include <QPair>
#include <QString>

namespace TWL::Utitlity {

/// Reads an endpoint as a user types it: a host, host:port, or a URL with "http://" or "https://", with
/// or without a path. The scheme follows the SSL flag; a typed scheme sets the flag.
class TWBPLATFORM_EXPORT EndpointHelper final
{
public:
    EndpointHelper(const QString& endpoint, bool useSsl);

    bool hasError() const { return !m_error.isEmpty(); }
    QString lastErrorMessage() const { return m_error; }
    /// "https://host[:port][/path]" or "http://...", without a trailing "/"; empty on error.
    QString endpointWithScheme() const;
    bool useSsl() const { return m_useSsl; }
    void setUseSsl(bool useSsl) { m_useSsl = useSsl; }

    /// The text without its scheme and trailing "/".
    static QString toEndpoint(const QString& endpoint);
    /// The text with the scheme of the flag in place of any typed one.
    static QString toEndpointWithScheme(const QString& endpoint, bool useSsl);
    /// The endpoint without scheme, and the scheme ("http" or "https"; empty when none was typed).
    static QPair<QString, QString> toPair(const QString& endpoint);

private:
    QString m_endpoint; // without scheme
    bool m_useSsl;
    QString m_error;
};

} // namespace TWL::Utitlity

namespace TWL::Utility {

class TWBPLATFORM_EXPORT StringFilters final
{
public:
    /// The prefix without the characters a backup prefix may not hold: anything but letters, digits,
    /// "-", "_" and "."; a leading "." is dropped too.
    static QString prefixFilter(const QString& prefix);
};

} // namespace TWL::Utility
