#include "service/schedule/local_offsets.h"

#include <QDateTime>

namespace TWB::Service {

qint64 LocalOffsets::at(qint64 utcMs)
{
    constexpr qint64 quarterMs = 15 * 60 * 1000;
    const qint64 quarter = utcMs >= 0 ? utcMs / quarterMs : (utcMs - quarterMs + 1) / quarterMs;
    const auto known = m_known.constFind(quarter);
    if (known != m_known.constEnd())
        return known.value();
    // One conversion to local time: offsetFromUtc() of a local QDateTime converts back again.
    const QDateTime shown = QDateTime::fromMSecsSinceEpoch(utcMs, Qt::UTC).toLocalTime();
    const qint64 offset = QDateTime(shown.date(), shown.time(), Qt::UTC).toMSecsSinceEpoch() - utcMs;
    m_known.insert(quarter, offset);
    return offset;
}

} // namespace TWB::Service
