#pragma once

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

private:
    QString m_file;
};

} // namespace TWB::Service
