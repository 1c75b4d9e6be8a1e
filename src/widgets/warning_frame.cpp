#include "widgets/warning_frame.h"

#include "widgets/icon_manager.h"

#include <QHBoxLayout>
#include <QLabel>

namespace TWB::GUI {

WarningFrame::WarningFrame(const QString& text, QWidget* parent)
    : QFrame(parent)
    , icon(new QLabel(this))
    , label(new QLabel(text, this))
{
    // 17: a plain box.
    setFrameStyle(QFrame::Box | QFrame::Plain);
    setAutoFillBackground(true);
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, QColor(255, 255, 192));
    // The plain box is drawn in WindowText; the text keeps the ordinary colour.
    palette.setColor(QPalette::WindowText, QColor(214, 190, 96));
    setPalette(palette);
    QPalette textPalette = label->palette();
    textPalette.setColor(QPalette::WindowText, QPalette().color(QPalette::WindowText));
    label->setPalette(textPalette);

    icon->setPixmap(IconManager::icon(IconManager::Warning).pixmap(IconManager::iconSize(IconManager::Small)));
    icon->setAlignment(Qt::AlignTop);
    label->setWordWrap(true);
    auto layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 6, 8, 6);
    layout->setSpacing(8);
    layout->addWidget(icon, 0, Qt::AlignTop);
    layout->addWidget(label, 1);
}

WarningFrame::~WarningFrame() = default;

QString WarningFrame::text() const
{
    return label->text();
}

void WarningFrame::setText(const QString& text)
{
    label->setText(text);
}

} // namespace TWB::GUI
