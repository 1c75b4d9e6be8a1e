#pragma once

#include "twbconsole_export.h"

#include <QPixmap>
#include <QStyledItemDelegate>

class QStyle;

namespace TWB::GUI {

/// Paints the file trees' fourth check state, 1001: the item itself is not included, something below
/// it is. Qt knows only three states, so the mark is painted over the indicator Qt leaves empty.
class TWBCONSOLE_EXPORT IncompleteStateDelegate : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY(IncompleteStateDelegate)
public:
    /// The check role value of the fourth state.
    static constexpr int IncompliteChecked = 1001;

    explicit IncompleteStateDelegate(QObject* parent = nullptr);
    ~IncompleteStateDelegate() override;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// One check indicator in the state 0, 1, 2 or 1001, for the legend, at the application's pixel ratio.
    static QPixmap legend(int state);
    /// The same at a given device pixel ratio.
    static QPixmap legend(int state, qreal devicePixelRatio);

protected:
    void drawIncompleteCheckedState(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const;

private:
    /// Paints the mark of state 1001 into the indicator rectangle `rect`.
    static void drawMark(QPainter* painter, const QRect& rect, const QPalette& palette, const QStyle* style);
};

} // namespace TWB::GUI
