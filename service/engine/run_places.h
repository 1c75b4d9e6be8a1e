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
    /// A private folder of one run, for lists and key files; removed when the run ends.
    QString runFolder(const QUuid& plan) const
    {
        return dataDir + QStringLiteral("/run/") + plan.toString(QUuid::WithoutBraces);
    }
    /// The product's options, where the default retention stands.
    QString optionsFile() const { return dataDir + QStringLiteral("/options.ini"); }
};

} // namespace TWB::Service
