#pragma once

#include "platform/twbplatform_export.h"

#include <QBitArray>
#include <QDate>
#include <QDateTime>
#include <QTime>

namespace TWB::Info::Plan {

/// When a plan runs: once at a specific date, or recurring daily, weekly or monthly.
class TWBPLATFORM_EXPORT Schedule final
{
public:
    enum Type : int { SpecificDate = 0, Recurring = 1 };
    enum FrequencyType : int { Daily = 0, Weekly = 1, MonthlyByWeekNumber = 2, MonthlyByDayOfMonth = 3 };
    enum WeekNumber : int { First = 0, Second = 1, Third = 2, Fourth = 3, Penultimate = 4, Last = 5 };

    /// The repeat within a day: every `period` minutes from `start` to `end`.
    struct OccursEvery
    {
        QTime start;
        QTime end;
        int period = 0;
        bool operator==(const OccursEvery& o) const { return start == o.start && end == o.end && period == o.period; }
    };
    /// Monthly by week number: the `day` (1 Monday to 7 Sunday) of the `week` of the month.
    struct MonthlyFrequency
    {
        WeekNumber week = First;
        int day = 1;
        bool operator==(const MonthlyFrequency& o) const { return week == o.week && day == o.day; }
    };
    /// Every `months` months from `from`.
    struct MonthRepeat
    {
        int months = 1;
        QDate from;
        bool operator==(const MonthRepeat& o) const { return months == o.months && from == o.from; }
    };

    Schedule();
    // The source must be a modifiable object: that is how the wizard pages hand copies around.
    Schedule(Schedule& other);
    Schedule& operator=(Schedule& other);

    bool isEnable() const { return m_enable; }
    void setEnable(bool enable) { m_enable = enable; }
    Type type() const { return m_type; }
    void setType(Type type) { m_type = type; }
    FrequencyType frequencyType() const { return m_frequencyType; }
    void setFrequencyType(FrequencyType type) { m_frequencyType = type; }
    QDateTime specificDate() const { return m_specificDate; }
    void setSpecificDate(const QDateTime& date) { m_specificDate = date; }
    QTime occursAt() const { return m_occursAt; }
    void setOccursAt(const QTime& time) { m_occursAt = time; }
    OccursEvery occursEvery() const { return m_occursEvery; }
    void setOccursEvery(int period, const QTime& start, const QTime& end) { m_occursEvery = {start, end, period}; }
    bool dailyRecurrence() const { return m_dailyRecurrence; }
    void setDailyRecurrence(bool recurrence) { m_dailyRecurrence = recurrence; }
    /// Seven bits, Monday first.
    QBitArray weeklyFrequency() const { return m_weeklyFrequency; }
    void setWeeklyFrequency(const QBitArray& days) { m_weeklyFrequency = days; }
    MonthlyFrequency monthlyFrequency() const { return m_monthlyFrequency; }
    void setMonthlyFrequency(WeekNumber week, int day) { m_monthlyFrequency = {week, day}; }
    int dayOfMonthFrequency() const { return m_dayOfMonth; }
    void setDayOfMonthFrequency(int day) { m_dayOfMonth = day; }
    MonthRepeat monthRepeat() const { return m_monthRepeat; }
    void setMonthRepeat(int months, const QDate& from) { m_monthRepeat = {months, from}; }
    /// Seconds a run may last; 0 means no limit.
    unsigned long long stopAfter() const { return m_stopAfter; }
    void setStopAfter(unsigned long long seconds) { m_stopAfter = seconds; }

    bool operator==(const Schedule& other) const;
    bool operator!=(const Schedule& other) const { return !(*this == other); }

private:
    bool m_enable = false;
    Type m_type = Recurring;
    FrequencyType m_frequencyType = Daily;
    QDateTime m_specificDate;
    QTime m_occursAt;
    OccursEvery m_occursEvery;
    bool m_dailyRecurrence = false;
    QBitArray m_weeklyFrequency;
    MonthlyFrequency m_monthlyFrequency;
    int m_dayOfMonth = 1;
    MonthRepeat m_monthRepeat;
    unsigned long long m_stopAfter = 0;
};

} // namespace TWB::Info::Plan
