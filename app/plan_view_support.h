#pragma once

#include <QObject>
#include <QSortFilterProxyModel>

class QAbstractItemView;

namespace TWB::Host {

/// Sorts a plan table by a click on its header: numbers as numbers, times as times, texts as a
/// person reads them ("plan 9" before "plan 10").
class PlanSortModel final : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_DISABLE_COPY(PlanSortModel)
public:
    explicit PlanSortModel(QObject* parent = nullptr);

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
};

/// Shows the whole text of a cell in a tool tip when the column cuts it, as the cell's delegate
/// words it.
class FullTextToolTips final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(FullTextToolTips)
public:
    /// Installs itself on the view's viewport; owned by the view.
    static void install(QAbstractItemView* view);
    /// The tool tip of the cell, or an empty text when the cell shows everything already.
    static QString toolTip(QAbstractItemView* view, const QModelIndex& index);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit FullTextToolTips(QAbstractItemView* view);
    QAbstractItemView* m_view; // the parent
};

} // namespace TWB::Host
