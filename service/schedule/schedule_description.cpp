#include "service/schedule/schedule_description.h"

#include "platform/plan/schedule.h"

#include <QLocale>
#include <QStringList>

namespace TWB::Service {

using TWB::Info::Plan::Schedule;

namespace {

const QLocale english(QLocale::English, QLocale::UnitedStates);

QString timeText(const QTime& time)
{
    return time.toString(QStringLiteral("HH:mm"));
}

QString timesOfDay(const Schedule& schedule)
{
    if (!schedule.dailyRecurrence())
        return QStringLiteral("at %1").arg(timeText(schedule.occursAt()));
    const Schedule::OccursEvery every = schedule.occursEvery();
    return QStringLiteral("every %1 minutes from %2 to %3")
        .arg(every.period)
        .arg(timeText(every.start), timeText(every.end));
}

QString monthRepeat(const Schedule& schedule)
{
    const int months = schedule.monthRepeat().months;
    return months > 1 ? QStringLiteral(", every %1 months").arg(months) : QString();
}

} // namespace

QString ScheduleDescription::text(const Schedule& schedule)
{
    if (!schedule.isEnable())
        return QStringLiteral("Not scheduled");
    if (schedule.type() == Schedule::SpecificDate) {
        const QDateTime at = schedule.specificDate().toLocalTime();
        return QStringLiteral("Once on %1").arg(at.toString(QStringLiteral("yyyy-MM-dd HH:mm")));
    }
    switch (schedule.frequencyType()) {
    case Schedule::Daily:
        return QStringLiteral("Daily %1").arg(timesOfDay(schedule));
    case Schedule::Weekly: {
        QStringList days;
        const QBitArray bits = schedule.weeklyFrequency();
        for (int i = 0; i < 7 && i < bits.size(); ++i) {
            if (bits.testBit(i))
                days << english.dayName(i + 1, QLocale::ShortFormat);
        }
        return QStringLiteral("Weekly on %1 %2")
            .arg(days.isEmpty() ? QStringLiteral("no day") : days.join(QStringLiteral(", ")), timesOfDay(schedule));
    }
    case Schedule::MonthlyByWeekNumber: {
        static const char* const weeks[] = {"first", "second", "third", "fourth", "penultimate", "last"};
        const Schedule::MonthlyFrequency when = schedule.monthlyFrequency();
        const int week = qBound(0, int(when.week), 5);
        return QStringLiteral("Monthly on the %1 %2 %3%4")
            .arg(QLatin1String(weeks[week]), english.dayName(qBound(1, when.day, 7)), timesOfDay(schedule),
                monthRepeat(schedule));
    }
    case Schedule::MonthlyByDayOfMonth:
        return QStringLiteral("Monthly on day %1 %2%3")
            .arg(schedule.dayOfMonthFrequency())
            .arg(timesOfDay(schedule), monthRepeat(schedule));
    }
    return QString();
}

} // namespace TWB::Service
