#include "plans/incomplete_state_delegate.h"

#include <QApplication>
#include <QCheckBox>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>

namespace TWB::GUI {

IncompleteStateDelegate::IncompleteStateDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

IncompleteStateDelegate::~IncompleteStateDelegate() = default;

void IncompleteStateDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    drawIncompleteCheckedState(painter, option, index);
}

void IncompleteStateDelegate::drawIncompleteCheckedState(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    if (index.data(Qt::CheckStateRole).toInt() != IncompliteChecked)
        return;
    QStyleOptionViewItem item(option);
    initStyleOption(&item, index);
    const QWidget* widget = option.widget;
    const QStyle* style = widget ? widget->style() : QApplication::style();
    const QRect indicator = style->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &item, widget);
    if (!indicator.isValid())
        return;
    painter->save();
    painter->setClipRect(indicator);
    drawMark(painter, indicator, item.palette, style);
    painter->restore();
}

QPixmap IncompleteStateDelegate::legend(int state)
{
    return legend(state, qApp ? qApp->devicePixelRatio() : 1.0);
}

QPixmap IncompleteStateDelegate::legend(int state, qreal devicePixelRatio)
{
    QCheckBox box;
    QStyleOptionButton option;
    option.initFrom(&box);
    const QStyle* style = box.style();
    const QSize size = style->subElementRect(QStyle::SE_CheckBoxIndicator, &option, &box).size();
    const qreal ratio = qMax<qreal>(1.0, devicePixelRatio);
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);

    option.rect = QRect(QPoint(0, 0), size);
    option.state &= ~(QStyle::State_On | QStyle::State_Off | QStyle::State_NoChange | QStyle::State_HasFocus);
    switch (state) {
    case Qt::Checked:
        option.state |= QStyle::State_On;
        break;
    case Qt::PartiallyChecked:
        option.state |= QStyle::State_NoChange;
        break;
    default:
        option.state |= QStyle::State_Off;
        break;
    }
    QPainter painter(&pixmap);
    style->drawPrimitive(QStyle::PE_IndicatorCheckBox, &option, &painter, &box);
    if (state == IncompliteChecked) {
        painter.setClipRect(option.rect);
        drawMark(&painter, option.rect, option.palette, style);
    }
    return pixmap;
}

void IncompleteStateDelegate::drawMark(
    QPainter* painter, const QRect& rect, const QPalette& palette, const QStyle* style)
{
    painter->setPen(Qt::NoPen);
    if (style && style->objectName().compare(QLatin1String("windows"), Qt::CaseInsensitive) == 0) {
        // The classic style draws a sunken two-pixel frame and no rounded corners: a square fill
        // inside that frame reads best there.
        painter->setBrush(palette.brush(QPalette::Dark));
        painter->drawRect(rect.adjusted(4, 4, -4, -4));
        return;
    }
    // A round dot, unlike the square the styles draw for a partly checked item, so that state 1
    // and 1001 never look alike.
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(palette.brush(QPalette::Text));
    const qreal side = qMax(4.0, rect.width() * 0.42);
    painter->drawEllipse(QRectF(QRectF(rect).center() - QPointF(side / 2, side / 2), QSizeF(side, side)));
}

} // namespace TWB::GUI
