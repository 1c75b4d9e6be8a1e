#include "widgets/label_button.h"

#include <QMouseEvent>

namespace TWB::GUI {

LabelButton::LabelButton(const QColor& normal, const QColor& hover, QWidget* parent)
    : QLabel(parent)
    , normal(normal)
    , hover(hover)
{
    setMouseTracking(true);
    setCursor(Qt::PointingHandCursor);
    setTextColor(normal);
}

LabelButton::~LabelButton() = default;

void LabelButton::enterEvent(QEvent* event)
{
    setTextColor(hover);
    QLabel::enterEvent(event);
}

void LabelButton::leaveEvent(QEvent* event)
{
    setTextColor(normal);
    QLabel::leaveEvent(event);
}

void LabelButton::mouseReleaseEvent(QMouseEvent* event)
{
    QLabel::mouseReleaseEvent(event);
    Q_EMIT clicked();
}

void LabelButton::setTextColor(const QColor& color)
{
    QPalette palette = this->palette();
    palette.setColor(QPalette::WindowText, color);
    setPalette(palette);
}

} // namespace TWB::GUI
