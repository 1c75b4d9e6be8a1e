#include "platform/plan/factory.h"

#include "platform/plan/backup_disk_image.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/plan_xml_p.h"
#include "platform/plan/restore_disk_image.h"
#include "platform/plan/restore_file.h"

#include <QDomDocument>

#include <memory>

namespace TWB::Info::Plan {

namespace {

std::unique_ptr<Base> makePlan(const QString& className)
{
    if (className == QLatin1String("BackupFile"))
        return std::make_unique<BackupFile>();
    if (className == QLatin1String("BackupDiskImage"))
        return std::make_unique<BackupDiskImage>();
    if (className == QLatin1String("RestoreFile"))
        return std::make_unique<RestoreFile>();
    if (className == QLatin1String("RestoreDiskImage"))
        return std::make_unique<RestoreDiskImage>();
    return nullptr;
}

Base* refuse(QString* error, const QString& why)
{
    if (error)
        *error = why;
    return nullptr;
}

} // namespace

Base* Factory::create(const QDomDocument& document, QString* error)
{
    const QDomElement root = document.documentElement();
    if (root.isNull())
        return refuse(error, QStringLiteral("The document is empty"));
    if (root.tagName() != QLatin1String(Xml::rootElement))
        return refuse(error, QStringLiteral("The document is no plan: its root is <%1>").arg(root.tagName()));
    bool versionOk = false;
    const int version = root.attribute(QStringLiteral("format")).toInt(&versionOk);
    if (!versionOk || version < 1)
        return refuse(error, QStringLiteral("The plan document has no format version"));
    if (version > Xml::formatVersion)
        return refuse(error,
            QStringLiteral("The plan document has format %1; this version reads up to %2")
                .arg(version)
                .arg(Xml::formatVersion));
    std::unique_ptr<Base> plan = makePlan(root.attribute(QStringLiteral("class")));
    if (!plan)
        return refuse(error,
            QStringLiteral("The plan document names no known plan class: \"%1\"")
                .arg(root.attribute(QStringLiteral("class"))));
    QString why;
    if (!plan->readXml(root, &why))
        return refuse(error, QStringLiteral("The plan document is malformed: %1").arg(why));
    return plan.release();
}

Base* Factory::create(const QString& xml, QString* error)
{
    QDomDocument document;
    QString message;
    int line = 0;
    int column = 0;
    if (!document.setContent(xml, &message, &line, &column))
        return refuse(
            error, QStringLiteral("The plan is no XML: %1 at line %2, column %3").arg(message).arg(line).arg(column));
    return create(document, error);
}

} // namespace TWB::Info::Plan
