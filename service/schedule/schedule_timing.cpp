#include "service/schedule/schedule_timing.h"

#include "platform/plan/backup.h"
#include "platform/plan/base.h"
#include "platform/plan/schedule.h"

#include <QStringList>
#include <QVector>

namespace TWB::Service {

using TWB::Info::Plan::Schedule;

namespace {

// The form's version: a text of another one reads as unknown, and the plan is read in full.
const QString version = QStringLiteral("t1");
constexpr int fieldCount = 15;

QString timeText(const QTime& time)
{
    return QString::number(time.isValid() ? time.msecsSinceStartOfDay() : -1);
}

bool readTime(const QStringRef& text, QTime* time)
{
    bool ok = false;
    const int msecs = text.toInt(&ok);
    if (!ok || msecs < -1 || msecs >= 24 * 3600 * 1000)
        return false;
    *time = msecs < 0 ? QTime() : QTime::fromMSecsSinceStartOfDay(msecs);
    return true;
}

bool readInt(const QStringRef& text, int* value)
{
    bool ok = false;
    *value = text.toInt(&ok);
    return ok;
}

} // namespace

QString ScheduleTiming::of(const TWB::Info::Plan::Base& plan)
{
    const auto* backup = dynamic_cast<const TWB::Info::Plan::Backup*>(&plan);
    return version + QLatin1Char('|') + QLatin1Char(plan.runMuissedPlan() ? '1' : '0') + QLatin1Char('|')
        + scheduleText(plan.schedule()) + QLatin1Char('|')
        + (backup ? scheduleText(backup->forceFullSchedule()) : QString());
}

bool ScheduleTiming::read(const QString& text, ScheduleTiming* timing)
{
    const QVector<QStringRef> parts = text.splitRef(QLatin1Char('|'));
    if (parts.size() != 4 || parts.at(0) != version || parts.at(2).isEmpty()
        || (parts.at(1) != QLatin1String("0") && parts.at(1) != QLatin1String("1")))
        return false;
    timing->runMissed = parts.at(1) == QLatin1String("1");
    timing->schedule = parts.at(2).toString();
    timing->full = parts.at(3).toString();
    return true;
}

QString ScheduleTiming::scheduleText(const Schedule& schedule)
{
    const Schedule::OccursEvery every = schedule.occursEvery();
    const Schedule::MonthlyFrequency monthly = schedule.monthlyFrequency();
    const Schedule::MonthRepeat repeat = schedule.monthRepeat();
    QString days;
    const QBitArray weekly = schedule.weeklyFrequency();
    for (int bit = 0; bit < weekly.size(); ++bit)
        days.append(QLatin1Char(weekly.testBit(bit) ? '1' : '0'));
    // The date keeps its form: a local time stays local, so that it moves with the time zone as
    // the document's does.
    const QStringList fields = {QString::number(schedule.isEnable() ? 1 : 0), QString::number(int(schedule.type())),
        QString::number(int(schedule.frequencyType())),
        schedule.specificDate().isValid() ? schedule.specificDate().toString(Qt::ISODateWithMs) : QString(),
        timeText(schedule.occursAt()), timeText(every.start), timeText(every.end), QString::number(every.period),
        QString::number(schedule.dailyRecurrence() ? 1 : 0), days.isEmpty() ? QStringLiteral("-") : days,
        QString::number(int(monthly.week)), QString::number(monthly.day),
        QString::number(schedule.dayOfMonthFrequency()), QString::number(repeat.months),
        repeat.from.isValid() ? QString::number(repeat.from.toJulianDay()) : QString()};
    return fields.join(QLatin1Char(','));
}

bool ScheduleTiming::readSchedule(const QString& text, Schedule* schedule)
{
    const QVector<QStringRef> fields = text.splitRef(QLatin1Char(','));
    if (fields.size() != fieldCount)
        return false;
    int enable = 0;
    int type = 0;
    int frequency = 0;
    int period = 0;
    int daily = 0;
    int week = 0;
    int weekDay = 0;
    int dayOfMonth = 0;
    int months = 0;
    QTime occursAt;
    QTime start;
    QTime end;
    if (!readInt(fields.at(0), &enable) || !readInt(fields.at(1), &type) || !readInt(fields.at(2), &frequency)
        || !readTime(fields.at(4), &occursAt) || !readTime(fields.at(5), &start) || !readTime(fields.at(6), &end)
        || !readInt(fields.at(7), &period) || !readInt(fields.at(8), &daily) || !readInt(fields.at(10), &week)
        || !readInt(fields.at(11), &weekDay) || !readInt(fields.at(12), &dayOfMonth)
        || !readInt(fields.at(13), &months))
        return false;
    if (type < Schedule::SpecificDate || type > Schedule::Recurring || frequency < Schedule::Daily
        || frequency > Schedule::MonthlyByDayOfMonth || week < Schedule::First || week > Schedule::Last)
        return false;
    QDateTime specificDate;
    if (!fields.at(3).isEmpty()) {
        specificDate = QDateTime::fromString(fields.at(3).toString(), Qt::ISODateWithMs);
        if (!specificDate.isValid())
            return false;
    }
    QBitArray days;
    if (fields.at(9) != QLatin1String("-")) {
        days.resize(fields.at(9).size());
        for (int bit = 0; bit < days.size(); ++bit) {
            const QChar c = fields.at(9).at(bit);
            if (c != QLatin1Char('0') && c != QLatin1Char('1'))
                return false;
            days.setBit(bit, c == QLatin1Char('1'));
        }
    }
    QDate from;
    if (!fields.at(14).isEmpty()) {
        bool ok = false;
        from = QDate::fromJulianDay(fields.at(14).toLongLong(&ok));
        if (!ok || !from.isValid())
            return false;
    }
    schedule->setEnable(enable != 0);
    schedule->setType(Schedule::Type(type));
    schedule->setFrequencyType(Schedule::FrequencyType(frequency));
    schedule->setSpecificDate(specificDate);
    schedule->setOccursAt(occursAt);
    schedule->setOccursEvery(period, start, end);
    schedule->setDailyRecurrence(daily != 0);
    schedule->setWeeklyFrequency(days);
    schedule->setMonthlyFrequency(Schedule::WeekNumber(week), weekDay);
    schedule->setDayOfMonthFrequency(dayOfMonth);
    schedule->setMonthRepeat(months, from);
    return true;
}

} // namespace TWB::Service
