#include "wizard/base_wizard.h"

#include <QPainter>
#include <QPixmap>
#include <QShowEvent>

namespace TWB::GUI {

namespace {
qreal ratioOf(const QPixmap& pixmap)
{
    const qreal ratio = pixmap.devicePixelRatio();
    return ratio == 0 ? 1.0 : ratio;
}
} // namespace

BaseWizard::BaseWizard(QWidget* parent)
    : QWizard(parent)
{ }

void BaseWizard::fitHeader(const QPixmap& banner)
{
    const qreal ratio = ratioOf(banner);
    const int width = int(banner.width() / ratio);
    headerWidget->setFixedHeight(int(banner.height() / ratio) + 2);
    headerWidget->setFixedWidth(width);
    setFixedWidth(width);
}

void BaseWizard::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (wizardStyle() != QWizard::ModernStyle || !currentPage())
        return;
    const QPixmap banner = currentPage()->pixmap(QWizard::BannerPixmap);
    if (banner.isNull())
        return;
    if (!headerWidget) {
        // QWizard lays the banner out in a private frame two pixels higher than the pixmap.
        const auto children = findChildren<QWidget*>();
        for (QWidget* child : children) {
            if (child->height() == banner.height() + 2) {
                headerWidget = child;
                break;
            }
        }
    }
    if (headerWidget)
        fitHeader(banner);
}

void BaseWizard::paintEvent(QPaintEvent* event)
{
    bool drawn = false;
    if (wizardStyle() == QWizard::MacStyle && currentPage()) {
        const QPixmap background = currentPage()->pixmap(QWizard::BackgroundPixmap);
        if (!background.isNull()) {
            drawn = true;
            const qreal ratio = ratioOf(background);
            QPainter painter(this);
            painter.drawPixmap(0, int(height() - background.height() / ratio), background);
            painter.end();
            setFixedHeight(qRound(background.height() / ratio));
        }
    }
    // In this style QWizard paints nothing but the background, and paints it at the pixmap's device
    // size, which is twice too tall on a high-density screen.
    if (!drawn)
        QWizard::paintEvent(event);
    if (currentPage() && headerWidget) {
        const QPixmap banner = currentPage()->pixmap(QWizard::BannerPixmap);
        if (!banner.isNull())
            fitHeader(banner);
    }
}

} // namespace TWB::GUI
