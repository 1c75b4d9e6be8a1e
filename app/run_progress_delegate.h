#pragma once

#include <QPointer>
#include <QStyledItemDelegate>

namespace TWB::Host {

/// Shows a running plan's live progress as a bar with its speed and elapsed time; other rows are
/// painted by the column's own delegate.
class RunProgressDelegate final : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(RunProgressDelegate)
public:
    /// `fallback` paints rows of plans that do not run; not owned.
    explicit RunProgressDelegate(QAbstractItemDelegate* fallback, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// The text beside the bar: percent, speed and elapsed time of a progress message.
    static QString progressText(const QMap<QString, QVariant>& progress);

private:
    QPointer<QAbstractItemDelegate> m_fallback; // not owned
};

} // namespace TWB::Host
