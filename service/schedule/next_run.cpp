#include "service/schedule/next_run.h"

#include "platform/plan/schedule.h"
#include "service/schedule/local_offsets.h"

#include <QList>
#include <QTime>

namespace TWB::Service {

using TWB::Info::Plan::Schedule;

namespace {

// The n-th (1-based) `weekday` of the month of `date`, or the penultimate (-2) or last (-1) one.
QDate weekdayOfMonth(const QDate& date, int weekday, int nth)
{
    QList<QDate> days;
    for (QDate day(date.year(), date.month(), 1); day.month() == date.month(); day = day.addDays(1)) {
        if (day.dayOfWeek() == weekday)
            days << day;
    }
    if (nth > 0)
        return nth <= days.size() ? days.at(nth - 1) : QDate();
    return -nth <= days.size() ? days.at(days.size() + nth) : QDate();
}

bool monthAllowed(const Schedule& schedule, const QDate& date)
{
    const Schedule::MonthRepeat repeat = schedule.monthRepeat();
    if (!repeat.from.isValid())
        return true;
    if (date < repeat.from)
        return false;
    const int months = (date.year() - repeat.from.year()) * 12 + date.month() - repeat.from.month();
    return repeat.months <= 1 || months % repeat.months == 0;
}

bool dayAllowed(const Schedule& schedule, const QDate& date)
{
    switch (schedule.frequencyType()) {
    case Schedule::Daily:
        return true;
    case Schedule::Weekly: {
        const QBitArray days = schedule.weeklyFrequency();
        const int bit = date.dayOfWeek() - 1; // Monday is bit 0
        return bit < days.size() && days.testBit(bit);
    }
    case Schedule::MonthlyByWeekNumber: {
        if (!monthAllowed(schedule, date))
            return false;
        const Schedule::MonthlyFrequency when = schedule.monthlyFrequency();
        int nth = 0;
        switch (when.week) {
        case Schedule::First:
        case Schedule::Second:
        case Schedule::Third:
        case Schedule::Fourth:
            nth = int(when.week) + 1;
            break;
        case Schedule::Penultimate:
            nth = -2;
            break;
        case Schedule::Last:
            nth = -1;
            break;
        }
        return weekdayOfMonth(date, when.day, nth) == date;
    }
    case Schedule::MonthlyByDayOfMonth: {
        if (!monthAllowed(schedule, date))
            return false;
        const int wanted = qBound(1, schedule.dayOfMonthFrequency(), 31);
        return date.day() == qMin(wanted, date.daysInMonth());
    }
    }
    return false;
}

// The first moment at which the local clock shows `time` on `date`, or an invalid time when it
// never does. Worked out from the offsets around it rather than left to mktime(), which resolves a
// time shown twice by whatever it saw last.
QDateTime firstLocalMoment(const QDate& date, const QTime& time, LocalOffsets& offsets)
{
    const QDateTime wall(date, time, Qt::UTC);
    const qint64 wallMs = wall.toMSecsSinceEpoch();
    QDateTime first;
    qint64 tried = -1;
    for (const qint64 probe : {wallMs - 12 * 3600 * 1000LL, wallMs + 12 * 3600 * 1000LL}) {
        const qint64 candidateMs = wallMs - offsets.at(probe);
        // Most days have one offset: the second probe then names the same moment.
        if (candidateMs == tried)
            continue;
        tried = candidateMs;
        if (candidateMs - wallMs + offsets.at(candidateMs) != 0)
            continue;
        const QDateTime candidate = QDateTime::fromMSecsSinceEpoch(candidateMs, Qt::UTC);
        if (!first.isValid() || candidate < first)
            first = candidate;
    }
    return first;
}

// The moment a local time of day falls on. A time the clock skips when summer time begins falls
// on the first moment after the skip; a time the clock shows twice in autumn counts at its first.
QDateTime localMoment(const QDate& date, const QTime& time, LocalOffsets& offsets)
{
    const QDateTime at = firstLocalMoment(date, time, offsets);
    if (at.isValid())
        return at;
    for (int minutes = 1; minutes <= 24 * 60; ++minutes) {
        const int secs = time.msecsSinceStartOfDay() / 1000 + minutes * 60;
        if (secs >= 24 * 3600)
            break;
        const QDateTime later = firstLocalMoment(date, QTime::fromMSecsSinceStartOfDay(secs * 1000), offsets);
        if (later.isValid())
            return later;
    }
    return QDateTime();
}

// A window that ends at an earlier time of day than it starts runs over midnight: from its start
// on one day to its end on the next.
bool overnight(const Schedule& schedule)
{
    const Schedule::OccursEvery every = schedule.occursEvery();
    return schedule.dailyRecurrence() && every.start.isValid() && every.end.isValid() && every.end < every.start;
}

// The first time of the day `date` at which the schedule fires after `after`, if any. Repeats
// within a day follow the clock on the wall: every 90 minutes from 00:00 is 00:00, 01:30, 03:00,
// whatever the clock did in between. With `tail`, the slots on `date` of an overnight window that
// began the day before.
// `afterMs` is `after` as an instant: comparing with a local time converts it again each time.
QDateTime firstOnDay(const Schedule& schedule, const QDate& date, const QDateTime& after, qint64 afterMs,
    LocalOffsets& offsets, bool tail = false)
{
    if (!schedule.dailyRecurrence()) {
        const QDateTime at
            = localMoment(date, schedule.occursAt().isValid() ? schedule.occursAt() : QTime(0, 0), offsets);
        return at.isValid() && at.toMSecsSinceEpoch() > afterMs ? at : QDateTime();
    }
    const Schedule::OccursEvery every = schedule.occursEvery();
    if (every.period <= 0 || !every.start.isValid())
        return QDateTime();
    const QTime end = every.end.isValid() ? every.end : QTime(23, 59, 59);
    const int periodSecs = every.period * 60;
    const int day = 24 * 3600;
    const int startSecs = every.start.msecsSinceStartOfDay() / 1000;
    // Seconds from the start of the day the window began; an overnight window ends on the next.
    const int endSecs = end.msecsSinceStartOfDay() / 1000 + (overnight(schedule) ? day : 0);
    int secs = startSecs;
    int from = 0; // seconds of the window's first day before `date`
    int limit = qMin(endSecs, day - 1);
    if (tail) {
        from = day;
        // The first slot of the window that falls on the next day.
        secs = startSecs + (day - startSecs + periodSecs - 1) / periodSecs * periodSecs;
        limit = endSecs;
    }
    // Start a slot before the one `after` falls in rather than walking every slot of the day.
    if (after.date() == date) {
        const int afterSecs = after.time().msecsSinceStartOfDay() / 1000 + from;
        if (afterSecs > secs)
            secs += qMax(0, (afterSecs - secs) / periodSecs - 1) * periodSecs;
    }
    for (; secs <= limit; secs += periodSecs) {
        const QDateTime at = localMoment(date, QTime::fromMSecsSinceStartOfDay((secs - from) * 1000), offsets);
        if (at.isValid() && at.toMSecsSinceEpoch() > afterMs)
            return at;
    }
    return QDateTime();
}

} // namespace

QDateTime NextRun::after(const Schedule& schedule, const QDateTime& after)
{
    LocalOffsets offsets;
    return NextRun::after(schedule, after, offsets);
}

QDateTime NextRun::after(const Schedule& schedule, const QDateTime& after, LocalOffsets& offsets)
{
    if (!schedule.isEnable())
        return QDateTime();
    const qint64 afterMs = after.toMSecsSinceEpoch();
    // The wall clock's date and time at `after`; only those are read from it.
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(afterMs + offsets.at(afterMs), Qt::UTC);
    if (schedule.type() == Schedule::SpecificDate) {
        // The store keeps whole seconds: a due time with milliseconds would come back due again.
        QDateTime at = schedule.specificDate();
        at = at.addMSecs(-at.time().msec());
        return at.isValid() && at > after ? at.toUTC() : QDateTime();
    }
    const bool acrossMidnight = overnight(schedule);
    for (int offset = 0; offset <= searchDays(); ++offset) {
        const QDate day = local.date().addDays(offset);
        // The early hours of a day belong to a window that began the day before.
        if (acrossMidnight && dayAllowed(schedule, day.addDays(-1))) {
            const QDateTime at = firstOnDay(schedule, day, local, afterMs, offsets, true);
            if (at.isValid())
                return at.toUTC();
        }
        if (!dayAllowed(schedule, day))
            continue;
        const QDateTime at = firstOnDay(schedule, day, local, afterMs, offsets);
        if (at.isValid())
            return at.toUTC();
    }
    return QDateTime();
}

} // namespace TWB::Service
