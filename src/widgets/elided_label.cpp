#include "widgets/elided_label.h"

#include <QPainter>
#include <QResizeEvent>
#include <QStyle>

namespace TWB::GUI {

ElidedLabel::ElidedLabel(QWidget* parent)
    : QLabel(parent)
{ }

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent)
    : QLabel(text, parent)
{ }

ElidedLabel::~ElidedLabel() = default;

void ElidedLabel::setElideMode(Qt::TextElideMode elideMode)
{
    if (mode == elideMode)
        return;
    mode = elideMode;
    cachedWidth = -1;
    updateGeometry();
    update();
}

QString ElidedLabel::elidedText()
{
    if (mode == Qt::ElideNone)
        return text();
    if (cachedWidth != contentsRect().width() || cachedSource != text())
        cacheElidedText(contentsRect().width());
    return cachedText;
}

QSize ElidedLabel::minimumSizeHint() const
{
    if (mode == Qt::ElideNone)
        return QLabel::minimumSizeHint();
    // Room for the ellipsis alone, so that layouts may shrink the label as far as they like.
    const QFontMetrics metrics(font());
    const QMargins margins = contentsMargins();
    return QSize(metrics.horizontalAdvance(QStringLiteral("\u2026")) + margins.left() + margins.right(),
        QLabel::minimumSizeHint().height());
}

void ElidedLabel::cacheElidedText(int width)
{
    cachedSource = text();
    cachedWidth = width;
    cachedText = fontMetrics().elidedText(cachedSource, mode, width, Qt::TextShowMnemonic);
}

void ElidedLabel::paintEvent(QPaintEvent* event)
{
    if (mode == Qt::ElideNone) {
        QLabel::paintEvent(event);
        return;
    }
    const QString shown = elidedText();
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), int(alignment()), palette(), isEnabled(), shown, foregroundRole());
}

void ElidedLabel::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    if (mode != Qt::ElideNone)
        cacheElidedText(contentsRect().width());
}

} // namespace TWB::GUI
