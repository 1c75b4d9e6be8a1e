#pragma once

#include "platform/twbplatform_export.h"

#include <QObject>
#include <QString>

namespace TWB {

/// One product option of `DefaultSettings`: its text value, which pages convert themselves.
class TWBPLATFORM_EXPORT Property final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(Property)
public:
    Property(const QString& key, const QString& value, QObject* parent = nullptr);

    QString key() const { return m_key; }
    QString value() const { return m_value; }
    /// Changes the value; `valueChanged` tells the store, which sends it on to the service.
    void setValue(const QString& value);
    /// Takes the value the service holds, without sending it back.
    void take(const QString& value) { m_value = value; }

Q_SIGNALS:
    void valueChanged(const QString& key, const QString& value);

private:
    QString m_key;
    QString m_value;
};

} // namespace TWB
