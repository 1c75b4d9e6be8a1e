#include "platform/plan/schedule.h"

namespace TWB::Info::Plan {

Schedule::Schedule()
    : m_occursAt(0, 0)
    , m_occursEvery {QTime(0, 0), QTime(23, 59), 60}
    , m_weeklyFrequency(7, false)
{ }

Schedule::Schedule(Schedule& other) = default;

Schedule& Schedule::operator=(Schedule& other) = default;

bool Schedule::operator==(const Schedule& o) const
{
    return m_enable == o.m_enable && m_type == o.m_type && m_frequencyType == o.m_frequencyType
        && m_specificDate == o.m_specificDate && m_occursAt == o.m_occursAt && m_occursEvery == o.m_occursEvery
        && m_dailyRecurrence == o.m_dailyRecurrence && m_weeklyFrequency == o.m_weeklyFrequency
        && m_monthlyFrequency == o.m_monthlyFrequency && m_dayOfMonth == o.m_dayOfMonth
        && m_monthRepeat == o.m_monthRepeat && m_stopAfter == o.m_stopAfter;
}

} // namespace TWB::Info::Plan
