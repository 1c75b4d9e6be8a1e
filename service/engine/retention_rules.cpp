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
    defaults.byBackupDate
        = options.value(QStringLiteral("RetentionUseBackupDate")).toString() != QLatin1String("false");
    return defaults;
}

FileRetention RetentionRules::of(
    const Backup::RetentionPolicy& policy, const DefaultRetention& defaults, const QDateTime& now)
{
    FileRetention rules;
    const QDateTime utc = now.toUTC();
    if (policy.type() == Backup::RetentionPolicy::Custom) {
        if (policy.useKeepVersion())
            rules.keepVersions = qMax(1, policy.keepVersion());
        if (policy.useDeleteOlder()) {
            const Backup::RetentionPolicy::FileAge age = policy.deleteFileAge();
            const int count = qMax(1, age.age);
            QDateTime cutoff;
            switch (age.unit) {
            case Backup::RetentionPolicy::FileAge::Days:
                cutoff = utc.addDays(-count);
                break;
            case Backup::RetentionPolicy::FileAge::Weeks:
                cutoff = utc.addDays(-7 * count);
                break;
            case Backup::RetentionPolicy::FileAge::Months:
                cutoff = utc.addMonths(-count);
                break;
            }
            rules.olderThanMs = cutoff.toMSecsSinceEpoch();
            rules.ageFromModification = !policy.useBackupDate();
            // By backup date the last version always stays, whatever the check box said.
            rules.keepLast = policy.useKeepLastVersion() || policy.useBackupDate();
        }
    } else {
        rules.keepVersions = defaults.versions;
        if (defaults.days > 0) {
            rules.olderThanMs = utc.addDays(-defaults.days).toMSecsSinceEpoch();
            rules.ageFromModification = !defaults.byBackupDate;
            rules.keepLast = !defaults.deleteLastVersion;
        }
    }
    // Deleted files stay unless the plan lets them go, and then only after its days.
    if (policy.useDeleteLocaly())
        rules.deletedBeforeMs = utc.addDays(-qMax(0, policy.deleteLocalyAfter())).toMSecsSinceEpoch();
    return rules;
}

QStringList RetentionRules::forgetArguments(const QStringList& snapshots)
{
    return QStringList {QStringLiteral("forget"), QStringLiteral("--prune")} + snapshots;
}

} // namespace TWB::Service
