#include "service/engine/retention_rules.h"

#include <QSettings>

namespace TWB::Service {

using TWB::Info::Plan::Backup;

DefaultRetention DefaultRetention::fromOptions(const QString& optionsFile)
{
    DefaultRetention defaults;
    const QSettings options(optionsFile, QSettings::IniFormat);
    defaults.versions = qMax(0, options.value(QStringLiteral("RetentionNumberOfVersions")).toString().toInt());
    defaults.days = qMax(0, options.value(QStringLiteral("SerializationSupportRetentionTime")).toString().toInt());
    defaults.deleteLastVersion
        = options.value(QStringLiteral("RetentionDeleteLastVersion")).toString() == QLatin1String("true");
    return defaults;
}

QStringList RetentionRules::keepArguments(const Backup::RetentionPolicy& policy, const DefaultRetention& defaults)
{
    int keepLast = 0;
    QString within;
    bool keepNewest = false;
    if (policy.type() == Backup::RetentionPolicy::Custom) {
        if (policy.useKeepVersion())
            keepLast = qMax(1, policy.keepVersion());
        if (policy.useDeleteOlder()) {
            const Backup::RetentionPolicy::FileAge age = policy.deleteFileAge();
            const int count = qMax(1, age.age);
            switch (age.unit) {
            case Backup::RetentionPolicy::FileAge::Days:
                within = QStringLiteral("%1d").arg(count);
                break;
            case Backup::RetentionPolicy::FileAge::Weeks:
                within = QStringLiteral("%1d").arg(count * 7);
                break;
            case Backup::RetentionPolicy::FileAge::Months:
                within = QStringLiteral("%1m").arg(count);
                break;
            }
            keepNewest = policy.useKeepLastVersion();
        }
    } else {
        keepLast = defaults.versions;
        if (defaults.days > 0)
            within = QStringLiteral("%1d").arg(defaults.days);
        keepNewest = !within.isEmpty() && !defaults.deleteLastVersion;
    }
    if (keepNewest && keepLast == 0)
        keepLast = 1;
    QStringList keep;
    if (keepLast > 0)
        keep << QStringLiteral("--keep-last") << QString::number(keepLast);
    if (!within.isEmpty())
        keep << QStringLiteral("--keep-within") << within;
    return keep;
}

QStringList RetentionRules::forgetArguments(const QStringList& keep)
{
    return QStringList {QStringLiteral("forget"), QStringLiteral("--json"), QStringLiteral("--group-by"), QString(),
               QStringLiteral("--prune")}
    + keep;
}

} // namespace TWB::Service
