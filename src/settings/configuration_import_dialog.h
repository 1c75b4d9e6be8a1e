#pragma once

#include "settings/configuration_dialog_base.h"
#include "twbconsole_export.h"

class QCheckBox;

namespace TWB::GUI::Settings {

/// Takes the plans, storage accounts and product options of a ".twbconfiguration" file into this
/// installation, all or nothing, through the service's "ImportConfiguration".
class TWBCONSOLE_EXPORT ConfigurationImportDialog final : public ConfigurationDialogBase
{
    Q_OBJECT
    Q_DISABLE_COPY(ConfigurationImportDialog)
public:
    explicit ConfigurationImportDialog(QWidget* parent = nullptr);
    ~ConfigurationImportDialog() override;

    QCheckBox* replaceBox() const { return m_replace; }

protected:
    QString chooseFile() override;
    QString missing() const override;
    QJsonObject params() const override;
    QString describe(const QJsonObject& data) const override;

private:
    QCheckBox* m_replace = nullptr; // owned by parent-child
};

} // namespace TWB::GUI::Settings
