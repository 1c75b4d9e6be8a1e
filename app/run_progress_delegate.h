#pragma once

#include <QMap>
#include <QPointer>
#include <QStyledItemDelegate>
#include <QVariant>

namespace TWB::Host {

/// Shows a running plan's live progress as a bar: the engine's phase, the percent, the speed and the
/// elapsed time, all inside the bar. Other rows are painted by the column's own delegate. While the
/// service is away, a running row says so instead of showing its last, frozen figures.
class RunProgressDelegate final : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(RunProgressDelegate)
public:
    /// `fallback` paints rows of plans that do not run; not owned.
    explicit RunProgressDelegate(QAbstractItemDelegate* fallback, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// The text inside the bar: phase, percent, speed and elapsed time of a progress message.
    static QString progressText(const QMap<QString, QVariant>& progress);
    /// What the engine is doing, read from the message's status keys.
    static QString phaseText(const QMap<QString, QVariant>& progress);
    /// The bar's text for a running row, or an empty text for a row that does not run.
    QString runningText(const QModelIndex& index) const;
    /// The whole text a tool tip shows for the row: the bar's text, or the fallback's.
    QString fullText(const QModelIndex& index, const QLocale& locale) const;

    /// While the service is away, running rows show that instead of their frozen figures.
    void setServiceAway(bool away) { m_away = away; }
    bool serviceAway() const { return m_away; }
    static QString awayText();

    /// Whether the row's plan runs now, by its "Status" column.
    static bool isRunning(const QModelIndex& index);

private:
    QPointer<QAbstractItemDelegate> m_fallback; // not owned
    bool m_away = false;
};

/// The last run's message, which gives way to the file being worked on while the plan runs: the last
/// run's "Stopped by the user" does not stand beside a new run's bar.
class RunMessageDelegate final : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(RunMessageDelegate)
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// The text the cell shows.
    QString textFor(const QModelIndex& index, const QLocale& locale) const;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace TWB::Host
