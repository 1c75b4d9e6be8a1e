#pragma once

#include "platform/twbplatform_export.h"

#include <QDateTime>
#include <QJsonObject>
#include <QString>

namespace TWL::Cloud::Api {

/// One entry of Operation::Listing::data(): an object, or a folder (a common prefix) when listed with a
/// delimiter. The entry's keys are "Name" (the full name in the container; a folder's ends with "/"),
/// "IsFolder", "Size" and "ModTime" (ISO 8601, absent for folders).
class TWBPLATFORM_EXPORT ListingObject final
{
public:
    explicit ListingObject(const QJsonObject& object);

    /// The full name in the container, as the listing's prefix began it; a folder's ends with "/".
    QString name() const;
    bool isFolder() const;
    qint64 size() const;
    QDateTime modified() const;

    static QJsonObject make(const QString& name, bool folder, qint64 size, const QDateTime& modified);

private:
    QJsonObject m_object;
};

} // namespace TWL::Cloud::Api
