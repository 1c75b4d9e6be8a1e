#pragma once

#include "wizard/page_base.h"

#include <QMap>

class QCheckBox;
class QComboBox;
class QDateTimeEdit;
class QRadioButton;
class QSpinBox;

namespace TWB::GUI {

class FrequencyBase;

/// When the plan runs: never by itself, once at a date, or repeatedly; and how long it may run.
class TWBCONSOLE_EXPORT PlanWizardBase::PageSchedule : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageSchedule)
public:
    /// True when the schedule is enabled, whatever the name says.
    static const char* FieldScheduleEnable;
    static const char* FieldUseSpecificDate;
    static const char* FieldSpecificDateValue;
    static const char* FieldUseRecurring;
    static const char* FieldFrequencyType;
    static const char* FieldRunMissedPlan;
    static const char* FieldStopAutoEnable;
    static const char* FieldStopAutoHoursValue;
    static const char* FieldStopAutoMinutesValue;

    explicit PageSchedule(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    bool validatePage() override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

    /// The frequency widget under a key: 0 daily, 1 weekly, 2 monthly.
    FrequencyBase* frequency(int key) const { return frequencies.value(key); }

protected:
    /// Page 5 where the licence allows notifications, the summary (6) otherwise.
    int notificationOrSummary() const;

    QMap<int, FrequencyBase*> frequencies; // owned by parent-child
};

} // namespace TWB::GUI
