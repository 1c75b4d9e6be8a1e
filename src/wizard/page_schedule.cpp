#include "wizard/page_schedule.h"

#include "frame/license_restrictions.h"
#include "platform/plan/base.h"
#include "wizard/frequency_daily.h"
#include "wizard/frequency_monthly.h"
#include "wizard/frequency_weekly.h"

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
#include <QStackedLayout>
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

    auto* stack = new QStackedLayout(frequencyBox);
    frequencies.insert(0, new FrequencyDaily(FrequencyBase::Normal, this, frequencyBox));
    frequencies.insert(1, new FrequencyWeekly(FrequencyBase::Normal, this, frequencyBox));
    frequencies.insert(2, new FrequencyMonthly(FrequencyBase::Normal, this, frequencyBox));
    for (FrequencyBase* widget : qAsConst(frequencies))
        stack->addWidget(widget);
    connect(frequencyType, qOverload<int>(&QComboBox::currentIndexChanged), stack, &QStackedLayout::setCurrentIndex);

    auto* runMissed = new QCheckBox(tr("Run missed scheduled plan immediately upon boot-up"), scheduleBox);

    auto* stop = new QCheckBox(tr("Stop plan if it runs for:"), this);
    auto* hours = new QSpinBox(this);
    hours->setRange(0, 99);
    auto* hoursLabel = new QLabel(tr("hour(s)"), this);
    auto* minutes = new QSpinBox(this);
    minutes->setRange(0, 59);
    auto* minutesLabel = new QLabel(tr("minute(s)"), this);
    for (QWidget* w : {static_cast<QWidget*>(hours), static_cast<QWidget*>(hoursLabel), static_cast<QWidget*>(minutes),
             static_cast<QWidget*>(minutesLabel)}) {
        w->setEnabled(false);
        connect(stop, &QCheckBox::toggled, w, &QWidget::setEnabled);
    }

    auto* scheduleLayout = new QGridLayout(scheduleBox);
    scheduleLayout->setContentsMargins(20, 0, 0, 0);
    scheduleLayout->addWidget(specific, 0, 0);
    scheduleLayout->addWidget(specificValue, 0, 1);
    scheduleLayout->addWidget(recurring, 1, 0);
    scheduleLayout->addWidget(frequencyType, 1, 1);
    scheduleLayout->addWidget(frequencyBox, 2, 0, 1, 3);
    scheduleLayout->addWidget(runMissed, 3, 0, 1, 3);
    scheduleLayout->setColumnStretch(2, 1);

    auto* stopRow = new QHBoxLayout;
    stopRow->addWidget(stop);
    stopRow->addWidget(hours);
    stopRow->addWidget(hoursLabel);
    stopRow->addWidget(minutes);
    stopRow->addWidget(minutesLabel);
    stopRow->addStretch(1);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(enable);
    layout->addWidget(scheduleBox);
    layout->addLayout(stopRow);
    layout->addStretch(1);

    registerField(QLatin1String(FieldScheduleEnable), enable);
    registerField(QLatin1String(FieldUseSpecificDate), specific);
    registerField(QLatin1String(FieldSpecificDateValue), specificValue);
    registerField(QLatin1String(FieldUseRecurring), recurring);
    registerField(QLatin1String(FieldFrequencyType), frequencyType);
    registerField(QLatin1String(FieldRunMissedPlan), runMissed);
    registerField(QLatin1String(FieldStopAutoEnable), stop);
    registerField(QLatin1String(FieldStopAutoHoursValue), hours);
    registerField(QLatin1String(FieldStopAutoMinutesValue), minutes);

    connect(enable, &QCheckBox::clicked, this, &PageSchedule::completeChanged);
    connect(group, qOverload<QAbstractButton*>(&QButtonGroup::buttonClicked), this, &PageSchedule::completeChanged);
    connect(frequencyType, qOverload<int>(&QComboBox::currentIndexChanged), this, &PageSchedule::completeChanged);
    connect(frequencies.value(1), &FrequencyBase::changed, this, &PageSchedule::completeChanged);
    connect(stop, &QCheckBox::toggled, this, &PageSchedule::completeChanged);
    connect(hours, qOverload<int>(&QSpinBox::valueChanged), this, &PageSchedule::completeChanged);
    connect(minutes, qOverload<int>(&QSpinBox::valueChanged), this, &PageSchedule::completeChanged);
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
        // "minutes(s)" differs from the page's label on purpose: the summary has always said so.
        rows += QStringLiteral("<tr><td></td><td>%1 %2 %3 %4 %5</td></tr>")
                    .arg(tr("Stop plan if it runs for:"),
                        QString::number(field(QLatin1String(FieldStopAutoHoursValue)).toInt()), tr("hour(s)"),
                        QString::number(field(QLatin1String(FieldStopAutoMinutesValue)).toInt()), tr("minutes(s)"));
    }
    return rows;
}

bool PlanWizardBase::PageSchedule::initPlan(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return false;
    plan->setRunMissedPlan(field(QLatin1String(FieldRunMissedPlan)).toBool());
    TWB::Info::Plan::Schedule& schedule = plan->schedule();
    const int hours = field(QLatin1String(FieldStopAutoHoursValue)).toInt();
    const int minutes = field(QLatin1String(FieldStopAutoMinutesValue)).toInt();
    if (field(QLatin1String(FieldStopAutoEnable)).toBool() && (hours != 0 || minutes != 0))
        schedule.setStopAfter(
            static_cast<unsigned long long>(hours) * 3600 + static_cast<unsigned long long>(minutes) * 60);
    else
        schedule.setStopAfter(0);

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
        // Both monthly kinds share the one "Monthly" item.
        const int type = schedule.frequencyType();
        setField(QLatin1String(FieldFrequencyType), type == TWB::Info::Plan::Schedule::MonthlyByDayOfMonth ? 2 : type);
    }
    setField(QLatin1String(FieldScheduleEnable), schedule.isEnable());
    for (int key : {0, 1, 2}) {
        if (FrequencyBase* widget = frequencies.value(key))
            widget->fromPlan(plan);
    }
    const unsigned long long stopAfter = schedule.stopAfter();
    if (stopAfter != 0) {
        const unsigned long long hours = stopAfter / 3600;
        setField(QLatin1String(FieldStopAutoEnable), true);
        setField(QLatin1String(FieldStopAutoHoursValue), int(hours));
        setField(QLatin1String(FieldStopAutoMinutesValue), int((stopAfter - hours * 3600) / 60));
    }
    setField(QLatin1String(FieldRunMissedPlan), plan->runMuissedPlan());
    return true;
}

} // namespace TWB::GUI
