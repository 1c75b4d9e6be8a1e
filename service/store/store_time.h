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
        if (!time.isValid())
            return QString();
        const QDateTime utc = time.toUTC();
        const QDate d = utc.date();
        const QTime t = utc.time();
        return QString::asprintf(
            "%04d%02d%02d%02d%02d%02d", d.year(), d.month(), d.day(), t.hour(), t.minute(), t.second());
    }
    /// Read by hand rather than with QDateTime::fromString, which is slow enough to show in a list
    /// of thousands of plans.
    static QDateTime fromText(const QString& text)
    {
        if (text.size() != 14)
            return QDateTime();
        int parts[6] = {0, 0, 0, 0, 0, 0};
        const int widths[6] = {4, 2, 2, 2, 2, 2};
        int at = 0;
        for (int p = 0; p < 6; ++p) {
            for (int i = 0; i < widths[p]; ++i, ++at) {
                const int digit = text.at(at).unicode() - '0';
                if (digit < 0 || digit > 9)
                    return QDateTime();
                parts[p] = parts[p] * 10 + digit;
            }
        }
        const QDate date(parts[0], parts[1], parts[2]);
        const QTime time(parts[3], parts[4], parts[5]);
        return date.isValid() && time.isValid() ? QDateTime(date, time, Qt::UTC) : QDateTime();
    }
    /// ISO 8601 in UTC, the form of the plan table's times.
    static QString toIso(const QDateTime& time)
    {
        return time.isValid() ? time.toUTC().toString(Qt::ISODate) : QString();
    }
    static QString now() { return toText(QDateTime::currentDateTimeUtc()); }
};

} // namespace TWB::Service
