#pragma once

#include <QDateTime>

namespace TWB::Info::Plan {
class Schedule;
}

namespace TWB::Service {

class LocalOffsets;

/// When a schedule next fires. Times of day and week days are the machine's local time, as the
/// user set them in the wizard; results are in UTC.
class NextRun final
{
public:
    /// The first time the schedule fires strictly after `after`, or an invalid time when it never
    /// fires again (disabled, or a specific date that has passed).
    ///
    /// Recurring schedules fire on the days their frequency picks: every day, the checked week
    /// days, the n-th (or penultimate, or last) week day of a month, or a day of the month, which
    /// a short month clamps to its last day. Monthly schedules fire in every n-th month counted
    /// from their start date, and never before it. On such a day they fire at "occurs at", or every
    /// period minutes from the interval's start to its end.
    static QDateTime after(const TWB::Info::Plan::Schedule& schedule, const QDateTime& after);
    /// The same, with the local clock's offsets kept across the calls of one pass.
    static QDateTime after(const TWB::Info::Plan::Schedule& schedule, const QDateTime& after, LocalOffsets& offsets);

    /// How far ahead a search for the next day goes before it gives up: four years, enough for
    /// "the last Sunday of every twelfth month" and for a February 29th.
    static constexpr int searchDays() { return 4 * 366; }
};

} // namespace TWB::Service
