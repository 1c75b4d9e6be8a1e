#include "wizard/page_schedule.h"

#include "frame/license_restrictions.h"
#include "platform/plan/base.h"
#include "wizard/schedule_parts_p.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <QWizard>

namespace TWB::GUI {

const char* PlanWizardBase::PageSchedule::FieldScheduleEnable = "Field_ScheduleDisabled";
const char* PlanWizardBase::PageSchedule::FieldUseSpecificDate = "Field_ScheduleUseSpecificDate";
const char* PlanWizardBase::PageSchedule::FieldSpecificDateValue = "Field_ScheduleSpecificDateValue";
const char* PlanWizardBase::PageSchedule::FieldUseRecurring = "Field_ScheduleUseRecurring";
const char* PlanWizardBase::PageSchedule::FieldFrequencyType = "Field_ScheduleFrequencyType";
const char* PlanWizardBase::PageSchedule::FieldRunMissedPlan = "Field_RunMissedPlan";
const char* PlanWizardBase::PageSchedule::FieldStopAutoEnable = "Field_StopAutoEnable";
const char* PlanWizardBase::PageSchedule::FieldStopAutoHoursValue = "Field_StopAutoHoursValue";
const char* PlanWizardBase::PageSchedule::FieldStopAutoMinutesValue = "Field_StopAutoMinutesValue";

namespace {

// Fields and values of the backup wizard that steer the walk after this page.
const char* const backupPlanTypeProperty = "Property_BackupPlanType";
const char* const fileBlockLevelField = "Field_UseFileDiffirentialBackup";
const char* const imageBlockLevelField = "Field_DiskImageUseBlockLevel";
const int backupKindFile = 0;
const int backupKindDiskImage = 1;
const int blockLevelPage = 104;
const int prePostActionPage = 107;
const int notificationPage = 5;
const int summaryPage = 6;

} // namespace

PlanWizardBase::PageSchedule::PageSchedule(QWidget* parent)
    : PageBase(tr("Schedule"), parent)
{
    setSubTitle(tr("Plan can be run manually or automatically by schedule"));

    auto* enable = new QCheckBox(tr("Enable schedule"), this);
    auto* scheduleBox = new QWidget(this);
    scheduleBox->setEnabled(false);
    connect(enable, &QCheckBox::toggled, scheduleBox, &QWidget::setEnabled);

    auto* specific = new QRadioButton(tr("Specific date:"), scheduleBox);
    auto* specificValue = new QDateTimeEdit(QDateTime::currentDateTime(), scheduleBox);
    specificValue->setCalendarPopup(true);
    specificValue->setEnabled(false);
    connect(specific, &QRadioButton::toggled, specificValue, &QWidget::setEnabled);

    auto* recurring = new QRadioButton(tr("Recurring. Frequency Type:"), scheduleBox);
    auto* frequencyType = new QComboBox(scheduleBox);
    frequencyType->addItems({tr("Daily"), tr("Weekly"), tr("Monthly")});
    frequencyType->setEnabled(false);
    auto* frequencyBox = new QWidget(scheduleBox);
    frequencyBox->setEnabled(false);
    connect(recurring, &QRadioButton::toggled, frequencyType, &QWidget::setEnabled);
    connect(recurring, &QRadioButton::toggled, frequencyBox, &QWidget::setEnabled);

    auto* group = new QButtonGroup(this);
    group->addButton(specific);
    group->addButton(recurring);

    frequencies = ScheduleParts::addFrequencies(FrequencyBase::Normal, this, frequencyBox, frequencyType);

    auto* runMissed = new QCheckBox(tr("Run missed scheduled plan immediately upon boot-up"), scheduleBox);

    const ScheduleParts::StopControls stop = ScheduleParts::addStopControls(this);

    auto* scheduleLayout = new QGridLayout(scheduleBox);
    scheduleLayout->setContentsMargins(20, 0, 0, 0);
    scheduleLayout->addWidget(specific, 0, 0);
    scheduleLayout->addWidget(specificValue, 0, 1);
    scheduleLayout->addWidget(recurring, 1, 0);
    scheduleLayout->addWidget(frequencyType, 1, 1);
    scheduleLayout->addWidget(frequencyBox, 2, 0, 1, 3);
    scheduleLayout->addWidget(runMissed, 3, 0, 1, 3);
    scheduleLayout->setColumnStretch(2, 1);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(enable);
    layout->addWidget(scheduleBox);
    layout->addLayout(stop.row);
    layout->addStretch(1);

    registerField(QLatin1String(FieldScheduleEnable), enable);
    registerField(QLatin1String(FieldUseSpecificDate), specific);
    registerField(QLatin1String(FieldSpecificDateValue), specificValue);
    registerField(QLatin1String(FieldUseRecurring), recurring);
    registerField(QLatin1String(FieldFrequencyType), frequencyType);
    registerField(QLatin1String(FieldRunMissedPlan), runMissed);
    registerField(QLatin1String(FieldStopAutoEnable), stop.check);
    registerField(QLatin1String(FieldStopAutoHoursValue), stop.hours);
    registerField(QLatin1String(FieldStopAutoMinutesValue), stop.minutes);

    connect(enable, &QCheckBox::clicked, this, &PageSchedule::completeChanged);
    connect(group, qOverload<QAbstractButton*>(&QButtonGroup::buttonClicked), this, &PageSchedule::completeChanged);
    connect(frequencyType, qOverload<int>(&QComboBox::currentIndexChanged), this, &PageSchedule::completeChanged);
    connect(frequencies.value(1), &FrequencyBase::changed, this, &PageSchedule::completeChanged);
    connect(stop.check, &QCheckBox::toggled, this, &PageSchedule::completeChanged);
    connect(stop.hours, qOverload<int>(&QSpinBox::valueChanged), this, &PageSchedule::completeChanged);
    connect(stop.minutes, qOverload<int>(&QSpinBox::valueChanged), this, &PageSchedule::completeChanged);
}

int PlanWizardBase::PageSchedule::notificationOrSummary() const
{
    return License::LicenseRestrictions::isNotificationsAvailable() ? notificationPage : summaryPage;
}

int PlanWizardBase::PageSchedule::nextId() const
{
    if (!wizard() || planType() != 1)
        return notificationOrSummary();
    const int kind = wizard()->property(backupPlanTypeProperty).toInt();
    bool blockLevel = false;
    if (kind == backupKindFile)
        blockLevel = wizard()->field(QLatin1String(fileBlockLevelField)).toBool();
    else if (kind == backupKindDiskImage)
        blockLevel = wizard()->field(QLatin1String(imageBlockLevelField)).toBool();
    else
        return notificationOrSummary();
    if (blockLevel)
        return blockLevelPage;
    if (License::LicenseRestrictions::isPrePostActionsAvailable())
        return prePostActionPage;
    return notificationOrSummary();
}

bool PlanWizardBase::PageSchedule::isComplete() const
{
    const bool enabled = field(QLatin1String(FieldScheduleEnable)).toBool();
    if (enabled && field(QLatin1String(FieldUseRecurring)).toBool()
        && field(QLatin1String(FieldFrequencyType)).toInt() == 1 && !frequencies.value(1)->validate())
        return false;
    if (field(QLatin1String(FieldStopAutoEnable)).toBool() && field(QLatin1String(FieldStopAutoHoursValue)).toInt() == 0
        && field(QLatin1String(FieldStopAutoMinutesValue)).toInt() == 0)
        return false;
    return true;
}

bool PlanWizardBase::PageSchedule::validatePage()
{
    if (!field(QLatin1String(FieldScheduleEnable)).toBool())
        return true;
    if (field(QLatin1String(FieldUseSpecificDate)).toBool()) {
        if (field(QLatin1String(FieldSpecificDateValue)).toDateTime() < QDateTime::currentDateTime()) {
            QMessageBox question(QMessageBox::Information, wizard() ? wizard()->windowTitle() : QString(),
                tr("The scheduled date is in the past. Do you want to continue?"), QMessageBox::Yes | QMessageBox::No,
                QApplication::activeWindow(), Qt::Sheet);
            return question.exec() != QMessageBox::No;
        }
        return true;
    }
    if (field(QLatin1String(FieldUseRecurring)).toBool()) {
        FrequencyBase* selected = frequencies.value(field(QLatin1String(FieldFrequencyType)).toInt());
        return selected ? selected->validate() : true;
    }
    return true;
}

QString PlanWizardBase::PageSchedule::summary()
{
    QString rows = QStringLiteral("<tr><td>%1</td><td></td></tr>").arg(tr("Schedule:"));
    if (!field(QLatin1String(FieldScheduleEnable)).toBool()) {
        rows += QStringLiteral("<tr><td></td><td>%1</td></tr>").arg(tr("Not scheduled"));
    } else {
        if (field(QLatin1String(FieldRunMissedPlan)).toBool())
            rows += QStringLiteral("<tr><td></td><td>%1</td></tr>").arg(tr("Run missed plan"));
        if (field(QLatin1String(FieldUseSpecificDate)).toBool()) {
            rows += QStringLiteral("<tr><td></td><td>%1 %2</td></tr>")
                        .arg(tr("Occurs on"),
                            QLocale::system().toString(
                                field(QLatin1String(FieldSpecificDateValue)).toDateTime(), QLocale::LongFormat));
        } else if (field(QLatin1String(FieldUseRecurring)).toBool()) {
            if (FrequencyBase* selected = frequencies.value(field(QLatin1String(FieldFrequencyType)).toInt()))
                rows += selected->summary();
        }
    }
    if (field(QLatin1String(FieldStopAutoEnable)).toBool()) {
        rows += ScheduleParts::stopSummary(field(QLatin1String(FieldStopAutoHoursValue)).toInt(),
            field(QLatin1String(FieldStopAutoMinutesValue)).toInt());
    }
    return rows;
}

bool PlanWizardBase::PageSchedule::initPlan(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return false;
    plan->setRunMissedPlan(field(QLatin1String(FieldRunMissedPlan)).toBool());
    TWB::Info::Plan::Schedule& schedule = plan->schedule();
    schedule.setStopAfter(ScheduleParts::stopAfter(field(QLatin1String(FieldStopAutoEnable)).toBool(),
        field(QLatin1String(FieldStopAutoHoursValue)).toInt(),
        field(QLatin1String(FieldStopAutoMinutesValue)).toInt()));

    if (!field(QLatin1String(FieldScheduleEnable)).toBool()) {
        schedule.setEnable(false);
        return true;
    }
    if (field(QLatin1String(FieldUseSpecificDate)).toBool()) {
        schedule.setEnable(true);
        schedule.setType(TWB::Info::Plan::Schedule::SpecificDate);
        QDateTime date = field(QLatin1String(FieldSpecificDateValue)).toDateTime();
        const QTime time = date.time();
        date.setTime(QTime(time.hour(), time.minute()));
        schedule.setSpecificDate(date);
    } else if (field(QLatin1String(FieldUseRecurring)).toBool()) {
        schedule.setEnable(true);
        schedule.setType(TWB::Info::Plan::Schedule::Recurring);
        if (FrequencyBase* selected = frequencies.value(field(QLatin1String(FieldFrequencyType)).toInt()))
            return selected->initPlan(plan);
    }
    return true;
}

bool PlanWizardBase::PageSchedule::fromPlan(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return false;
    const TWB::Info::Plan::Schedule& schedule = plan->schedule();
    // A plan that never had a date keeps the edit's own value: an edit cannot show "no date".
    if (schedule.specificDate().isValid())
        setField(QLatin1String(FieldSpecificDateValue), schedule.specificDate());
    if (schedule.type() == TWB::Info::Plan::Schedule::SpecificDate) {
        setField(QLatin1String(FieldUseSpecificDate), true);
    } else if (schedule.type() == TWB::Info::Plan::Schedule::Recurring) {
        setField(QLatin1String(FieldUseRecurring), true);
        setField(QLatin1String(FieldFrequencyType), ScheduleParts::frequencyIndex(schedule.frequencyType()));
    }
    setField(QLatin1String(FieldScheduleEnable), schedule.isEnable());
    for (int key : {0, 1, 2}) {
        if (FrequencyBase* widget = frequencies.value(key))
            widget->fromPlan(plan);
    }
    ScheduleParts::loadStopAfter(
        this, schedule.stopAfter(), FieldStopAutoEnable, FieldStopAutoHoursValue, FieldStopAutoMinutesValue);
    setField(QLatin1String(FieldRunMissedPlan), plan->runMuissedPlan());
    return true;
}

} // namespace TWB::GUI
