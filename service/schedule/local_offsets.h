#pragma once

#include <QHash>
#include <QtGlobal>

namespace TWB::Service {

/// The local clock's offset from UTC at given instants, each quarter hour worked out once. Asking
/// the C library costs several microseconds a time (it checks the zone file on every call), and a
/// pass over thousands of plans asks about the same few hundred quarter hours again and again.
/// Clocks change their offset only at a quarter hour. Keep one for a pass, not longer: the machine's
/// zone may change between passes.
class LocalOffsets final
{
public:
    /// The offset in milliseconds: local time minus UTC at the instant.
    qint64 at(qint64 utcMs);

private:
    QHash<qint64, qint64> m_known;
};

} // namespace TWB::Service
