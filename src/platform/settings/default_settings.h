#pragma once

#include "platform/twbplatform_export.h"

#include <QObject>
#include <QPointer>
#include <QString>

class QSettings;

namespace TWB {

/// The product's options as the console keeps them for the user: string values by key. A key never
/// written reads as an empty string. Kept in "default_settings.ini" of the user's configuration folder,
/// or of $TWB_CONSOLE_SETTINGS_DIR when that is set.
class TWBPLATFORM_EXPORT DefaultSettings final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(DefaultSettings)
public:
    static QPointer<DefaultSettings> instance();
    ~DefaultSettings() override;

    QString value(const QString& key) const;
    void setValue(const QString& key, const QString& value);

    QString getNotifEmail() const { return value(QStringLiteral("Notification email")); }
    void setNotifEmail(const QString& email) { setValue(QStringLiteral("Notification email"), email); }
    QString getNotifUserName() const { return value(QStringLiteral("Notification user name")); }
    void setNotifUserName(const QString& name) { setValue(QStringLiteral("Notification user name"), name); }
    /// Size of an upload chunk in bytes, as text.
    QString getChunkSize() const { return value(QStringLiteral("DefaultChunkSize")); }
    void setChunkSize(const QString& bytes) { setValue(QStringLiteral("DefaultChunkSize"), bytes); }

    /// Where the values are kept.
    QString fileName() const;

private:
    DefaultSettings();
    QSettings* settings; // owned
};

} // namespace TWB
