#include "wizard/frequency_monthly.h"

#include "platform/plan/base.h"
#include "wizard/page_base.h"

#include <QComboBox>
#include <QDateEdit>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QSpinBox>

namespace TWB::GUI {

const char* FrequencyMonthly::Name = "Monthly";
const char* FrequencyMonthly::Prefix = "Monthly";
const char* FrequencyMonthly::FieldOccurrenceType = "Field_MonthlyOccurrenceType";
const char* FrequencyMonthly::FieldDay = "Field_MonthlyDay";
const char* FrequencyMonthly::FieldRepeatEvery = "Field_MonthlyRepeatEvery";
const char* FrequencyMonthly::FieldFrom = "Field_MonthlyFrom";

QStringList FrequencyMonthly::OccurrenceType()
{
    return {tr("Day of Month"), tr("First"), tr("Second"), tr("Third"), tr("Fourth"), tr("Penultimate"), tr("Last")};
}

FrequencyMonthly::FrequencyMonthly(Type type, PlanWizardBase::PageBase* page, QWidget* parent)
    : FrequencyDaily(type, QString::fromLatin1(Prefix), page, parent)
{
    addSubTitle(tr("Monthly frequency"));

    auto* occurrence = new QComboBox(this);
    occurrence->addItems(OccurrenceType());
    m_day = new QComboBox(this);
    auto* repeat = new QSpinBox(this);
    repeat->setRange(1, 12);
    auto* from = new QDateEdit(this);
    from->setCalendarPopup(true);
    // Only from today on; the minimum is not moved on for a wizard left open past midnight.
    from->setMinimumDate(QDate::currentDate());

    const int row = grid->rowCount();
    grid->addWidget(new QLabel(tr("Occurrence:"), this), row, 0);
    grid->addWidget(occurrence, row, 1);
    grid->addWidget(new QLabel(tr("Day:"), this), row, 2);
    grid->addWidget(m_day, row, 3);
    grid->addWidget(new QLabel(tr("Repeat every:"), this), row + 1, 0);
    auto* repeatRow = new QHBoxLayout;
    repeatRow->addWidget(repeat);
    repeatRow->addWidget(new QLabel(tr("months"), this));
    repeatRow->addStretch(1);
    grid->addLayout(repeatRow, row + 1, 1);
    grid->addWidget(new QLabel(tr("From:"), this), row + 1, 2);
    grid->addWidget(from, row + 1, 3);

    connect(occurrence, qOverload<int>(&QComboBox::currentIndexChanged), this, &FrequencyMonthly::onOccurrenceChange);
    onOccurrenceChange(0);

    m_page->registerField(fieldName(FieldOccurrenceType), occurrence);
    m_page->registerField(fieldName(FieldDay), m_day);
    m_page->registerField(fieldName(FieldRepeatEvery), repeat);
    m_page->registerField(fieldName(FieldFrom), from);
    init();
}

QString FrequencyMonthly::fieldName(const char* name) const
{
    const QString result = QString::fromLatin1(name);
    return m_type == Full ? QStringLiteral("Full_") + result : result;
}

void FrequencyMonthly::onOccurrenceChange(int index)
{
    m_day->clear();
    if (index == 0) {
        for (int day = 1; day <= 31; ++day)
            m_day->addItem(QString::number(day));
        return;
    }
    const QLocale locale = QLocale::system();
    for (int day = 1; day <= 7; ++day)
        m_day->addItem(locale.dayName(day, QLocale::LongFormat));
}

QString FrequencyMonthly::summary()
{
    const int occurrence = pageField(fieldName(FieldOccurrenceType)).toInt();
    const int day = pageField(fieldName(FieldDay)).toInt();
    const QLocale locale = QLocale::system();
    QString rows;
    if (occurrence == 0) {
        rows = QStringLiteral("<tr><td></td><td>%1 %2 %3</td></tr>")
                   .arg(tr("Occurs every month on"), QString::number(day + 1), tr("day"));
    } else {
        rows = QStringLiteral("<tr><td></td><td>%1 %2 %3</td></tr>")
                   .arg(tr("Occurs every month on"), OccurrenceType().value(occurrence).toLower(),
                       locale.dayName(day + 1, QLocale::LongFormat));
    }
    rows += QStringLiteral("<tr><td></td><td>%1 %2 %3 %4</td></tr>")
                .arg(tr("Repeat every"), QString::number(pageField(fieldName(FieldRepeatEvery)).toInt()),
                    tr("month. Start from:"),
                    locale.toString(pageField(fieldName(FieldFrom)).toDate(), QLocale::LongFormat));
    return rows + FrequencyDaily::summary();
}

bool FrequencyMonthly::initPlan(TWB::Info::Plan::Base* plan)
{
    if (!FrequencyDaily::initPlan(plan))
        return false;
    TWB::Info::Plan::Schedule copy(schedule(plan));
    const int occurrence = pageField(fieldName(FieldOccurrenceType)).toInt();
    const int day = pageField(fieldName(FieldDay)).toInt();
    if (occurrence == 0) {
        copy.setFrequencyType(TWB::Info::Plan::Schedule::MonthlyByDayOfMonth);
        copy.setDayOfMonthFrequency(day + 1);
    } else {
        copy.setFrequencyType(TWB::Info::Plan::Schedule::MonthlyByWeekNumber);
        copy.setMonthlyFrequency(TWB::Info::Plan::Schedule::WeekNumber(occurrence - 1), day + 1);
    }
    copy.setMonthRepeat(pageField(fieldName(FieldRepeatEvery)).toInt(), pageField(fieldName(FieldFrom)).toDate());
    schedule(plan) = copy;
    return true;
}

bool FrequencyMonthly::fromPlan(TWB::Info::Plan::Base* plan)
{
    if (!FrequencyDaily::fromPlan(plan))
        return false;
    const TWB::Info::Plan::Schedule& s = schedule(plan);
    // The occurrence goes first: choosing it refills the day list.
    if (s.frequencyType() == TWB::Info::Plan::Schedule::MonthlyByDayOfMonth) {
        m_page->setField(fieldName(FieldOccurrenceType), 0);
        m_page->setField(fieldName(FieldDay), s.dayOfMonthFrequency() - 1);
    } else {
        m_page->setField(fieldName(FieldOccurrenceType), s.monthlyFrequency().week + 1);
        m_page->setField(fieldName(FieldDay), s.monthlyFrequency().day - 1);
    }
    m_page->setField(fieldName(FieldRepeatEvery), s.monthRepeat().months);
    if (s.monthRepeat().from.isValid())
        m_page->setField(fieldName(FieldFrom), s.monthRepeat().from);
    return true;
}

bool FrequencyMonthly::validate()
{
    return true;
}

} // namespace TWB::GUI
