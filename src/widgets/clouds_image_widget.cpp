#include "widgets/clouds_image_widget.h"

#include <QPainter>
#include <QSvgRenderer>

namespace TWB::GUI {

CloudsImageWidget::CloudsImageWidget(QWidget* parent)
    : QWidget(parent)
    , background(new QSvgRenderer(QStringLiteral("://images/background.svg"), this))
{ }

CloudsImageWidget::~CloudsImageWidget() = default;

QSize CloudsImageWidget::sizeHint() const
{
    return background->defaultSize();
}

void CloudsImageWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QSizeF artwork = background->defaultSize();
    if (artwork.isEmpty())
        return;
    // Scale to cover the panel and keep the proportions; what overflows is cut at the edges.
    const QSizeF target = artwork.scaled(size(), Qt::KeepAspectRatioByExpanding);
    const QPointF origin((width() - target.width()) / 2.0, (height() - target.height()) / 2.0);
    background->render(&painter, QRectF(origin, target));
}

} // namespace TWB::GUI
