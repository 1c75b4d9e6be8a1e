#pragma once

#include "wizard/frequency_daily.h"

#include <QStringList>

class QComboBox;

namespace TWB::GUI {

/// Runs on a day of the month, or on a weekday of a week of the month, every so many months.
class TWBCONSOLE_EXPORT FrequencyMonthly : public FrequencyDaily
{
    Q_OBJECT
    Q_DISABLE_COPY(FrequencyMonthly)
public:
    static const char* Name;
    static const char* Prefix;
    static const char* FieldOccurrenceType;
    static const char* FieldDay;
    static const char* FieldRepeatEvery;
    static const char* FieldFrom;

    /// "Day of Month", "First", "Second", "Third", "Fourth", "Penultimate", "Last", translated.
    static QStringList OccurrenceType();

    FrequencyMonthly(Type type, PlanWizardBase::PageBase* page, QWidget* parent = nullptr);

    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;
    bool validate() override;

    /// The name of one of the monthly fields: "Full_" in front for the full schedule.
    QString fieldName(const char* name) const;

public Q_SLOTS:
    /// Offers the days 1 to 31 for "Day of Month", the weekdays for the others.
    void onOccurrenceChange(int index);

private:
    QComboBox* m_day = nullptr; // owned by parent-child
};

} // namespace TWB::GUI
