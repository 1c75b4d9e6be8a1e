#pragma once

#include <QString>

namespace TWB::Service {

/// Whether the machine runs on battery, as the kernel's power supplies tell it: a mains supply that
/// is online means AC; mains supplies that are all offline mean battery. A machine with no mains
/// supply at all, like a server or a container, counts as on AC.
class PowerSource final
{
public:
    /// The folder of the power supplies: `$TWB_POWER_SUPPLY_DIR`, else /sys/class/power_supply.
    static QString folder();
    /// Reads the supplies in `folder`: for each one its "type", and "online" for mains, a few bytes each.
    /// A mains supply whose "online" does not read is left out.
    static bool onBattery(const QString& folder = PowerSource::folder());
};

} // namespace TWB::Service
