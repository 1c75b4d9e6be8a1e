#pragma once

#include "wizard/frequency_daily.h"

#include <QStringList>

namespace TWB::GUI {

/// Runs on chosen days of the week, with a daily part of its own for the time of day.
class TWBCONSOLE_EXPORT FrequencyWeekly : public FrequencyDaily
{
    Q_OBJECT
    Q_DISABLE_COPY(FrequencyWeekly)
public:
    static const char* Name;
    static const char* Prefix;
    /// "Field_WeeklyDay_1" (Monday) to "Field_WeeklyDay_7" (Sunday).
    static const char* FieldDay_1;
    static const char* FieldDay_2;
    static const char* FieldDay_3;
    static const char* FieldDay_4;
    static const char* FieldDay_5;
    static const char* FieldDay_6;
    static const char* FieldDay_7;

    FrequencyWeekly(Type type, PlanWizardBase::PageBase* page, QWidget* parent = nullptr);

    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;
    /// At least one day is chosen.
    bool validate() override;

    /// The name of one of the weekly fields: "Full_" in front for the full schedule.
    QString fieldName(const char* name) const;

private:
    static const char* dayField(int day);
};

} // namespace TWB::GUI
