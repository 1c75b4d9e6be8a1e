#pragma once

#include <QString>

namespace TWB::Info::Plan {
class Schedule;
}

namespace TWB::Service {

/// The "Schedule" text of the plan table: one short English line, in the machine's local time.
class ScheduleDescription final
{
public:
    static QString text(const TWB::Info::Plan::Schedule& schedule);
};

} // namespace TWB::Service
