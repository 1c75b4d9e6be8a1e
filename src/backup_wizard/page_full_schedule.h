#pragma once

#include "backup_wizard/backup_plan_edit_wizard.h"
#include "wizard/page_base.h"

#include <QMap>

namespace TWB::GUI {

class FrequencyBase;

/// The second schedule of a block level plan, on which a full copy runs. Its frequency widgets are of
/// the type Full, so that their fields never meet those of the plan's own schedule.
class TWBCONSOLE_EXPORT BackupPlanEditWizard::PageFullSchedule : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageFullSchedule)
public:
    static const char* FieldFullScheduleEnable;
    static const char* FieldFullScheduleFrequencyType;
    static const char* FieldFullScheduleRunIsModified;
    static const char* FieldFullScheduleRunIsModifiedValue;
    static const char* FieldFullShceduleStopAutoEnable;
    static const char* FieldFullShceduleStopAutoHoursValue;
    static const char* FieldFullShceduleStopAutoMinutesValue;

    explicit PageFullSchedule(QWidget* parent = nullptr);

    int nextId() const override;
    bool isComplete() const override;
    bool validatePage() override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

    /// The frequency widget under a key: 0 daily, 1 weekly, 2 monthly.
    FrequencyBase* frequency(int key) const { return frequencies.value(key); }

private:
    FrequencyBase* selected() const;

    QMap<int, FrequencyBase*> frequencies; // owned by parent-child
};

} // namespace TWB::GUI
