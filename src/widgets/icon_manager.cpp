#include "widgets/icon_manager.h"

#include <QHash>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace TWB::GUI {

namespace {

QString imagePath(const char* name)
{
    return QStringLiteral(":/images/") + QLatin1String(name) + QStringLiteral(".svg");
}

} // namespace

QIcon IconManager::icon(int type, int size)
{
    const QString file = path(type);
    return file.isEmpty() ? QIcon() : render(file, size);
}

QIcon IconManager::storage(int storage, int size)
{
    const QString file = storagePath(storage);
    return file.isEmpty() ? QIcon() : render(file, size);
}

QSize IconManager::iconSize(int size)
{
    switch (size) {
    case Medium:
        return QSize(24, 24);
    case Large:
        return QSize(32, 32);
    case Huge:
        return QSize(48, 48);
    default:
        return QSize(16, 16);
    }
}

QString IconManager::path(int type)
{
    switch (type) {
    case Add:
        return imagePath("add");
    case Remove:
        return imagePath("remove");
    case Edit:
        return imagePath("edit");
    case Warning:
        return imagePath("warning");
    case RightArrow:
        return imagePath("right_arrow");
    case BackupPlan:
        return imagePath("plan_backup");
    case BackupPlanFail:
        return imagePath("plan_backup_fail");
    case BackupPlanRunning:
        return imagePath("plan_backup_running");
    case BackupPlanWarning:
        return imagePath("plan_backup_warning");
    case BackupPlanSuccess:
        return imagePath("plan_backup_success");
    case RestorePlan:
        return imagePath("plan_restore");
    case RestorePlanFail:
        return imagePath("plan_restore_fail");
    case RestorePlanRunning:
        return imagePath("plan_restore_running");
    case RestorePlanWarning:
        return imagePath("plan_restore_warning");
    case RestorePlanSuccess:
        return imagePath("plan_restore_success");
    case FileUploaded:
        return imagePath("file_uploaded");
    case FileDeleted:
        return imagePath("file_deleted");
    case FilePurged:
        return imagePath("file_purged");
    default:
        return QString();
    }
}

QString IconManager::storagePath(int storage)
{
    switch (storage) {
    case AmazonS3:
        return imagePath("storage_amazon_s3");
    case AzureBlob:
        return imagePath("storage_azure");
    case GoogleStorage:
        return imagePath("storage_google");
    case Openstack:
        return imagePath("storage_openstack");
    case OracleCloud:
        return imagePath("storage_oracle");
    case Rackspace:
        return imagePath("storage_rackspace");
    case SoftLayer:
        return imagePath("storage_softlayer");
    case HPCloud:
        return imagePath("storage_hp_cloud");
    case HPHelion:
        return imagePath("storage_hp_helion");
    case FileSystem:
        return imagePath("storage_file_system");
    case Sftp:
        return imagePath("storage_sftp");
    case S3Compatible:
        return imagePath("storage_s3_compatible");
    case AmazonS3Chinese:
        return imagePath("storage_amazon_s3_china");
    case CenturyLink:
        return imagePath("storage_centurylink");
    case Cloudian:
        return imagePath("storage_cloudian");
    case DreamObjects:
        return imagePath("storage_dreamobjects");
    case Scality:
        return imagePath("storage_scality");
    case ThinkOn:
        return imagePath("storage_thinkon");
    case Verizon:
        return imagePath("storage_verizon");
    case Wasabi:
        return imagePath("storage_wasabi");
    case BackBlaze:
        return imagePath("storage_backblaze");
    case Minio:
        return imagePath("storage_minio");
    case AlibabaCloud:
        return imagePath("storage_alibaba");
    default:
        return QString();
    }
}

QIcon IconManager::render(const QString& path, int size)
{
    // Views ask for the same few icons on every repaint; rendering SVG each time would show in scrolling.
    static QHash<QString, QIcon> cache;
    const QString key = path + QLatin1Char('#') + QString::number(size);
    const auto cached = cache.constFind(key);
    if (cached != cache.constEnd())
        return *cached;

    QSvgRenderer renderer(path);
    if (!renderer.isValid())
        return QIcon();
    const QSize logical = iconSize(size);
    QIcon result;
    // Pixmaps at 1x and 2x of the logical size: QIcon picks the one that matches the screen, so neither
    // is ever scaled.
    for (const int ratio : {1, 2}) {
        QPixmap pixmap(logical * ratio);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(logical * ratio)));
        painter.end();
        result.addPixmap(pixmap);
    }
    cache.insert(key, result);
    return result;
}

} // namespace TWB::GUI
