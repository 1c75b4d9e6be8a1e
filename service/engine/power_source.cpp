#include "service/engine/power_source.h"

#include <QDir>
#include <QFile>

namespace TWB::Service {

namespace {

QByteArray firstLine(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.read(64).trimmed();
}

} // namespace

QString PowerSource::folder()
{
    const QString chosen = qEnvironmentVariable("TWB_POWER_SUPPLY_DIR");
    return chosen.isEmpty() ? QStringLiteral("/sys/class/power_supply") : chosen;
}

bool PowerSource::onBattery(const QString& folder)
{
    bool mains = false;
    const QStringList supplies = QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& supply : supplies) {
        const QString path = folder + QLatin1Char('/') + supply;
        if (firstLine(path + QStringLiteral("/type")) != "Mains")
            continue;
        // An "online" that does not read says nothing: a backup is not stopped on a guess.
        const QByteArray online = firstLine(path + QStringLiteral("/online"));
        if (online == "1")
            return false;
        mains = mains || online == "0";
    }
    return mains;
}

} // namespace TWB::Service
