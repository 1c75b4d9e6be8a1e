#include "app/run_progress_delegate.h"

#include "plans/plan_status_list.h"
#include "platform/utility/time_duraton.h"
#include "platform/utility/transform.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOptionProgressBar>
#include <QUuid>

namespace TWB::Host {

namespace {
// Columns of the host's plan tables.
const int idColumn = 0;
const int statusColumn = 4;
const int runningStatus = 1;
} // namespace

RunProgressDelegate::RunProgressDelegate(QAbstractItemDelegate* fallback, QObject* parent)
    : QStyledItemDelegate(parent)
    , m_fallback(fallback)
{ }

QString RunProgressDelegate::progressText(const QMap<QString, QVariant>& progress)
{
    QStringList parts;
    parts << QStringLiteral("%1%").arg(progress.value(QStringLiteral("progress")).toInt());
    const double speed = progress.value(QStringLiteral("speed")).toDouble();
    if (speed > 0)
        parts << tr("%1/s").arg(SHARED::functions::help::transform::from_byte_to_norm(speed));
    if (progress.contains(QStringLiteral("elapsed")))
        parts << TWL::Utitlity::TimeDuraton::toString(progress.value(QStringLiteral("elapsed")).toInt());
    return parts.join(QStringLiteral(" \u00b7 "));
}

void RunProgressDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const bool running = index.siblingAtColumn(statusColumn).data().toInt() == runningStatus;
    const auto list = TWB::GUI::PlanStatusList::instance();
    if (!running || !list) {
        if (m_fallback)
            m_fallback->paint(painter, option, index);
        else
            QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    const QMap<QString, QVariant> progress = list->status(QUuid(index.siblingAtColumn(idColumn).data().toString()));
    QStyleOptionViewItem background = option;
    initStyleOption(&background, index);
    background.text.clear();
    QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &background, painter, option.widget);

    QStyleOptionProgressBar bar;
    bar.rect = option.rect.adjusted(2, 3, -2, -3);
    bar.minimum = 0;
    bar.maximum = 100;
    // Before the first progress message the run has started but nothing is counted: show a busy bar.
    bar.progress = progress.isEmpty() ? 0 : qBound(0, progress.value(QStringLiteral("progress")).toInt(), 100);
    if (progress.isEmpty())
        bar.maximum = 0;
    bar.text = progress.isEmpty() ? tr("Starting") : progressText(progress);
    bar.textVisible = true;
    bar.textAlignment = Qt::AlignCenter;
    bar.state = option.state | QStyle::State_Horizontal;
    bar.palette = option.palette;
    bar.fontMetrics = option.fontMetrics;
    style->drawControl(QStyle::CE_ProgressBar, &bar, painter, option.widget);
}

QSize RunProgressDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QSize size = m_fallback ? m_fallback->sizeHint(option, index) : QStyledItemDelegate::sizeHint(option, index);
    return size.expandedTo(
        QSize(option.fontMetrics.horizontalAdvance(QStringLiteral("100% \u00b7 999.9 MB/s \u00b7 99 h 59 min")),
            option.fontMetrics.height() + 8));
}

} // namespace TWB::Host
