#include "platform/utility/time_duraton.h"

#include <QCoreApplication>

namespace TWL::Utitlity {

namespace {

QString twoDigits(int value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

} // namespace

QString TimeDuraton::toString(int seconds)
{
    if (seconds < 0)
        return QCoreApplication::translate("TimeDuraton", "N/A");
    const int days = seconds / 86400;
    const int hours = seconds % 86400 / 3600;
    const int minutes = seconds % 3600 / 60;
    const int rest = seconds % 60;
    if (days > 0)
        return QCoreApplication::translate("TimeDuraton", "%1 d %2 h").arg(days).arg(twoDigits(hours));
    if (hours > 0)
        return QCoreApplication::translate("TimeDuraton", "%1 h %2 min").arg(hours).arg(twoDigits(minutes));
    if (minutes > 0)
        return QCoreApplication::translate("TimeDuraton", "%1 min %2 s").arg(minutes).arg(twoDigits(rest));
    return QCoreApplication::translate("TimeDuraton", "%1 s").arg(rest);
}

} // namespace TWL::Utitlity
