#pragma once

#include "platform/twbplatform_export.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace TWB::Defines {

/// Product identity and feature switches: a key to value table.
/// Compiled-in defaults are overridden by the ini file named by rebrandingFile().
class TWBPLATFORM_EXPORT Rebranding final
{
public:
    Rebranding();

    /// The value of one key; an invalid QVariant for a key that is not declared.
    QVariant value(const QString& key) const;
    /// Reloads the table from the defaults and the rebranding file.
    void update();

    /// The 33 declared keys, in their declared order.
    static const QStringList& keys();
    /// $TWB_REBRANDING_FILE, else <share>/rebranding.ini.
    static QString rebrandingFile();

private:
    QHash<QString, QVariant> m_values;
};

} // namespace TWB::Defines
