#include "widgets/image_manager.h"

#include <QGuiApplication>
#include <QPainter>
#include <QSvgRenderer>

namespace TWB::GUI {

QPixmap ImageManager::image(int type)
{
    return image(type, qApp ? qApp->devicePixelRatio() : 1.0);
}

QPixmap ImageManager::image(int type, qreal devicePixelRatio)
{
    const QSize size = imageSize(type);
    if (!size.isValid())
        return QPixmap();
    QSvgRenderer renderer(path(type));
    if (!renderer.isValid())
        return QPixmap();
    const qreal ratio = qMax<qreal>(1.0, devicePixelRatio);
    QPixmap pixmap(size * ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(pixmap.size())));
    painter.end();
    pixmap.setDevicePixelRatio(ratio);
    return pixmap;
}

QSize ImageManager::imageSize(int type)
{
    switch (type) {
    case Logo:
        return QSize(64, 64);
    case CloudsBackground:
        return QSize(400, 240);
    case WizardBackground:
        // Tall enough for the densest wizard page, the schedule with its weekly and daily parts.
        return QSize(170, 620);
    default:
        return QSize();
    }
}

QString ImageManager::path(int type)
{
    switch (type) {
    case Logo:
        return QStringLiteral(":/images/logo.svg");
    case CloudsBackground:
        return QStringLiteral(":/images/background.svg");
    case WizardBackground:
        return QStringLiteral(":/images/wizard_background.svg");
    default:
        return QString();
    }
}

} // namespace TWB::GUI
