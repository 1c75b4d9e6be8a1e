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

    /// The speed limit for a storage of that type in KByte/s: "Local Bandwidth" for file-system
    /// accounts, "Cloud Bandwidth" for the others; 0 when unset.
    int bandwidth(int storageType) const;
    /// Whether backups may run on battery power: "BackUpOnBattery", true unless it says "false".
    bool backUpOnBattery() const;
    bool ignoreSsl() const;
    /// Parallel connections to a storage; 0 leaves restic's own default.
    int threads() const;
    /// "DefaultChunkSize" in whole MiB, 0 when unset.
    int chunkSizeMiB() const;
    /// "MultiThread memory usage" in bytes, 0 when unset.
    qint64 memoryBytes() const;
    /// Attempts of one storage request before a run gives up; 0 leaves the back-end's default.
    int retryAttempts() const;
    /// "http://host:port" when a proxy is set, else empty.
    QString proxyUrl() const;
    /// The folder the logs go to; empty for the data folder's log/.
    QString logPath() const;
    /// Days a log file is kept; 0 keeps them all.
    int logRotateDays() const;

    /// Every option a console may read and set.
    static QStringList knownKeys();
    /// Every known option by key; an unset one is "".
    QMap<QString, QString> values() const;
    /// Throws a sentence naming the first unknown key or unfit value.
    static void check(const QMap<QString, QString>& values);
    /// Stores the values given, all or none, replacing the file in one rename so that a run never reads
    /// half of it. An empty value clears the option. Throws a sentence naming the first unknown key or
    /// unfit value, or the file that could not be written.
    void write(const QMap<QString, QString>& values) const;

private:
    QString text(const QString& key) const;
    qint64 number(const QString& key) const;

    QString m_file;
};

} // namespace TWB::Service
