#include "backup_wizard/page_name.h"

#include "platform/plan/backup_file.h"
#include "widgets/check_box.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QWizard>

namespace TWB::GUI {

const char* BackupPlanEditWizard::PageName::FieldUseFileDiffirentialBackup = "Field_UseFileDiffirentialBackup";
const char* BackupPlanEditWizard::PageName::FieldSaveOnCloud = "Field_SaveOnCloud";

BackupPlanEditWizard::PageName::PageName(QWidget* parent)
    : PlanWizardBase::PageName(parent)
{
    nameEdit->setMinimumWidth(200);
    blockLevel = new QCheckBox(tr("Use block level backup"), this);
    blockLevel->hide();
    saveOnCloud = new CheckBox(QStringLiteral("<table><tr><td><b>%1</b></td></tr><tr><td><small><b>%2:</b> "
                                              "%3</small></td></tr></table>")
                                   .arg(tr("Save backup plan configuration to the backup storage"), tr("Note"),
                                       tr("If your plan has encryption, the encryption password will not be "
                                          "stored by security reason. You will have to specify the encryption "
                                          "password during restore.")),
        this);
    // The note is a sentence, not a caption: let it wrap rather than widen the whole wizard.
    static_cast<CheckBox*>(saveOnCloud)->label()->setWordWrap(true);
    auto* form = qobject_cast<QFormLayout*>(layout());
    form->addRow(blockLevel);
    form->addRow(saveOnCloud);
    registerField(QLatin1String(FieldUseFileDiffirentialBackup), blockLevel);
    registerField(QLatin1String(FieldSaveOnCloud), saveOnCloud);
}

int BackupPlanEditWizard::PageName::nextId() const
{
    const int kind = wizard() ? wizard()->property(PropertyBackupPlanType).toInt() : PlanTypeFile;
    if (kind == PlanTypeFile)
        return 2;
    if (kind == PlanTypeDiskImage)
        return 105;
    return -1;
}

bool BackupPlanEditWizard::PageName::isComplete() const
{
    return !field(QLatin1String(FieldPlanName)).toString().trimmed().isEmpty();
}

bool BackupPlanEditWizard::PageName::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* backup = dynamic_cast<TWB::Info::Plan::Backup*>(plan);
    if (!backup)
        return false;
    if (backup->type() == 0)
        backup->setUseDifferentialUpload(field(QLatin1String(FieldUseFileDiffirentialBackup)).toBool());
    backup->setSavePlanInCloud(field(QLatin1String(FieldSaveOnCloud)).toBool());
    // Stored as typed: blanks are trimmed only to test that there is a name.
    backup->setName(field(QLatin1String(FieldPlanName)).toString());
    return true;
}

bool BackupPlanEditWizard::PageName::fromPlan(TWB::Info::Plan::Base* plan)
{
    auto* backup = dynamic_cast<TWB::Info::Plan::Backup*>(plan);
    if (!backup)
        return false;
    blockLevel->hide();
    if (backup->type() == 0 && dynamic_cast<TWB::Info::Plan::BackupFile*>(backup)) {
        blockLevel->show();
        setField(QLatin1String(FieldUseFileDiffirentialBackup), backup->useDifferentialUpload());
    }
    setField(QLatin1String(FieldSaveOnCloud), backup->savePlanInCloud());
    setField(QLatin1String(FieldPlanName), backup->name());
    return true;
}

QString BackupPlanEditWizard::PageName::summary()
{
    static const QString row = QStringLiteral("<tr><td></td><td>%1</td></tr>");
    QString text = QStringLiteral("<tr><td>%1</td><td>%2</td></tr>")
                       .arg(tr("Plan name:"), field(QLatin1String(FieldPlanName)).toString().toHtmlEscaped());
    if (field(QLatin1String(FieldSaveOnCloud)).toBool())
        text += row.arg(tr("Save configuration to Cloud"));
    const int kind = wizard() ? wizard()->property(PropertyBackupPlanType).toInt() : PlanTypeFile;
    if (kind == PlanTypeFile && field(QLatin1String(FieldUseFileDiffirentialBackup)).toBool())
        text += row.arg(tr("Use block level backup"));
    return text;
}

} // namespace TWB::GUI
