#include "platform/utility/transform.h"

#include <QCoreApplication>
#include <QLocale>

#include <cmath>

namespace SHARED::functions::help::transform {

QString from_byte_to_norm(double bytes)
{
    if (std::isnan(bytes) || std::isinf(bytes))
        return QCoreApplication::translate("transform", "N/A");
    const QString sign = bytes < 0 ? QStringLiteral("-") : QString();
    double value = std::fabs(bytes);
    const QLocale locale;
    if (value < 1024.0 - 0.5)
        return sign
            + QCoreApplication::translate("transform", "%1 B").arg(locale.toString(qint64(std::llround(value))));

    const char* const units[] = {QT_TRANSLATE_NOOP("transform", "KB"), QT_TRANSLATE_NOOP("transform", "MB"),
        QT_TRANSLATE_NOOP("transform", "GB"), QT_TRANSLATE_NOOP("transform", "TB"),
        QT_TRANSLATE_NOOP("transform", "PB"), QT_TRANSLATE_NOOP("transform", "EB"),
        QT_TRANSLATE_NOOP("transform", "ZB"), QT_TRANSLATE_NOOP("transform", "YB")};
    const int last = int(sizeof(units) / sizeof(units[0])) - 1;
    int unit = -1;
    int decimals = 1;
    do {
        value /= 1024.0;
        ++unit;
        decimals = value < 99.95 ? 1 : 0;
        // Step up when the shown figure would round to 1024 of this unit.
    } while (unit < last && value >= (decimals ? 1023.95 : 1023.5));
    return sign
        + QStringLiteral("%1 %2").arg(
            locale.toString(value, 'f', decimals), QCoreApplication::translate("transform", units[unit]));
}

} // namespace SHARED::functions::help::transform
