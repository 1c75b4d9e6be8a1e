#include "wizard/frequency_weekly.h"

#include "platform/plan/base.h"
#include "wizard/page_base.h"

#include <QBitArray>
#include <QCheckBox>
#include <QGridLayout>
#include <QLocale>

namespace TWB::GUI {

const char* FrequencyWeekly::Name = "Weekly";
const char* FrequencyWeekly::Prefix = "Weekly";
const char* FrequencyWeekly::FieldDay_1 = "Field_WeeklyDay_1";
const char* FrequencyWeekly::FieldDay_2 = "Field_WeeklyDay_2";
const char* FrequencyWeekly::FieldDay_3 = "Field_WeeklyDay_3";
const char* FrequencyWeekly::FieldDay_4 = "Field_WeeklyDay_4";
const char* FrequencyWeekly::FieldDay_5 = "Field_WeeklyDay_5";
const char* FrequencyWeekly::FieldDay_6 = "Field_WeeklyDay_6";
const char* FrequencyWeekly::FieldDay_7 = "Field_WeeklyDay_7";

const char* FrequencyWeekly::dayField(int day)
{
    static const char* const fields[]
        = {FieldDay_1, FieldDay_2, FieldDay_3, FieldDay_4, FieldDay_5, FieldDay_6, FieldDay_7};
    return fields[day - 1];
}

FrequencyWeekly::FrequencyWeekly(Type type, PlanWizardBase::PageBase* page, QWidget* parent)
    : FrequencyDaily(type, QString::fromLatin1(Prefix), page, parent)
{
    addSubTitle(tr("Weekly frequency"));
    // Two columns: Monday, Wednesday, Friday, Saturday; then Tuesday, Thursday, Sunday.
    static const int column[] = {0, 1, 0, 1, 0, 0, 1};
    static const int row[] = {0, 0, 1, 1, 2, 3, 2};
    const int top = grid->rowCount();
    const QLocale locale = QLocale::system();
    for (int day = 1; day <= 7; ++day) {
        auto* box = new QCheckBox(locale.dayName(day, QLocale::LongFormat), this);
        grid->addWidget(box, top + row[day - 1], column[day - 1]);
        m_page->registerField(fieldName(dayField(day)), box);
        connect(box, &QCheckBox::clicked, this, &FrequencyWeekly::changed);
    }
    init();
}

QString FrequencyWeekly::fieldName(const char* name) const
{
    const QString result = QString::fromLatin1(name);
    return m_type == Full ? QStringLiteral("Full_") + result : result;
}

QString FrequencyWeekly::summary()
{
    QString rows = QStringLiteral("<tr><td></td><td>%1").arg(tr("Occurs every week on:</td></tr>"));
    const QLocale locale = QLocale::system();
    for (int day = 1; day <= 7; ++day) {
        if (pageField(fieldName(dayField(day))).toBool())
            rows += QStringLiteral("<tr><td></td><td>%1</td></tr>").arg(locale.dayName(day, QLocale::LongFormat));
    }
    return rows + FrequencyDaily::summary();
}

bool FrequencyWeekly::initPlan(TWB::Info::Plan::Base* plan)
{
    if (!FrequencyDaily::initPlan(plan))
        return false;
    TWB::Info::Plan::Schedule copy(schedule(plan));
    copy.setFrequencyType(TWB::Info::Plan::Schedule::Weekly);
    QBitArray days(7, false);
    for (int day = 1; day <= 7; ++day)
        days.setBit(day - 1, pageField(fieldName(dayField(day))).toBool());
    copy.setWeeklyFrequency(days);
    schedule(plan) = copy;
    return true;
}

bool FrequencyWeekly::fromPlan(TWB::Info::Plan::Base* plan)
{
    if (!FrequencyDaily::fromPlan(plan))
        return false;
    const QBitArray days = schedule(plan).weeklyFrequency();
    for (int day = 1; day <= 7; ++day)
        m_page->setField(fieldName(dayField(day)), day - 1 < days.size() && days.testBit(day - 1));
    return true;
}

bool FrequencyWeekly::validate()
{
    for (int day = 1; day <= 7; ++day) {
        if (pageField(fieldName(dayField(day))).toBool())
            return true;
    }
    return false;
}

} // namespace TWB::GUI
