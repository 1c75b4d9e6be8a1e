#include "plans/plan_type_delegate.h"

#include "plans/plan_states.h"

#include <QIcon>

namespace TWB::GUI {

PlanTypeDelegate::PlanTypeDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

PlanTypeDelegate::~PlanTypeDelegate() = default;

QString PlanTypeDelegate::displayText(const QVariant& value, const QLocale& locale) const
{
    return toText(value, locale);
}

QString PlanTypeDelegate::toText(const QVariant& value, const QLocale&)
{
    bool ok = false;
    const int kind = value.toInt(&ok);
    const QMap<int, QString> texts = PlanStates::kindTexts();
    return ok && texts.contains(kind) ? texts.value(kind) : tr("N/A");
}

void PlanTypeDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    bool ok = false;
    const int kind = index.data(Qt::DisplayRole).toInt(&ok);
    if (!ok)
        return;
    // QIcon takes the @2x file beside each on a double-density screen.
    if (kind == 1)
        option->icon = QIcon(QStringLiteral("://images/backup.png"));
    else if (kind == 2)
        option->icon = QIcon(QStringLiteral("://images/restore.png"));
    else
        return;
    option->features |= QStyleOptionViewItem::HasDecoration;
}

} // namespace TWB::GUI
