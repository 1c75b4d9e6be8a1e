#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QString>

namespace TWB::Service {

/// Reading what restic writes: its JSON lines and times, and the failures its messages name.
class ResticOutput final
{
public:
    /// One JSON object line, or an empty object for anything else.
    static QJsonObject object(const QByteArray& line);
    /// restic's RFC 3339 times, with up to nine digits of fractions, in UTC.
    static QDateTime time(const QString& text);

    /// restic found no repository at the location.
    static bool noRepository(const QString& error);
    /// The repository does not open with the password.
    static bool wrongPassword(const QString& error);
    /// Another process holds a lock on the repository.
    static bool locked(const QString& error);
    /// A failure text for people: restic's own, without "Fatal:" and the hint about the location.
    static QString reason(const QString& error, int exitCode);
};

} // namespace TWB::Service
