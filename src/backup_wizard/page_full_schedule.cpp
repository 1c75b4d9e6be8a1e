#include "backup_wizard/page_full_schedule.h"

#include "frame/license_restrictions.h"
#include "platform/plan/backup.h"
#include "widgets/check_box.h"
#include "wizard/schedule_parts_p.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSpinBox>
#include <QVBoxLayout>

namespace TWB::GUI {

using TWB::Info::Plan::Schedule;

const char* BackupPlanEditWizard::PageFullSchedule::FieldFullScheduleEnable = "Field_FullScheduleEnable";
const char* BackupPlanEditWizard::PageFullSchedule::FieldFullScheduleFrequencyType = "Field_FullScheduleFrequencyType";
const char* BackupPlanEditWizard::PageFullSchedule::FieldFullScheduleRunIsModified = "Field_FullScheduleRunIsModified";
const char* BackupPlanEditWizard::PageFullSchedule::FieldFullScheduleRunIsModifiedValue
    = "Field_FullScheduleRunIsModifiedValue";
const char* BackupPlanEditWizard::PageFullSchedule::FieldFullShceduleStopAutoEnable
    = "Field_FullShceduleStopAutoEnable";
const char* BackupPlanEditWizard::PageFullSchedule::FieldFullShceduleStopAutoHoursValue
    = "Field_FullShceduleStopAutoHoursValue";
const char* BackupPlanEditWizard::PageFullSchedule::FieldFullShceduleStopAutoMinutesValue
    = "Field_FullShceduleMinutesValue";

namespace {
const int prePostActionPage = 107;
const int notificationPage = 5;
const int summaryPage = 6;
} // namespace

BackupPlanEditWizard::PageFullSchedule::PageFullSchedule(QWidget* parent)
    : PageBase(tr("Full Schedule"), parent)
{
    setSubTitle(tr("Specify full backup schedule options"));

    auto* enable = new CheckBox(
        QStringLiteral("<table><tr><td>%1</td></tr><tr><td><small><b>%2</b> %3</small></td></tr></table>")
            .arg(tr("Schedule Full Backup"), tr("Note:"),
                tr("It is strongly recommended to run regular full backup when using block level backup. Otherwise "
                   "you will not be able to apply retention policy for old versions.")),
        this);
    // The note wraps rather than widening the whole wizard.
    enable->label()->setWordWrap(true);
    auto* scheduleBox = new QWidget(this);
    scheduleBox->setEnabled(false);
    connect(enable, &QCheckBox::toggled, scheduleBox, &QWidget::setEnabled);

    auto* frequencyLabel = new QLabel(tr("Recurring. Frequency Type:"), scheduleBox);
    auto* frequencyType = new QComboBox(scheduleBox);
    frequencyType->addItems({tr("Daily"), tr("Weekly"), tr("Monthly")});
    auto* frequencyBox = new QWidget(scheduleBox);
    frequencies = ScheduleParts::addFrequencies(FrequencyBase::Full, this, frequencyBox, frequencyType);

    auto* modified = new QCheckBox(tr("Run full if previous backup has changed more than:"), this);
    auto* modifiedValue = new QSpinBox(this);
    modifiedValue->setMinimum(10);
    modifiedValue->setValue(50);
    modifiedValue->setEnabled(false);
    auto* modifiedLabel = new QLabel(tr("% last full"), this);
    connect(modified, &QCheckBox::toggled, modifiedValue, &QWidget::setEnabled);

    const ScheduleParts::StopControls stop = ScheduleParts::addStopControls(this);

    auto* scheduleLayout = new QGridLayout(scheduleBox);
    scheduleLayout->setContentsMargins(20, 0, 0, 0);
    scheduleLayout->addWidget(frequencyLabel, 0, 0);
    scheduleLayout->addWidget(frequencyType, 0, 1);
    scheduleLayout->addWidget(frequencyBox, 1, 0, 1, 3);
    scheduleLayout->setColumnStretch(2, 1);

    auto* modifiedRow = new QHBoxLayout;
    modifiedRow->addWidget(modified);
    modifiedRow->addWidget(modifiedValue);
    modifiedRow->addWidget(modifiedLabel);
    modifiedRow->addStretch(1);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(enable);
    layout->addWidget(scheduleBox);
    layout->addLayout(modifiedRow);
    layout->addLayout(stop.row);
    layout->addStretch(1);

    registerField(QLatin1String(FieldFullScheduleEnable), enable);
    registerField(QLatin1String(FieldFullScheduleFrequencyType), frequencyType);
    registerField(QLatin1String(FieldFullScheduleRunIsModified), modified);
    registerField(QLatin1String(FieldFullScheduleRunIsModifiedValue), modifiedValue);
    registerField(QLatin1String(FieldFullShceduleStopAutoEnable), stop.check);
    registerField(QLatin1String(FieldFullShceduleStopAutoHoursValue), stop.hours);
    registerField(QLatin1String(FieldFullShceduleStopAutoMinutesValue), stop.minutes);

    connect(enable, &QCheckBox::toggled, this, &PageFullSchedule::completeChanged);
    connect(frequencyType, qOverload<int>(&QComboBox::currentIndexChanged), this, &PageFullSchedule::completeChanged);
    connect(frequencies.value(1), &FrequencyBase::changed, this, &PageFullSchedule::completeChanged);
    connect(stop.check, &QCheckBox::toggled, this, &PageFullSchedule::completeChanged);
    connect(stop.hours, qOverload<int>(&QSpinBox::valueChanged), this, &PageFullSchedule::completeChanged);
    connect(stop.minutes, qOverload<int>(&QSpinBox::valueChanged), this, &PageFullSchedule::completeChanged);
}

FrequencyBase* BackupPlanEditWizard::PageFullSchedule::selected() const
{
    return frequencies.value(field(QLatin1String(FieldFullScheduleFrequencyType)).toInt());
}

int BackupPlanEditWizard::PageFullSchedule::nextId() const
{
    if (planType() == 1 && License::LicenseRestrictions::isPrePostActionsAvailable())
        return prePostActionPage;
    return License::LicenseRestrictions::isNotificationsAvailable() ? notificationPage : summaryPage;
}

bool BackupPlanEditWizard::PageFullSchedule::isComplete() const
{
    if (field(QLatin1String(FieldFullScheduleEnable)).toBool()
        && field(QLatin1String(FieldFullScheduleFrequencyType)).toInt() == 1 && !frequencies.value(1)->validate())
        return false;
    if (field(QLatin1String(FieldFullShceduleStopAutoEnable)).toBool()
        && field(QLatin1String(FieldFullShceduleStopAutoHoursValue)).toInt() == 0
        && field(QLatin1String(FieldFullShceduleStopAutoMinutesValue)).toInt() == 0)
        return false;
    return true;
}

bool BackupPlanEditWizard::PageFullSchedule::validatePage()
{
    if (!field(QLatin1String(FieldFullScheduleEnable)).toBool())
        return true;
    FrequencyBase* widget = selected();
    return widget ? widget->validate() : true;
}

QString BackupPlanEditWizard::PageFullSchedule::summary()
{
    QString rows = QStringLiteral("<tr><td>%1</td><td></td></tr>").arg(tr("Full Schedule:"));
    if (!field(QLatin1String(FieldFullScheduleEnable)).toBool()) {
        rows += QStringLiteral("<tr><td></td><td>%1</td></tr>").arg(tr("Not scheduled"));
    } else if (FrequencyBase* widget = selected()) {
        rows += widget->summary();
    }
    if (field(QLatin1String(FieldFullShceduleStopAutoEnable)).toBool()) {
        rows += ScheduleParts::stopSummary(field(QLatin1String(FieldFullShceduleStopAutoHoursValue)).toInt(),
            field(QLatin1String(FieldFullShceduleStopAutoMinutesValue)).toInt());
    }
    if (field(QLatin1String(FieldFullScheduleRunIsModified)).toBool()) {
        rows += QStringLiteral("<tr><td></td><td>%1 %2 %3</td></tr>")
                    .arg(tr("Run full if previous backup has changed more than:"),
                        QString::number(field(QLatin1String(FieldFullScheduleRunIsModifiedValue)).toInt()),
                        tr("% last full"));
    }
    return rows;
}

bool BackupPlanEditWizard::PageFullSchedule::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* backup = dynamic_cast<TWB::Info::Plan::Backup*>(plan);
    if (!backup || plan->subtype() != TWB::Info::Plan::Base::KindBackup)
        return true;
    Schedule& full = backup->forceFullSchedule();
    bool written = true;
    if (!field(QLatin1String(FieldFullScheduleEnable)).toBool()) {
        full.setEnable(false);
    } else {
        full.setEnable(true);
        full.setType(Schedule::Recurring);
        // The widget writes to the forced full schedule because of its type.
        if (FrequencyBase* widget = selected())
            written = widget->initPlan(plan);
    }
    backup->forceFullSchedule().setStopAfter(
        ScheduleParts::stopAfter(field(QLatin1String(FieldFullShceduleStopAutoEnable)).toBool(),
            field(QLatin1String(FieldFullShceduleStopAutoHoursValue)).toInt(),
            field(QLatin1String(FieldFullShceduleStopAutoMinutesValue)).toInt()));
    backup->setForceFullDiffSizeConditionEnable(field(QLatin1String(FieldFullScheduleRunIsModified)).toBool());
    backup->setForceFullDiffSizeCondition(
        static_cast<unsigned short>(field(QLatin1String(FieldFullScheduleRunIsModifiedValue)).toUInt()));
    return written;
}

bool BackupPlanEditWizard::PageFullSchedule::fromPlan(TWB::Info::Plan::Base* plan)
{
    auto* backup = dynamic_cast<TWB::Info::Plan::Backup*>(plan);
    if (!backup || plan->subtype() != TWB::Info::Plan::Base::KindBackup)
        return true;
    const Schedule& full = backup->forceFullSchedule();
    setField(QLatin1String(FieldFullScheduleEnable), full.isEnable());
    if (full.type() == Schedule::Recurring) {
        setField(QLatin1String(FieldFullScheduleFrequencyType), ScheduleParts::frequencyIndex(full.frequencyType()));
    }
    for (int key : {0, 1, 2}) {
        if (FrequencyBase* widget = frequencies.value(key))
            widget->fromPlan(plan);
    }
    ScheduleParts::loadStopAfter(this, full.stopAfter(), FieldFullShceduleStopAutoEnable,
        FieldFullShceduleStopAutoHoursValue, FieldFullShceduleStopAutoMinutesValue);
    setField(QLatin1String(FieldFullScheduleRunIsModified), backup->forceFullDiffSizeConditionEnable());
    setField(QLatin1String(FieldFullScheduleRunIsModifiedValue), int(backup->forceFullDiffSizeCondition()));
    return true;
}

} // namespace TWB::GUI
