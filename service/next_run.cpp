#include "service/next_run.h"

#include "platform/plan/schedule.h"

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

// The first time of the day `date` at which the schedule fires after `after`, if any.
QDateTime firstOnDay(const Schedule& schedule, const QDate& date, const QDateTime& after)
{
    if (!schedule.dailyRecurrence()) {
        const QDateTime at(date, schedule.occursAt().isValid() ? schedule.occursAt() : QTime(0, 0), Qt::LocalTime);
        return at > after ? at : QDateTime();
    }
    const Schedule::OccursEvery every = schedule.occursEvery();
    if (every.period <= 0 || !every.start.isValid())
        return QDateTime();
    const QTime end = every.end.isValid() ? every.end : QTime(23, 59, 59);
    const int periodSecs = every.period * 60;
    const int startSecs = every.start.msecsSinceStartOfDay() / 1000;
    const int endSecs = end.msecsSinceStartOfDay() / 1000;
    // Jump straight to the first slot after `after` on that day rather than walking every slot.
    int slot = 0;
    const QDateTime first(date, every.start, Qt::LocalTime);
    if (first <= after) {
        const qint64 passed = first.secsTo(after);
        slot = int(passed / periodSecs) + 1;
    }
    const qint64 secs = qint64(startSecs) + qint64(slot) * periodSecs;
    if (secs > endSecs)
        return QDateTime();
    const QDateTime at = first.addSecs(qint64(slot) * periodSecs);
    return at.date() == date && at > after ? at : QDateTime();
}

} // namespace

QDateTime NextRun::after(const Schedule& schedule, const QDateTime& after)
{
    if (!schedule.isEnable())
        return QDateTime();
    const QDateTime local = after.toLocalTime();
    if (schedule.type() == Schedule::SpecificDate) {
        const QDateTime at = schedule.specificDate();
        return at.isValid() && at > after ? at.toUTC() : QDateTime();
    }
    for (int offset = 0; offset <= searchDays(); ++offset) {
        const QDate day = local.date().addDays(offset);
        if (!dayAllowed(schedule, day))
            continue;
        const QDateTime at = firstOnDay(schedule, day, local);
        if (at.isValid())
            return at.toUTC();
    }
    return QDateTime();
}

} // namespace TWB::Service
