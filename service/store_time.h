#pragma once

#include <QDateTime>
#include <QString>

namespace TWB::Service {

/// The store's and the history's form of a time: UTC as "yyyyMMddhhmmss", which sorts as text.
class StoreTime final
{
public:
    static QString toText(const QDateTime& time)
    {
        return time.isValid() ? time.toUTC().toString(QStringLiteral("yyyyMMddhhmmss")) : QString();
    }
    static QDateTime fromText(const QString& text)
    {
        QDateTime time = QDateTime::fromString(text, QStringLiteral("yyyyMMddhhmmss"));
        time.setTimeSpec(Qt::UTC);
        return time;
    }
    /// ISO 8601 in UTC, the form of the plan table's times.
    static QString toIso(const QDateTime& time)
    {
        return time.isValid() ? time.toUTC().toString(Qt::ISODate) : QString();
    }
    static QString now() { return toText(QDateTime::currentDateTimeUtc()); }
};

} // namespace TWB::Service
