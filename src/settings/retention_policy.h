#pragma once

#include "settings/service_settings_page.h"
#include "twbconsole_export.h"

class QCheckBox;
class QComboBox;
class QSpinBox;

namespace TWB::GUI::Settings {

/// The retention that every plan with the default policy follows. The values belong to the service,
/// which reads them at each run: they are loaded through "GetProductOptions" and each change is
/// saved at once through "SetProductOptions".
class TWBCONSOLE_EXPORT RetentionPolicy : public ServiceSettingsPage
{
    Q_OBJECT
    Q_DISABLE_COPY(RetentionPolicy)
public:
    /// Versions of each file to keep; "0" keeps all.
    static const char* KeyNumberOfVersions;
    /// Days a version stays; "0" keeps all.
    static const char* KeyRetentionTime;
    /// "true" lets the age rule remove the last version of a file.
    static const char* KeyDeleteLastVersion;
    /// "true" counts the age from the backup date, "false" from the modification date.
    static const char* KeyUseBackupDate;

    explicit RetentionPolicy(QWidget* parent = nullptr);

protected:
    void fill(const QJsonObject& options) override;
    QString failureText(const QString& reason) const override;

private:
    void onDateTypeChanged();
    void save();

    QCheckBox* deleteOlder; // owned by parent-child
    QSpinBox* days; // owned by parent-child
    QComboBox* dateType; // owned by parent-child
    QCheckBox* keepLast; // owned by parent-child
    QCheckBox* keepVersions; // owned by parent-child
    QSpinBox* versions; // owned by parent-child
};

} // namespace TWB::GUI::Settings
