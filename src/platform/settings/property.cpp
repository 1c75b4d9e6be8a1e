#include "platform/settings/property.h"

namespace TWB {

Property::Property(const QString& key, const QString& value, QObject* parent)
    : QObject(parent)
    , m_key(key)
    , m_value(value)
{ }

void Property::setValue(const QString& value)
{
    if (value == m_value)
        return;
    m_value = value;
    Q_EMIT valueChanged(m_key, value);
}

} // namespace TWB
