#include "platform/cloud/listing_object.h"

namespace TWL::Cloud::Api {

ListingObject::ListingObject(const QJsonObject& object)
    : m_object(object)
{ }

QString ListingObject::name() const
{
    return m_object.value(QStringLiteral("Name")).toString();
}

bool ListingObject::isFolder() const
{
    return m_object.value(QStringLiteral("IsFolder")).toBool();
}

qint64 ListingObject::size() const
{
    return qint64(m_object.value(QStringLiteral("Size")).toDouble());
}

QDateTime ListingObject::modified() const
{
    return QDateTime::fromString(m_object.value(QStringLiteral("ModTime")).toString(), Qt::ISODateWithMs);
}

QJsonObject ListingObject::make(const QString& name, bool folder, qint64 size, const QDateTime& modified)
{
    QJsonObject object {{QStringLiteral("Name"), name}, {QStringLiteral("IsFolder"), folder}};
    if (!folder) {
        object.insert(QStringLiteral("Size"), double(size));
        if (modified.isValid())
            object.insert(QStringLiteral("ModTime"), modified.toUTC().toString(Qt::ISODateWithMs));
    }
    return object;
}

} // namespace TWL::Cloud::Api
