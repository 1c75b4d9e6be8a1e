#include "app/run_progress_delegate.h"

#include "plans/plan_states.h"
#include "plans/plan_status_list.h"
#include "platform/utility/time_duraton.h"
#include "platform/utility/transform.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOptionProgressBar>
#include <QUuid>

namespace TWB::Host {

namespace States = TWB::GUI::PlanStates;

namespace {
// Columns of the host's plan tables.
const int idColumn = 0;
const int statusColumn = 4;
const int runningStatus = 1;

QMap<QString, QVariant> progressOf(const QModelIndex& index)
{
    const auto list = TWB::GUI::PlanStatusList::instance();
    return list ? list->status(QUuid(index.siblingAtColumn(idColumn).data().toString())) : QMap<QString, QVariant>();
}
} // namespace

RunProgressDelegate::RunProgressDelegate(QAbstractItemDelegate* fallback, QObject* parent)
    : QStyledItemDelegate(parent)
    , m_fallback(fallback)
{ }

bool RunProgressDelegate::isRunning(const QModelIndex& index)
{
    return index.siblingAtColumn(statusColumn).data().toInt() == runningStatus;
}

QString RunProgressDelegate::awayText()
{
    return tr("Service away");
}

QString RunProgressDelegate::phaseText(const QMap<QString, QVariant>& progress)
{
    bool known = false;
    int state = progress.value(QStringLiteral("status_value")).toInt(&known);
    if (!known) {
        // An older feed names the state only.
        const QString name = progress.value(QStringLiteral("status")).toString();
        state = States::Unknown;
        for (int value = States::Starting; value <= States::InterruptedByNetworkFilter; ++value) {
            if (States::isKnown(value) && States::name(value) == name)
                state = value;
        }
    }
    switch (state) {
    case States::Starting:
    case States::Preparing:
        return tr("Preparing the storage");
    case States::UpdatedFileSearch:
        return tr("Scanning");
    case States::Running:
        // Until restic has counted what there is to send, nothing is sent.
        return progress.value(QStringLiteral("size")).toDouble() > 0
                || progress.value(QStringLiteral("progress")).toInt() > 0
            ? tr("Uploading")
            : tr("Scanning");
    case States::PurgingFiles:
        return tr("Applying retention");
    case States::UpdatingRepository:
        return tr("Updating the catalog");
    case States::Downloading:
        return tr("Downloading");
    default:
        return States::displayText(state);
    }
}

QString RunProgressDelegate::progressText(const QMap<QString, QVariant>& progress)
{
    QStringList parts;
    const QString phase = phaseText(progress);
    const int percent = progress.value(QStringLiteral("progress")).toInt();
    if (!phase.isEmpty())
        parts << (percent > 0 ? QStringLiteral("%1 %2%").arg(phase).arg(percent) : phase);
    else
        parts << QStringLiteral("%1%").arg(percent);
    const double speed = progress.value(QStringLiteral("speed")).toDouble();
    if (speed > 0)
        parts << tr("%1/s").arg(SHARED::functions::help::transform::from_byte_to_norm(speed));
    if (progress.contains(QStringLiteral("elapsed")))
        parts << TWL::Utitlity::TimeDuraton::toString(progress.value(QStringLiteral("elapsed")).toInt());
    return parts.join(QStringLiteral(" \u00b7 "));
}

QString RunProgressDelegate::runningText(const QModelIndex& index) const
{
    if (!isRunning(index))
        return QString();
    if (m_away)
        return awayText();
    const QMap<QString, QVariant> progress = progressOf(index);
    return progress.isEmpty() ? tr("Starting") : progressText(progress);
}

QString RunProgressDelegate::fullText(const QModelIndex& index, const QLocale& locale) const
{
    const QString running = runningText(index);
    if (m_away && !running.isEmpty())
        return tr("The local backup service went away during this run; its outcome shows once the service is back.");
    if (!running.isEmpty())
        return running;
    if (auto* styled = qobject_cast<QStyledItemDelegate*>(m_fallback.data()))
        return styled->displayText(index.data(), locale);
    return displayText(index.data(), locale);
}

void RunProgressDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    if (!isRunning(index)) {
        if (m_fallback)
            m_fallback->paint(painter, option, index);
        else
            QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem background = option;
    initStyleOption(&background, index);
    background.text.clear();
    QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &background, painter, option.widget);

    if (m_away) {
        // The figures stopped when the service went; showing them would pretend the run goes on.
        painter->save();
        QFont font = option.font;
        font.setItalic(true);
        painter->setFont(font);
        painter->setPen(option.palette.color(QPalette::Disabled, QPalette::Text));
        const QRect text = option.rect.adjusted(4, 0, -4, 0);
        painter->drawText(text, Qt::AlignVCenter | Qt::AlignLeft,
            QFontMetrics(font).elidedText(awayText(), Qt::ElideRight, text.width()));
        painter->restore();
        return;
    }

    const QMap<QString, QVariant> progress = progressOf(index);
    QStyleOptionProgressBar bar;
    bar.rect = option.rect.adjusted(2, 3, -2, -3);
    bar.minimum = 0;
    bar.maximum = 100;
    // Before any percent is known the run is busy all the same: show a busy bar.
    const int percent = qBound(0, progress.value(QStringLiteral("progress")).toInt(), 100);
    bar.progress = percent;
    if (percent == 0)
        bar.maximum = 0;
    bar.textVisible = false;
    bar.state = option.state | QStyle::State_Horizontal;
    bar.palette = option.palette;
    bar.fontMetrics = option.fontMetrics;
    style->drawControl(QStyle::CE_ProgressBarGroove, &bar, painter, option.widget);
    style->drawControl(QStyle::CE_ProgressBarContents, &bar, painter, option.widget);
    // The label is drawn here, inside the bar, whatever the style would do with it.
    painter->save();
    painter->setPen(option.palette.color(QPalette::Text));
    const QRect text = bar.rect.adjusted(4, 0, -4, 0);
    painter->drawText(
        text, Qt::AlignCenter, option.fontMetrics.elidedText(runningText(index), Qt::ElideRight, text.width()));
    painter->restore();
}

QSize RunProgressDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QSize size = m_fallback ? m_fallback->sizeHint(option, index) : QStyledItemDelegate::sizeHint(option, index);
    return size.expandedTo(
        QSize(option.fontMetrics.horizontalAdvance(QStringLiteral("Uploading 100% \u00b7 99.9 MB/s")),
            option.fontMetrics.height() + 8));
}

QString RunMessageDelegate::textFor(const QModelIndex& index, const QLocale& locale) const
{
    if (RunProgressDelegate::isRunning(index))
        return progressOf(index).value(QStringLiteral("current_file")).toString();
    return displayText(index.data(), locale);
}

void RunMessageDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (!RunProgressDelegate::isRunning(index))
        return;
    option->text = progressOf(index).value(QStringLiteral("current_file")).toString();
}

} // namespace TWB::Host
