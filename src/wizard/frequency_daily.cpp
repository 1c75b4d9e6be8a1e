#include "wizard/frequency_daily.h"

#include "platform/plan/base.h"
#include "wizard/page_base.h"

#include <QDateTime>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QRadioButton>
#include <QSpinBox>
#include <QTimeEdit>

namespace TWB::GUI {

const char* FrequencyDaily::Name = "Daily";
const char* FrequencyDaily::FieldUsedOccursAt = "Field_UsedOccursAt";
const char* FrequencyDaily::FieldUsedOccursAtValue = "Field_UsedOccursAtValue";
const char* FrequencyDaily::FieldUsedOccursEvery = "Field_UsedOccursEvery";
const char* FrequencyDaily::FieldUsedOccursEveryValue = "Field_UsedOccursEveryValue";
const char* FrequencyDaily::FieldUsedOccursEveryForm = "Field_UsedOccursEveryForm";
const char* FrequencyDaily::FieldUsedOccursEveryTo = "Field_UsedOccursEveryTo";

FrequencyDaily::FrequencyDaily(Type type, PlanWizardBase::PageBase* page, QWidget* parent)
    : FrequencyDaily(type, QString(), page, parent)
{
    init();
}

FrequencyDaily::FrequencyDaily(Type type, const QString& prefix, PlanWizardBase::PageBase* page, QWidget* parent)
    : FrequencyBase(type, page, parent)
    , m_prefix(prefix)
{
    grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
}

QString FrequencyDaily::fieldName(const char* name) const
{
    QString result = QString::fromLatin1(name);
    if (!m_prefix.isEmpty())
        result = QStringLiteral("%1_%2").arg(m_prefix, result);
    if (m_type == Full)
        result.prepend(QStringLiteral("Full_"));
    return result;
}

QVariant FrequencyDaily::pageField(const QString& name) const
{
    return m_page->field(name);
}

void FrequencyDaily::addSubTitle(const QString& text)
{
    const int row = grid->rowCount();
    auto* caption = new QLabel(QStringLiteral("<small>%1</small>").arg(text), this);
    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    auto* box = new QHBoxLayout;
    box->addWidget(caption);
    box->addWidget(line, 1);
    grid->addLayout(box, row, 0, 1, -1);
}

void FrequencyDaily::init()
{
    addSubTitle(tr("Daily frequency"));

    auto* at = new QRadioButton(tr("At"), this);
    auto* atValue = new QTimeEdit(this);
    atValue->setDisplayFormat(QStringLiteral("hh:mm"));
    atValue->setEnabled(false);

    auto* every = new QRadioButton(tr("Every"), this);
    auto* everyValue = new QSpinBox(this);
    everyValue->setRange(1, 1440);
    auto* fromLabel = new QLabel(tr("minute(s) from"), this);
    auto* from = new QTimeEdit(this);
    from->setDisplayFormat(QStringLiteral("hh:mm"));
    auto* toLabel = new QLabel(tr("to"), this);
    auto* to = new QTimeEdit(QTime(23, 59), this);
    to->setDisplayFormat(QStringLiteral("hh:mm"));
    for (QWidget* w : {static_cast<QWidget*>(everyValue), static_cast<QWidget*>(from), static_cast<QWidget*>(to)}) {
        w->setEnabled(false);
        connect(every, &QRadioButton::toggled, w, &QWidget::setEnabled);
    }
    connect(at, &QRadioButton::toggled, atValue, &QWidget::setEnabled);

    const int row = grid->rowCount();
    grid->addWidget(at, row, 0);
    grid->addWidget(atValue, row, 1);
    grid->addWidget(every, row + 1, 0);
    auto* everyRow = new QHBoxLayout;
    everyRow->addWidget(everyValue);
    everyRow->addWidget(fromLabel);
    everyRow->addWidget(from);
    everyRow->addWidget(toLabel);
    everyRow->addWidget(to);
    everyRow->addStretch(1);
    grid->addLayout(everyRow, row + 1, 1, 1, -1);
    // Controls keep their natural width; the room left goes to an empty last column.
    grid->setColumnStretch(grid->columnCount(), 1);

    m_page->registerField(fieldName(FieldUsedOccursAt), at);
    m_page->registerField(fieldName(FieldUsedOccursAtValue), atValue);
    m_page->registerField(fieldName(FieldUsedOccursEvery), every);
    m_page->registerField(fieldName(FieldUsedOccursEveryValue), everyValue);
    m_page->registerField(fieldName(FieldUsedOccursEveryForm), from);
    m_page->registerField(fieldName(FieldUsedOccursEveryTo), to);
}

QString FrequencyDaily::summary()
{
    const bool daily = m_prefix.isEmpty();
    const QLocale locale = QLocale::system();
    auto timeOf = [&](const char* name) {
        return locale.toString(pageField(fieldName(name)).toDateTime().time(), QLocale::ShortFormat);
    };
    if (pageField(fieldName(FieldUsedOccursAt)).toBool()) {
        return QStringLiteral("<tr><td></td><td>%1 %2</td></tr>")
            .arg(daily ? tr("Occurs every day at") : tr("at"), timeOf(FieldUsedOccursAtValue));
    }
    if (pageField(fieldName(FieldUsedOccursEvery)).toBool()) {
        return QStringLiteral("<tr><td></td><td>%1 %2 %3 %4 %5 %6</td></tr>")
            .arg(daily ? tr("Occurs every day every") : tr("every"),
                QString::number(pageField(fieldName(FieldUsedOccursEveryValue)).toInt()), tr("minute(s) between"),
                timeOf(FieldUsedOccursEveryForm), tr("and"), timeOf(FieldUsedOccursEveryTo));
    }
    return QString();
}

bool FrequencyDaily::initPlan(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return false;
    TWB::Info::Plan::Schedule copy(schedule(plan));
    copy.setFrequencyType(TWB::Info::Plan::Schedule::Daily);
    if (pageField(fieldName(FieldUsedOccursAt)).toBool()) {
        copy.setDailyRecurrence(false);
        copy.setOccursAt(pageField(fieldName(FieldUsedOccursAtValue)).toDateTime().time());
    } else if (pageField(fieldName(FieldUsedOccursEvery)).toBool()) {
        copy.setDailyRecurrence(true);
        copy.setOccursEvery(pageField(fieldName(FieldUsedOccursEveryValue)).toInt(),
            pageField(fieldName(FieldUsedOccursEveryForm)).toDateTime().time(),
            pageField(fieldName(FieldUsedOccursEveryTo)).toDateTime().time());
    }
    schedule(plan) = copy;
    return true;
}

bool FrequencyDaily::fromPlan(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return false;
    const TWB::Info::Plan::Schedule& s = schedule(plan);
    const QDate today = QDate::currentDate();
    m_page->setField(fieldName(FieldUsedOccursAtValue), QDateTime(today, s.occursAt()));
    const auto every = s.occursEvery();
    m_page->setField(fieldName(FieldUsedOccursEveryValue), every.period);
    m_page->setField(fieldName(FieldUsedOccursEveryForm), QDateTime(today, every.start));
    m_page->setField(fieldName(FieldUsedOccursEveryTo), QDateTime(today, every.end));
    if (s.dailyRecurrence())
        m_page->setField(fieldName(FieldUsedOccursEvery), true);
    else
        m_page->setField(fieldName(FieldUsedOccursAt), true);
    return true;
}

bool FrequencyDaily::validate()
{
    return true;
}

} // namespace TWB::GUI
