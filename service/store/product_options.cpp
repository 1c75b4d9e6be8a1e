#include "service/store/product_options.h"

#include <QSettings>

namespace TWB::Service {

namespace {
constexpr int fileSystem = 1;
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

} // namespace TWB::Service
