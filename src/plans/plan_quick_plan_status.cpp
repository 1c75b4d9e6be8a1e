#include "plans/plan_quick_plan_status.h"

#include "plans/plan_states.h"

#include <QIcon>

namespace TWB::GUI {

PlanQuickPlanStatus::PlanQuickPlanStatus(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

PlanQuickPlanStatus::~PlanQuickPlanStatus() = default;

QString PlanQuickPlanStatus::displayText(const QVariant& value, const QLocale& locale) const
{
    return toText(value, locale);
}

QString PlanQuickPlanStatus::toText(const QVariant& value, const QLocale&)
{
    bool ok = false;
    const int status = value.toInt(&ok);
    const QMap<int, QString> texts = PlanStates::runStatusTexts();
    return ok && texts.contains(status) ? texts.value(status) : tr("N/A");
}

void PlanQuickPlanStatus::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    bool ok = false;
    const int status = index.data(Qt::DisplayRole).toInt(&ok);
    if (ok && status == 1)
        option->icon = QIcon(QStringLiteral("://images/plan_state_start.png"));
    else if (ok && status == 2)
        option->icon = QIcon(QStringLiteral("://images/plan_state_no.png"));
    else
        option->icon = QIcon();
    option->features |= QStyleOptionViewItem::HasDecoration;
}

} // namespace TWB::GUI
