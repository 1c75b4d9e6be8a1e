#include "plans/plan_result_delegate.h"

#include "plans/plan_states.h"

namespace TWB::GUI {

PlanResultDelegate::PlanResultDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

PlanResultDelegate::~PlanResultDelegate() = default;

QString PlanResultDelegate::displayText(const QVariant& value, const QLocale& locale) const
{
    return toText(value, locale);
}

QString PlanResultDelegate::toText(const QVariant& value, const QLocale&)
{
    if (value.isNull())
        return tr("N/A");
    bool ok = false;
    const int state = value.toInt(&ok);
    if (!ok)
        return QString();
    if (state == PlanStates::Unknown)
        return tr("N/A");
    return PlanStates::displayText(state);
}

QColor PlanResultDelegate::stateColor(int state)
{
    switch (state) {
    case PlanStates::Fail:
        return Qt::red;
    case PlanStates::Paused:
    case PlanStates::Warning:
        return Qt::darkYellow;
    case PlanStates::Running:
    case PlanStates::Success:
        return Qt::darkGreen;
    case PlanStates::Interrupted:
    case PlanStates::InterruptedBySchedule:
    case PlanStates::InterruptedSystemSleep:
    case PlanStates::InterruptedBySwitchingToBatteryPower:
    case PlanStates::InterruptedByNetworkFilter:
        return Qt::blue;
    default:
        return Qt::black;
    }
}

void PlanResultDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    bool ok = false;
    const int state = index.data(Qt::DisplayRole).toInt(&ok);
    // A value that is not a number has no state and so the default colour.
    option->palette.setColor(QPalette::Text, stateColor(ok ? state : PlanStates::Unknown));
}

} // namespace TWB::GUI
