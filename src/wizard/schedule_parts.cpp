#include "wizard/schedule_parts_p.h"

#include "platform/plan/schedule.h"
#include "wizard/frequency_daily.h"
#include "wizard/frequency_monthly.h"
#include "wizard/frequency_weekly.h"
#include "wizard/page_base.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSpinBox>
#include <QStackedLayout>

namespace TWB::GUI {

QMap<int, FrequencyBase*> ScheduleParts::addFrequencies(
    FrequencyBase::Type kind, PlanWizardBase::PageBase* page, QWidget* box, QComboBox* type)
{
    QMap<int, FrequencyBase*> frequencies;
    auto* stack = new QStackedLayout(box);
    frequencies.insert(0, new FrequencyDaily(kind, page, box));
    frequencies.insert(1, new FrequencyWeekly(kind, page, box));
    frequencies.insert(2, new FrequencyMonthly(kind, page, box));
    for (FrequencyBase* widget : qAsConst(frequencies))
        stack->addWidget(widget);
    QObject::connect(type, qOverload<int>(&QComboBox::currentIndexChanged), stack, &QStackedLayout::setCurrentIndex);
    return frequencies;
}

ScheduleParts::StopControls ScheduleParts::addStopControls(QWidget* parent)
{
    StopControls controls;
    controls.check = new QCheckBox(tr("Stop plan if it runs for:"), parent);
    controls.hours = new QSpinBox(parent);
    controls.hours->setRange(0, 99);
    auto* hoursLabel = new QLabel(tr("hour(s)"), parent);
    controls.minutes = new QSpinBox(parent);
    controls.minutes->setRange(0, 59);
    auto* minutesLabel = new QLabel(tr("minute(s)"), parent);
    controls.row = new QHBoxLayout;
    controls.row->addWidget(controls.check);
    for (QWidget* w : {static_cast<QWidget*>(controls.hours), static_cast<QWidget*>(hoursLabel),
             static_cast<QWidget*>(controls.minutes), static_cast<QWidget*>(minutesLabel)}) {
        w->setEnabled(false);
        QObject::connect(controls.check, &QCheckBox::toggled, w, &QWidget::setEnabled);
        controls.row->addWidget(w);
    }
    controls.row->addStretch(1);
    return controls;
}

unsigned long long ScheduleParts::stopAfter(bool on, int hours, int minutes)
{
    if (!on || (hours == 0 && minutes == 0))
        return 0;
    return static_cast<unsigned long long>(hours) * 3600 + static_cast<unsigned long long>(minutes) * 60;
}

void ScheduleParts::loadStopAfter(PlanWizardBase::PageBase* page, unsigned long long stopAfter, const char* enableField,
    const char* hoursField, const char* minutesField)
{
    if (stopAfter == 0)
        return;
    const unsigned long long hours = stopAfter / 3600;
    page->setField(QLatin1String(enableField), true);
    page->setField(QLatin1String(hoursField), int(hours));
    page->setField(QLatin1String(minutesField), int((stopAfter - hours * 3600) / 60));
}

QString ScheduleParts::stopSummary(int hours, int minutes)
{
    // "minutes(s)" differs from the page's label on purpose: the summary has always said so.
    return QStringLiteral("<tr><td></td><td>%1 %2 %3 %4 %5</td></tr>")
        .arg(tr("Stop plan if it runs for:"), QString::number(hours), tr("hour(s)"), QString::number(minutes),
            tr("minutes(s)"));
}

int ScheduleParts::frequencyIndex(int frequencyType)
{
    return frequencyType == TWB::Info::Plan::Schedule::MonthlyByDayOfMonth ? 2 : frequencyType;
}

} // namespace TWB::GUI
