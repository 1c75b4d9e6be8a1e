#pragma once

#include "settings/configuration_dialog_base.h"
#include "twbconsole_export.h"

#include <QPointer>
#include <QSet>
#include <QUuid>

class QAbstractItemModel;
class QTreeWidget;

namespace TWB::GUI::Settings {

/// Writes the plans a user picks, every storage account and the product options into a password-sealed
/// ".twbconfiguration" file, through the service's "ExportConfiguration".
class TWBCONSOLE_EXPORT ConfigurationExportDialog final : public ConfigurationDialogBase
{
    Q_OBJECT
    Q_DISABLE_COPY(ConfigurationExportDialog)
public:
    explicit ConfigurationExportDialog(QWidget* parent = nullptr);
    ~ConfigurationExportDialog() override;

    QTreeWidget* planList() const { return m_plans; }
    QLineEdit* confirmEdit() const { return m_confirm; }
    /// The plans that will go into the archive.
    QList<QUuid> checkedPlans() const;

protected:
    QString chooseFile() override;
    QString missing() const override;
    QJsonObject params() const override;
    QString describe(const QJsonObject& data) const override;

private:
    void fillPlans();
    void onConnectionChanged();

    QPointer<QAbstractItemModel> m_model; // shared "TwbPlanTableModel", not owned
    QTreeWidget* m_plans = nullptr; // owned by parent-child
    QLineEdit* m_confirm = nullptr; // owned by parent-child
    QSet<QUuid> m_unchecked; // kept across refills, so that a plan's update keeps the user's choice
};

} // namespace TWB::GUI::Settings
