#include "app/plan_view_support.h"

#include "app/run_progress_delegate.h"

#include <QAbstractItemView>
#include <QCollator>
#include <QDateTime>
#include <QHelpEvent>
#include <QLocale>
#include <QToolTip>

namespace TWB::Host {

namespace {
// The plan tables' time columns, shown in the system's short format.
const int lastRunTimeColumn = 6;
const int nextRunTimeColumn = 9;

QDateTime timeOf(const QVariant& value)
{
    return QLocale::system().toDateTime(value.toString(), QLocale::ShortFormat);
}

// Compares runs of digits by their value and the rest without regard to case, so that "Plan 9" comes
// before "Plan 10" whether or not the collator of this system knows a numeric mode.
int naturalCompare(const QString& a, const QString& b)
{
    int i = 0;
    int j = 0;
    while (i < a.size() && j < b.size()) {
        if (a.at(i).isDigit() && b.at(j).isDigit()) {
            int endA = i;
            int endB = j;
            while (endA < a.size() && a.at(endA).isDigit())
                ++endA;
            while (endB < b.size() && b.at(endB).isDigit())
                ++endB;
            // Leading zeros aside, the longer run of digits is the larger number.
            QStringView x = QStringView(a).mid(i, endA - i);
            QStringView y = QStringView(b).mid(j, endB - j);
            while (x.size() > 1 && x.front() == QLatin1Char('0'))
                x = x.mid(1);
            while (y.size() > 1 && y.front() == QLatin1Char('0'))
                y = y.mid(1);
            if (x.size() != y.size())
                return x.size() < y.size() ? -1 : 1;
            if (const int order = x.compare(y))
                return order;
            i = endA;
            j = endB;
            continue;
        }
        if (const int order = QString::compare(QString(a.at(i)), QString(b.at(j)), Qt::CaseInsensitive))
            return order;
        ++i;
        ++j;
    }
    return (a.size() - i) - (b.size() - j);
}
} // namespace

PlanSortModel::PlanSortModel(QObject* parent)
    : QSortFilterProxyModel(parent)
{
    setDynamicSortFilter(true);
}

bool PlanSortModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const QVariant a = left.data();
    const QVariant b = right.data();
    // An empty cell sorts first, whatever the column holds.
    if (a.toString().isEmpty() || b.toString().isEmpty())
        return a.toString().isEmpty() && !b.toString().isEmpty();
    if (left.column() == lastRunTimeColumn || left.column() == nextRunTimeColumn) {
        const QDateTime x = timeOf(a);
        const QDateTime y = timeOf(b);
        if (x.isValid() && y.isValid())
            return x < y;
    }
    bool aNumber = false;
    bool bNumber = false;
    const double x = a.toDouble(&aNumber);
    const double y = b.toDouble(&bNumber);
    if (aNumber && bNumber)
        return x < y;
    const int order = naturalCompare(a.toString(), b.toString());
    if (order != 0)
        return order < 0;
    QCollator collator {QLocale()};
    return collator.compare(a.toString(), b.toString()) < 0;
}

FullTextToolTips::FullTextToolTips(QAbstractItemView* view)
    : QObject(view)
    , m_view(view)
{
    view->viewport()->installEventFilter(this);
}

void FullTextToolTips::install(QAbstractItemView* view)
{
    new FullTextToolTips(view);
}

QString FullTextToolTips::toolTip(QAbstractItemView* view, const QModelIndex& index)
{
    if (!index.isValid())
        return QString();
    const QString own = index.data(Qt::ToolTipRole).toString();
    if (!own.isEmpty())
        return own;
    QAbstractItemDelegate* delegate = view->itemDelegateForColumn(index.column());
    if (!delegate)
        delegate = view->itemDelegate();
    const QLocale locale = view->locale();
    QString text;
    if (auto* progress = qobject_cast<RunProgressDelegate*>(delegate))
        text = progress->fullText(index, locale);
    else if (auto* message = qobject_cast<RunMessageDelegate*>(delegate))
        text = message->textFor(index, locale);
    else if (auto* styled = qobject_cast<QStyledItemDelegate*>(delegate))
        text = styled->displayText(index.data(), locale);
    else
        text = index.data().toString();
    if (text.isEmpty())
        return QString();
    // A progress bar's label or a cut text: say it whole. A text that fits needs no tip.
    const QRect rect = view->visualRect(index);
    const int room = rect.width() - 2 * view->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, view) - 8
        - (index.data(Qt::DecorationRole).isNull() ? 0 : view->iconSize().width() + 4);
    if (view->fontMetrics().horizontalAdvance(text) <= room)
        return QString();
    return text;
}

bool FullTextToolTips::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::ToolTip || watched != m_view->viewport())
        return QObject::eventFilter(watched, event);
    auto* help = static_cast<QHelpEvent*>(event);
    const QString text = toolTip(m_view, m_view->indexAt(help->pos()));
    if (text.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(
            help->globalPos(), text, m_view->viewport(), m_view->visualRect(m_view->indexAt(help->pos())));
    return true;
}

} // namespace TWB::Host
