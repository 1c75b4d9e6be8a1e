#pragma once

#include "platform/plan/backup.h"

#include <QString>
#include <QStringList>

namespace TWB::Service {

/// The product-wide retention that plans with the default policy follow, from options.ini.
struct DefaultRetention
{
    int versions = 0; // "RetentionNumberOfVersions"; 0 keeps all
    int days = 0; // "SerializationSupportRetentionTime", in days; 0 keeps all
    bool deleteLastVersion = false; // "RetentionDeleteLastVersion"

    static DefaultRetention fromOptions(const QString& optionsFile);
};

/// A plan's retention as restic's "forget": whole snapshots are kept or dropped, never single
/// files. Keeping a number of versions keeps that many snapshots; deleting versions older than an
/// age keeps the snapshots within that age of the newest one; keeping the last version keeps the
/// newest snapshot. restic keeps a snapshot that any of the rules keeps.
class RetentionRules final
{
public:
    /// The keep rules for "restic forget"; empty when the plan keeps everything.
    static QStringList keepArguments(
        const TWB::Info::Plan::Backup::RetentionPolicy& policy, const DefaultRetention& defaults);
    /// The whole "forget" call: every snapshot of the plan's repository is one group, since a
    /// repository holds one plan however its items changed; pruning follows at once.
    static QStringList forgetArguments(const QStringList& keep);
};

} // namespace TWB::Service
