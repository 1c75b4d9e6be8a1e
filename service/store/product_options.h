#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

namespace TWB::Service {

/// The product's options that runs follow, read from options.ini at each run, so that a change in
/// the settings dialog counts from the next run on.
class ProductOptions final
{
public:
    explicit ProductOptions(const QString& optionsFile);

    /// restic's speed limits for a storage of that type: "Local Bandwidth" for file-system
    /// accounts, "Cloud Bandwidth" for the others, in KByte/s both ways; none when unset.
    QStringList bandwidthArguments(int storageType) const;
    /// Whether backups may run on battery power: "BackUpOnBattery", true unless it says "false".
    bool backUpOnBattery() const;

    /// The options a console may read and set: the retention of plans with the default policy, the
    /// speed limits and backups on battery.
    static QStringList knownKeys();
    /// Every known option by key; an unset one is "".
    QMap<QString, QString> values() const;
    /// Stores the values given, all or none, replacing the file in one rename so that a run never reads
    /// half of it. An empty value clears the option. Throws a sentence naming the first unknown key or
    /// unfit value, or the file that could not be written.
    void write(const QMap<QString, QString>& values) const;

private:
    QString m_file;
};

} // namespace TWB::Service
