#include "settings/configuration_export_dialog.h"

#include "frame/base_model.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "platform/communication/connection_manager.h"

#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHeaderView>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

using TWB::Common::Communication::ConnectionManager;

namespace {

const int idColumn = 0;
const int nameColumn = 1;
const int subTypeColumn = 2;
const QString suffix = QStringLiteral(".twbconfiguration");

} // namespace

ConfigurationExportDialog::ConfigurationExportDialog(QWidget* parent)
    : ConfigurationDialogBase(
        {tr("Export configuration"),
            tr("The archive holds the plans checked below, every storage account with its "
               "passwords and keys, and the product options. It is sealed with the password "
               "you give here: without it nobody, you included, can open the archive."),
            tr("Export"), QStringLiteral("ExportConfiguration"), QStringLiteral("Communication manager does not exist"),
            QStringLiteral("Commnunication command does not registered")},
        parent)
{
    m_confirm = addPasswordRow(tr("Confirm password:"));
    m_plans = new QTreeWidget(this);
    m_plans->setHeaderLabels({tr("Plan"), tr("Kind")});
    m_plans->setRootIsDecorated(false);
    m_plans->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_plans->header()->setStretchLastSection(false);
    m_plans->setMinimumHeight(140);
    mainLayout()->insertWidget(1, new QLabel(tr("Plans to export:"), this));
    mainLayout()->insertWidget(2, m_plans);

    if (auto manager = ModelManager::instance())
        m_model = manager->create(ModelNames::PlanTable);
    if (m_model) {
        connect(m_model, &QAbstractItemModel::modelReset, this, &ConfigurationExportDialog::fillPlans);
        connect(m_model, &QAbstractItemModel::layoutChanged, this, &ConfigurationExportDialog::fillPlans);
        connect(m_model, &QAbstractItemModel::rowsInserted, this, &ConfigurationExportDialog::fillPlans);
        connect(m_model, &QAbstractItemModel::rowsRemoved, this, &ConfigurationExportDialog::fillPlans);
        // Runs change the other columns many times a second; only a new name is news here.
        connect(m_model, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex& topLeft, const QModelIndex& bottomRight) {
                if (topLeft.column() <= nameColumn && nameColumn <= bottomRight.column())
                    fillPlans();
            });
    }
    connect(m_plans, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item) {
        const QUuid id(item->data(0, Qt::UserRole).toString());
        if (item->checkState(0) == Qt::Checked)
            m_unchecked.remove(id);
        else
            m_unchecked.insert(id);
    });
    if (auto connection = ConnectionManager::instance()) {
        connect(connection, &ConnectionManager::localManagmentConnected, this,
            &ConfigurationExportDialog::onConnectionChanged);
        connect(connection, &ConnectionManager::localManagmentDisconnected, this,
            &ConfigurationExportDialog::onConnectionChanged);
    }
    fillPlans();
    onConnectionChanged();
}

ConfigurationExportDialog::~ConfigurationExportDialog() = default;

void ConfigurationExportDialog::fillPlans()
{
    const QSignalBlocker blocker(m_plans);
    m_plans->clear();
    if (!m_model)
        return;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QUuid id(m_model->index(row, idColumn).data().toString());
        if (id.isNull())
            continue;
        auto* item = new QTreeWidgetItem(m_plans);
        item->setText(0, m_model->index(row, nameColumn).data().toString());
        item->setText(1, m_model->index(row, subTypeColumn).data().toInt() == 2 ? tr("Restore") : tr("Backup"));
        item->setData(0, Qt::UserRole, id.toString());
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(0, m_unchecked.contains(id) ? Qt::Unchecked : Qt::Checked);
    }
    m_plans->resizeColumnToContents(1);
}

// Without the service the list may be stale and nothing can be exported.
void ConfigurationExportDialog::onConnectionChanged()
{
    auto connection = ConnectionManager::instance();
    m_plans->setEnabled(connection && connection->isLocalManagmentConnected());
    updateState();
}

QList<QUuid> ConfigurationExportDialog::checkedPlans() const
{
    QList<QUuid> ids;
    for (int i = 0; i < m_plans->topLevelItemCount(); ++i) {
        const QTreeWidgetItem* item = m_plans->topLevelItem(i);
        if (item->checkState(0) == Qt::Checked)
            ids << QUuid(item->data(0, Qt::UserRole).toString());
    }
    return ids;
}

QString ConfigurationExportDialog::chooseFile()
{
    QString file = QFileDialog::getSaveFileName(this, tr("Export configuration"),
        QDir::home().filePath(QStringLiteral("tidewrack") + suffix), tr("Configuration archives (*%1)").arg(suffix));
    if (!file.isEmpty() && !file.endsWith(suffix))
        file += suffix;
    return file;
}

QString ConfigurationExportDialog::missing() const
{
    if (!m_plans || !m_plans->isEnabled())
        return tr("The local service is not connected.");
    if (!QDir::isAbsolutePath(fileEdit()->text().trimmed()))
        return tr("Choose the file to write.");
    if (passwordEdit()->text().isEmpty())
        return tr("Give the password that will open the archive.");
    if (passwordEdit()->text() != m_confirm->text())
        return tr("The passwords do not match.");
    return QString();
}

QJsonObject ConfigurationExportDialog::params() const
{
    QJsonArray plans;
    for (const QUuid& id : checkedPlans())
        plans.append(id.toString());
    return {{QStringLiteral("plans"), plans}};
}

QString ConfigurationExportDialog::describe(const QJsonObject& data) const
{
    return tr("Exported %1 plans and %2 storage accounts to %3")
        .arg(data.value(QStringLiteral("plans")).toInt())
        .arg(data.value(QStringLiteral("accounts")).toInt())
        .arg(data.value(QStringLiteral("path")).toString());
}

} // namespace TWB::GUI::Settings
