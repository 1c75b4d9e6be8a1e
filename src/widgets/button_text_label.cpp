#include "widgets/button_text_label_p.h"

#include <QAbstractButton>
#include <QHBoxLayout>
#include <QMouseEvent>

namespace TWB::GUI {

ButtonTextLabel::ButtonTextLabel(const QString& text, QAbstractButton* button, int indent)
    : QLabel(text, button)
    , button(button)
{
    auto layout = new QHBoxLayout(button);
    layout->setContentsMargins(indent, 0, 0, 0);
    layout->addWidget(this);
    installEventFilter(this);
}

bool ButtonTextLabel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != this)
        return QLabel::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        // Taken here, so that the button underneath does not start a press of its own.
        return static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
    case QEvent::MouseButtonRelease: {
        auto mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() != Qt::LeftButton)
            return false;
        if (button->isEnabled() && rect().contains(mouse->pos()))
            button->click();
        return true;
    }
    default:
        return false;
    }
}

} // namespace TWB::GUI
