#pragma once

#include "platform/plan/backup.h"
#include "service/catalog/snapshot_index.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace TWB::Service {

/// The product-wide retention that plans with the default policy follow, from options.ini.
struct DefaultRetention
{
    int versions = 0; // "RetentionNumberOfVersions"; 0 keeps all
    int days = 0; // "SerializationSupportRetentionTime", in days; 0 keeps all
    bool deleteLastVersion = false; // "RetentionDeleteLastVersion"
    bool byBackupDate = true; // "RetentionUseBackupDate"

    static DefaultRetention fromOptions(const QString& optionsFile);
};

/// A plan's retention as rules on the versions of each file. restic keeps or forgets whole
/// snapshots, so the catalog, which knows the snapshots that hold each version, decides which
/// snapshots hold nothing that must stay; only those are forgotten.
class RetentionRules final
{
public:
    /// The plan's rules as they stand at `now`.
    static FileRetention of(
        const TWB::Info::Plan::Backup::RetentionPolicy& policy, const DefaultRetention& defaults, const QDateTime& now);
    /// The "forget" call for the snapshots given; pruning follows at once.
    static QStringList forgetArguments(const QStringList& snapshots);
};

} // namespace TWB::Service
