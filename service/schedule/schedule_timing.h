#pragma once

#include <QString>

namespace TWB::Info::Plan {
class Base;
class Schedule;
} // namespace TWB::Info::Plan

namespace TWB::Service {

/// What the scheduler needs of a plan, in a short text the store keeps beside the plan's document:
/// whether a missed run still runs, the schedule and the full-backup schedule. A pass over
/// thousands of plans then reads and deciphers no document, and plans that share a schedule share
/// the work of its next run.
struct ScheduleTiming
{
    bool runMissed = false;
    QString schedule; // the schedule's short text
    QString full; // the full-backup schedule's, empty for plans without one

    /// The timing text of a plan.
    static QString of(const TWB::Info::Plan::Base& plan);
    /// Splits a timing text; false when it is empty or not of this form.
    static bool read(const QString& text, ScheduleTiming* timing);

    /// A schedule's short text, and back. Everything its next runs depend on survives the trip.
    static QString scheduleText(const TWB::Info::Plan::Schedule& schedule);
    static bool readSchedule(const QString& text, TWB::Info::Plan::Schedule* schedule);
};

} // namespace TWB::Service
