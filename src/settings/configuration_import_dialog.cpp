#include "settings/configuration_import_dialog.h"

#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QVBoxLayout>

namespace TWB::GUI::Settings {

ConfigurationImportDialog::ConfigurationImportDialog(QWidget* parent)
    : ConfigurationDialogBase(
        {tr("Import configuration"),
            tr("The plans, storage accounts and product options of a configuration archive "
               "join this installation. Either all of them are taken in or, if anything "
               "stands in the way, nothing changes."),
            tr("Import"), QStringLiteral("ImportConfiguration"), QStringLiteral("Communication manager doesn't exist"),
            QStringLiteral("Commnunication command doesn't registrate")},
        parent)
{
    m_replace = new QCheckBox(tr("Replace plans and accounts that already exist here"), this);
    m_replace->setChecked(true);
    m_replace->setToolTip(tr("When unchecked, plans, accounts and options that exist here are kept as they are."));
    mainLayout()->insertWidget(2, m_replace);
}

ConfigurationImportDialog::~ConfigurationImportDialog() = default;

QString ConfigurationImportDialog::chooseFile()
{
    return QFileDialog::getOpenFileName(this, tr("Import configuration"), QDir::homePath(),
        tr("Configuration archives (*.twbconfiguration);;All files (*)"));
}

QString ConfigurationImportDialog::missing() const
{
    const QString path = fileEdit()->text().trimmed();
    if (!QDir::isAbsolutePath(path))
        return tr("Choose the archive to read.");
    if (!QFileInfo(path).isFile())
        return tr("There is no such file.");
    if (passwordEdit()->text().isEmpty())
        return tr("Give the password of the archive.");
    return QString();
}

QJsonObject ConfigurationImportDialog::params() const
{
    return {{QStringLiteral("existing"), m_replace->isChecked() ? QStringLiteral("replace") : QStringLiteral("skip")}};
}

QString ConfigurationImportDialog::describe(const QJsonObject& data) const
{
    const int plans
        = data.value(QStringLiteral("plansAdded")).toInt() + data.value(QStringLiteral("plansReplaced")).toInt();
    const int accounts
        = data.value(QStringLiteral("accountsAdded")).toInt() + data.value(QStringLiteral("accountsReplaced")).toInt();
    return tr("Imported %1 plans and %2 storage accounts; %3 that exist here were kept")
        .arg(plans)
        .arg(accounts)
        .arg(data.value(QStringLiteral("skipped")).toInt());
}

} // namespace TWB::GUI::Settings
