#pragma once

#include "platform/settings/property.h"
#include "platform/twbplatform_export.h"

#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>

#include <optional>

namespace TWB {

/// The product's options: string values by key. The service holds them, because its runs follow them;
/// this is the console's copy, filled by `load()` through "GetProductOptions". A setter changes the copy
/// at once and sends the value through "SetProductOptions". A key the service did not give reads as an
/// empty string.
class TWBPLATFORM_EXPORT DefaultSettings final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(DefaultSettings)
public:
    /// Built on first use, which also asks the service for the values.
    static QPointer<DefaultSettings> instance();
    ~DefaultSettings() override;

    QMap<QString, Property*> items() const { return m_items; }
    QString value(const QString& key) const;
    void setValue(const QString& key, const QString& value);

    /// Threads used for one backup plan, 1 to 100.
    QString getThreadCount() const { return value(QStringLiteral("MultiThread threads count")); }
    void setThreadCount(const QString& value) { setValue(QStringLiteral("MultiThread threads count"), value); }
    /// Size of an upload chunk in bytes.
    QString getChunkSize() const { return value(QStringLiteral("DefaultChunkSize")); }
    void setChunkSize(const QString& value) { setValue(QStringLiteral("DefaultChunkSize"), value); }
    /// Memory a plan may use, in bytes.
    QString getMemoryMaxUsage() const { return value(QStringLiteral("MultiThread memory usage")); }
    void setMemoryMaxUsage(const QString& value) { setValue(QStringLiteral("MultiThread memory usage"), value); }
    QString getGlacierQueueSize() const { return value(QStringLiteral("Glacier queue size")); }
    void setGlacierQueueSize(const QString& value) { setValue(QStringLiteral("Glacier queue size"), value); }
    QString getLogsRotateTimeout() const { return value(QStringLiteral("Logs Rotate TimeOut")); }
    void setLogsRotateTimeout(const QString& value) { setValue(QStringLiteral("Logs Rotate TimeOut"), value); }
    /// Speed limit with cloud storage in KByte/s; empty for none.
    QString getCloudBandwidth() const { return value(QStringLiteral("Cloud Bandwidth")); }
    void setCloudBandwidth(const QString& value) { setValue(QStringLiteral("Cloud Bandwidth"), value); }
    /// Speed limit with local storage in KByte/s; empty for none.
    QString getLocalBandwidth() const { return value(QStringLiteral("Local Bandwidth")); }
    void setLocalBandwidth(const QString& value) { setValue(QStringLiteral("Local Bandwidth"), value); }
    QString getConnectionRetryAttempts() const { return value(QStringLiteral("RetryAttempts")); }
    void setConnectionRetryAttempts(const QString& value) { setValue(QStringLiteral("RetryAttempts"), value); }
    /// Time between attempts in msec.
    QString getConnectionRetryInterval() const { return value(QStringLiteral("RetryInterval")); }
    void setConnectionRetryInterval(const QString& value) { setValue(QStringLiteral("RetryInterval"), value); }
    QString getIgnoreSSL() const { return value(QStringLiteral("IgnoreSSL")); }
    void setIgnoreSSL(const QString& value) { setValue(QStringLiteral("IgnoreSSL"), value); }
    /// Proxy server of cloud connections; empty for none.
    QString getProxyHost() const { return value(QStringLiteral("ProxyHost")); }
    void setProxyHost(const QString& value) { setValue(QStringLiteral("ProxyHost"), value); }
    QString getProxyPort() const { return value(QStringLiteral("ProxyPort")); }
    void setProxyPort(const QString& value) { setValue(QStringLiteral("ProxyPort"), value); }
    QString getWebAccessUseHttp() const { return value(QStringLiteral("WebAccessEnabled")); }
    void setWebAccessUseHttp(const QString& value) { setValue(QStringLiteral("WebAccessEnabled"), value); }
    QString getWebAccessUseHttps() const { return value(QStringLiteral("WebAccessUseHttps")); }
    void setWebAccessUseHttps(const QString& value) { setValue(QStringLiteral("WebAccessUseHttps"), value); }
    QString getWebAccessHttpPort() const { return value(QStringLiteral("WebAccessPort")); }
    void setWebAccessHttpPort(const QString& value) { setValue(QStringLiteral("WebAccessPort"), value); }
    QString getWebAccessHttpsPort() const { return value(QStringLiteral("WebAccessHttpsPort")); }
    void setWebAccessHttpsPort(const QString& value) { setValue(QStringLiteral("WebAccessHttpsPort"), value); }
    QString getMasterPassword() const { return value(QStringLiteral("MasterPassword")); }
    void setMasterPassword(const QString& value) { setValue(QStringLiteral("MasterPassword"), value); }
    QString getBackupSymlink() const { return value(QStringLiteral("BackupSymlink")); }
    void setBackupSymlink(const QString& value) { setValue(QStringLiteral("BackupSymlink"), value); }
    QString getRetentionUseBackupDate() const { return value(QStringLiteral("RetentionUseBackupDate")); }
    void setRetentionUseBackupDate(const QString& value) { setValue(QStringLiteral("RetentionUseBackupDate"), value); }
    QString getRetentionNumberOfVersions() const { return value(QStringLiteral("RetentionNumberOfVersions")); }
    void setRetentionNumberOfVersions(const QString& value)
    {
        setValue(QStringLiteral("RetentionNumberOfVersions"), value);
    }
    QString getRetentionDeleteLastVersion() const { return value(QStringLiteral("RetentionDeleteLastVersion")); }
    void setRetentionDeleteLastVersion(const QString& value)
    {
        setValue(QStringLiteral("RetentionDeleteLastVersion"), value);
    }
    QString getSerializationSupportRetentionTime() const
    {
        return value(QStringLiteral("SerializationSupportRetentionTime"));
    }
    void setSerializationSupportRetentionTime(const QString& value)
    {
        setValue(QStringLiteral("SerializationSupportRetentionTime"), value);
    }
    QString getNotifEmail() const { return value(QStringLiteral("Notification email")); }
    void setNotifEmail(const QString& value) { setValue(QStringLiteral("Notification email"), value); }
    QString getNotifUserName() const { return value(QStringLiteral("Notification user name")); }
    void setNotifUserName(const QString& value) { setValue(QStringLiteral("Notification user name"), value); }
    QString getBackUpOnBattery() const { return value(QStringLiteral("BackUpOnBattery")); }
    void setBackUpOnBattery(const QString& value) { setValue(QStringLiteral("BackUpOnBattery"), value); }
    /// The log folder has no getter: it is read through `TWB::Defines::AppPath::logs()`.
    void setLogPath(const QString& value) { setValue(QStringLiteral("LogPath"), value); }

    /// For a program that writes a log file: from the next load on, its log follows "LogPath" and
    /// "Logs Rotate TimeOut" as the service holds them. A folder it cannot use is logged once.
    void followLogOptions();

public Q_SLOTS:
    /// Asks the service for every option; `loaded` follows, or `error`.
    void load();

Q_SIGNALS:
    void loaded();
    /// The service stored the value of `key`.
    void saved(const QString& key);
    /// The service could not be asked, or refused a value, which the next `load` puts right.
    void error(const QString& text);

private:
    DefaultSettings();
    void onLoadResult();
    void onSaveResult();
    void send(const QString& key, const QString& value);
    void applyLogOptions();
    Property* property(const QString& key);

    QMap<QString, Property*> m_items; // owned by parent-child
    /// Values sent and not yet answered, by key.
    QMap<QString, int> m_sending;
    /// "LogPath" and "Logs Rotate TimeOut" as last given to the log; null until followLogOptions().
    std::optional<QPair<QString, QString>> m_logOptions;
};

} // namespace TWB
