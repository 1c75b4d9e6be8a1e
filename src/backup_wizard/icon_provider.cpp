#include "backup_wizard/icon_provider.h"

#include <QApplication>
#include <QFileInfo>
#include <QPainter>
#include <QStyle>
#include <QSvgRenderer>

namespace TWB::GUI {

const QString IconProvider::TwlSymlinkIconPath = QStringLiteral("://images/symlink_icon32.svg");
const QString IconProvider::SystemSymlinkIconPath = QStringLiteral("://images/symlink_icon_system.png");

IconProvider::IconProvider() = default;
IconProvider::~IconProvider() = default;

QIcon IconProvider::icon(IconType type) const
{
    QStyle::StandardPixmap pixmap = QStyle::SP_FileIcon;
    switch (type) {
    case Computer:
        pixmap = QStyle::SP_ComputerIcon;
        break;
    case Drive:
        pixmap = QStyle::SP_DriveHDIcon;
        break;
    case Folder:
        pixmap = QStyle::SP_DirIcon;
        break;
    case Network:
        pixmap = QStyle::SP_DriveNetIcon;
        break;
    case Trashcan:
        pixmap = QStyle::SP_TrashIcon;
        break;
    case Desktop:
        pixmap = QStyle::SP_DesktopIcon;
        break;
    case File:
        break;
    }
    return QApplication::style()->standardIcon(pixmap);
}

QIcon IconProvider::icon(const QFileInfo& info) const
{
    return icon(info.isDir() ? Folder : File, info.isSymLink());
}

QIcon IconProvider::icon(IconType type, bool symlink) const
{
    const int key = int(type) * 2 + (symlink ? 1 : 0);
    auto found = cache.constFind(key);
    if (found != cache.constEnd())
        return *found;
    QIcon result = icon(type);
    if (symlink)
        drawSymlinkIconOnTop(result);
    cache.insert(key, result);
    return result;
}

void IconProvider::drawSymlinkIconOnTop(QIcon& icon)
{
    // Rendered from the vector artwork into each pixmap, so the badge is sharp at any pixel ratio.
    QSvgRenderer badge(TwlSymlinkIconPath);
    QIcon result;
    const QList<QSize> sizes = icon.availableSizes();
    for (const QSize& size : sizes) {
        QPixmap pixmap = icon.pixmap(size);
        if (pixmap.isNull())
            continue;
        QPainter painter(&pixmap);
        // The artwork keeps its mark in the lower left corner of a full icon square.
        badge.render(&painter, QRectF(QPointF(0, 0), QSizeF(pixmap.size()) / pixmap.devicePixelRatio()));
        painter.end();
        result.addPixmap(pixmap);
    }
    if (!result.isNull())
        icon = result;
}

QIcon IconProvider::symlinkIcon()
{
    return QIcon(TwlSymlinkIconPath);
}

} // namespace TWB::GUI
