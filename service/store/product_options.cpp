#include "service/store/product_options.h"

#include <QRegularExpression>
#include <QSettings>

namespace TWB::Service {

namespace {

constexpr int fileSystem = 1;

// What each known option may hold, as the console's settings pages enforce it.
const QMap<QString, QRegularExpression>& patterns()
{
    static const QRegularExpression count(QStringLiteral("^\\d{1,9}$"));
    static const QRegularExpression flag(QStringLiteral("^(true|false)$"));
    static const QRegularExpression bandwidth(QStringLiteral("^[1-9]\\d{0,5}$"));
    static const QMap<QString, QRegularExpression> table = {
        {QStringLiteral("RetentionNumberOfVersions"), count},
        {QStringLiteral("SerializationSupportRetentionTime"), count},
        {QStringLiteral("RetentionDeleteLastVersion"), flag},
        {QStringLiteral("RetentionUseBackupDate"), flag},
        {QStringLiteral("Cloud Bandwidth"), bandwidth},
        {QStringLiteral("Local Bandwidth"), bandwidth},
        {QStringLiteral("BackUpOnBattery"), flag},
    };
    return table;
}

} // namespace

ProductOptions::ProductOptions(const QString& optionsFile)
    : m_file(optionsFile)
{ }

QStringList ProductOptions::bandwidthArguments(int storageType) const
{
    const QSettings options(m_file, QSettings::IniFormat);
    const QString key
        = storageType == fileSystem ? QStringLiteral("Local Bandwidth") : QStringLiteral("Cloud Bandwidth");
    bool ok = false;
    const int limit = options.value(key).toString().toInt(&ok);
    if (!ok || limit <= 0)
        return {};
    return {QStringLiteral("--limit-upload"), QString::number(limit), QStringLiteral("--limit-download"),
        QString::number(limit)};
}

bool ProductOptions::backUpOnBattery() const
{
    const QSettings options(m_file, QSettings::IniFormat);
    return options.value(QStringLiteral("BackUpOnBattery")).toString() != QLatin1String("false");
}

QStringList ProductOptions::knownKeys()
{
    return patterns().keys();
}

QMap<QString, QString> ProductOptions::values() const
{
    const QSettings options(m_file, QSettings::IniFormat);
    QMap<QString, QString> result;
    for (const QString& key : knownKeys())
        result.insert(key, options.value(key).toString());
    return result;
}

void ProductOptions::write(const QMap<QString, QString>& values) const
{
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        if (!patterns().contains(it.key()))
            throw QStringLiteral("Unknown option \"%1\"").arg(it.key().left(80));
        if (!it.value().isEmpty() && !patterns().value(it.key()).match(it.value()).hasMatch())
            throw QStringLiteral("Option \"%1\" cannot be \"%2\"").arg(it.key(), it.value().left(80));
    }
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
