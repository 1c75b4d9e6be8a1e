#pragma once

#include <QString>
#include <QUuid>

namespace TWB::Service {

/// Where runs keep their things inside the data folder.
struct RunPlaces
{
    QString dataDir;

    /// restic's cache.
    QString cacheDir() const { return dataDir + QStringLiteral("/cache/restic"); }
    /// An empty file that stands for rclone's configuration.
    QString rcloneConfig() const { return dataDir + QStringLiteral("/cache/rclone.conf"); }
    /// Where the private folders of runs and synchronisations stand; only the service's user enters it.
    QString runRoot() const { return dataDir + QStringLiteral("/run"); }
    /// A private folder of one run, for lists and key files; removed when the run ends.
    QString runFolder(const QUuid& plan) const
    {
        return runRoot() + QLatin1Char('/') + plan.toString(QUuid::WithoutBraces);
    }
    /// The private folder of an account's synchronisation.
    QString syncFolder(const QUuid& account) const
    {
        return runRoot() + QStringLiteral("/sync-") + account.toString(QUuid::WithoutBraces);
    }
    /// Stands while a retention of the plan may have forgotten snapshots the catalog still names.
    QString retentionMark(const QUuid& plan) const
    {
        return dataDir + QStringLiteral("/cache/retention-") + plan.toString(QUuid::WithoutBraces);
    }
    /// The product's options, where the default retention stands.
    QString optionsFile() const { return dataDir + QStringLiteral("/options.ini"); }
    /// The mail server of notification emails, its password sealed.
    QString noticeSettingsFile() const { return dataDir + QStringLiteral("/notices.ini"); }
};

} // namespace TWB::Service
