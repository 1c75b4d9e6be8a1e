#include "widgets/clouds_image_widget_standalone.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSvgWidget>
#include <QVBoxLayout>

namespace TWB::GUI {

CloudsImageWidgetStandalone::CloudsImageWidgetStandalone(QWidget* parent)
    : CloudsImageWidget(parent)
    , captionLabel(new QLabel(tr("Built for cloud storage:"), this))
{
    QFont font = captionLabel->font();
    font.setBold(true);
    captionLabel->setFont(font);
    captionLabel->setAlignment(Qt::AlignHCenter);
    QPalette palette = captionLabel->palette();
    palette.setColor(QPalette::WindowText, QColor(40, 60, 90));
    captionLabel->setPalette(palette);

    auto logos = new QHBoxLayout;
    logos->setSpacing(12);
    logos->addStretch(1);
    for (const char* path : {"://images/s3.svg", "://images/google.svg", "://images/azure.svg"}) {
        auto logo = new QSvgWidget(QLatin1String(path), this);
        // Vector drawing at the artwork's own size, sharp at any pixel ratio.
        logo->setFixedSize(logo->sizeHint());
        logos->addWidget(logo);
    }
    logos->addStretch(1);

    auto layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 16);
    layout->setSpacing(10);
    layout->addStretch(1);
    layout->addWidget(captionLabel);
    layout->addLayout(logos);
}

CloudsImageWidgetStandalone::~CloudsImageWidgetStandalone() = default;

QString CloudsImageWidgetStandalone::caption() const
{
    return captionLabel->text();
}

} // namespace TWB::GUI
