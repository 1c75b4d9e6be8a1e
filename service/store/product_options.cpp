#include "service/store/product_options.h"

#include <QRegularExpression>
#include <QSettings>

#include <limits>

namespace TWB::Service {

namespace {

constexpr int fileSystem = 1;
constexpr qint64 mebibyte = 1024 * 1024;

// What each known option may hold, as the console's settings pages enforce it. Numbers are checked
// against a range as well, so that a run never meets a value it cannot use.
struct Rule
{
    QRegularExpression pattern;
    qint64 minimum = 0;
    qint64 maximum = 0; // 0: no range
};

const QMap<QString, Rule>& rules()
{
    static const QRegularExpression count(QStringLiteral("^\\d{1,10}$"));
    static const QRegularExpression flag(QStringLiteral("^(true|false)$"));
    static const QRegularExpression bandwidth(QStringLiteral("^[1-9]\\d{0,5}$"));
    static const QRegularExpression line(QStringLiteral("^[^\\r\\n]{1,1000}$"));
    static const QRegularExpression email(QStringLiteral("^[^@\\s]+@[^@\\s]+$"));
    static const QRegularExpression host(QStringLiteral("^[A-Za-z0-9.\\-]{1,253}$"));
    static const QRegularExpression path(QStringLiteral("^/[^\\r\\n]{0,4000}$"));
    static const QRegularExpression symlink(QStringLiteral("^(link|skip)$"));
    const qint64 intMax = 2147483647;
    static const QMap<QString, Rule> table = {
        {QStringLiteral("RetentionNumberOfVersions"), {count, 0, 999999999}},
        {QStringLiteral("SerializationSupportRetentionTime"), {count, 0, 999999999}},
        {QStringLiteral("RetentionDeleteLastVersion"), {flag}},
        {QStringLiteral("RetentionUseBackupDate"), {flag}},
        {QStringLiteral("BackupSymlink"), {symlink}},
        {QStringLiteral("Cloud Bandwidth"), {bandwidth}},
        {QStringLiteral("Local Bandwidth"), {bandwidth}},
        {QStringLiteral("BackUpOnBattery"), {flag}},
        {QStringLiteral("MultiThread threads count"), {count, 1, 100}},
        // restic refuses packs above 128 MiB.
        {QStringLiteral("DefaultChunkSize"), {count, 5 * mebibyte, 128 * mebibyte}},
        {QStringLiteral("MultiThread memory usage"), {count, 100 * mebibyte, 999999999 * mebibyte}},
        {QStringLiteral("Glacier queue size"), {count, 100, 999999999}},
        {QStringLiteral("Logs Rotate TimeOut"), {count, 0, intMax}},
        {QStringLiteral("LogPath"), {path}},
        {QStringLiteral("RetryAttempts"), {count, 1, intMax}},
        {QStringLiteral("RetryInterval"), {count, 1, intMax}},
        {QStringLiteral("IgnoreSSL"), {flag}},
        {QStringLiteral("ProxyHost"), {host}},
        {QStringLiteral("ProxyPort"), {count, 1, 65535}},
        {QStringLiteral("WebAccessEnabled"), {flag}},
        {QStringLiteral("WebAccessUseHttps"), {flag}},
        {QStringLiteral("WebAccessPort"), {count, 1, 65535}},
        {QStringLiteral("WebAccessHttpsPort"), {count, 1, 65535}},
        {QStringLiteral("MasterPassword"), {line}},
        {QStringLiteral("Notification email"), {email}},
        {QStringLiteral("Notification user name"), {line}},
    };
    return table;
}

} // namespace

ProductOptions::ProductOptions(const QString& optionsFile)
    : m_file(optionsFile)
{ }

QString ProductOptions::text(const QString& key) const
{
    const QSettings options(m_file, QSettings::IniFormat);
    return options.value(key).toString();
}

qint64 ProductOptions::number(const QString& key) const
{
    bool ok = false;
    const qint64 value = text(key).toLongLong(&ok);
    return ok && value > 0 ? value : 0;
}

int ProductOptions::bandwidth(int storageType) const
{
    return int(
        number(storageType == fileSystem ? QStringLiteral("Local Bandwidth") : QStringLiteral("Cloud Bandwidth")));
}

bool ProductOptions::backUpOnBattery() const
{
    return text(QStringLiteral("BackUpOnBattery")) != QLatin1String("false");
}

bool ProductOptions::ignoreSsl() const
{
    return text(QStringLiteral("IgnoreSSL")) == QLatin1String("true");
}

int ProductOptions::threads() const
{
    return int(number(QStringLiteral("MultiThread threads count")));
}

int ProductOptions::chunkSizeMiB() const
{
    return int(number(QStringLiteral("DefaultChunkSize")) / mebibyte);
}

qint64 ProductOptions::memoryBytes() const
{
    return number(QStringLiteral("MultiThread memory usage"));
}

int ProductOptions::retryAttempts() const
{
    return int(number(QStringLiteral("RetryAttempts")));
}

QString ProductOptions::proxyUrl() const
{
    const QString host = text(QStringLiteral("ProxyHost"));
    const qint64 port = number(QStringLiteral("ProxyPort"));
    if (host.isEmpty() || port == 0)
        return {};
    return QStringLiteral("http://%1:%2").arg(host).arg(port);
}

QString ProductOptions::logPath() const
{
    return text(QStringLiteral("LogPath"));
}

int ProductOptions::logRotateDays() const
{
    return int(qMin<qint64>(number(QStringLiteral("Logs Rotate TimeOut")), std::numeric_limits<int>::max()));
}

QStringList ProductOptions::knownKeys()
{
    return rules().keys();
}

QMap<QString, QString> ProductOptions::values() const
{
    const QSettings options(m_file, QSettings::IniFormat);
    QMap<QString, QString> result;
    for (const QString& key : knownKeys())
        result.insert(key, options.value(key).toString());
    return result;
}

void ProductOptions::check(const QMap<QString, QString>& values)
{
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        if (!rules().contains(it.key()))
            throw QStringLiteral("Unknown option \"%1\"").arg(it.key().left(80));
        if (it.value().isEmpty())
            continue;
        const Rule& rule = rules()[it.key()];
        bool fits = rule.pattern.match(it.value()).hasMatch();
        if (fits && rule.maximum > 0) {
            const qint64 value = it.value().toLongLong(&fits);
            fits = fits && value >= rule.minimum && value <= rule.maximum;
        }
        if (!fits) {
            // The master password is a secret: its value never goes back into a message or a log.
            const QString shown
                = it.key() == QLatin1String("MasterPassword") ? QStringLiteral("…") : it.value().left(80);
            throw QStringLiteral("Option \"%1\" cannot be \"%2\"").arg(it.key(), shown);
        }
    }
}

void ProductOptions::write(const QMap<QString, QString>& values) const
{
    check(values);
    // QSettings writes through QSaveFile: the new file replaces the old one whole.
    QSettings options(m_file, QSettings::IniFormat);
    if (options.status() != QSettings::NoError)
        throw QStringLiteral("Cannot read the options file %1").arg(m_file);
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        if (it.value().isEmpty())
            options.remove(it.key());
        else
            options.setValue(it.key(), it.value());
    }
    options.sync();
    if (options.status() != QSettings::NoError)
        throw QStringLiteral("Cannot write the options file %1").arg(m_file);
}

} // namespace TWB::Service
