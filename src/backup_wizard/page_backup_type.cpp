#include "backup_wizard/page_backup_type.h"

#include "platform/plan/backup_disk_image.h"
#include "platform/plan/backup_file.h"

#include <QRadioButton>
#include <QVariant>
#include <QVBoxLayout>
#include <QWizard>

#include <memory>

namespace TWB::GUI {

BackupPlanEditWizard::PageBackupType::PageBackupType(QWidget* parent)
    : PageBase(tr("Select Backup type"), parent)
{
    fileBackup = new QRadioButton(tr("File level Backup"), this);
    fileBackup->setChecked(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(fileBackup);
    layout->addStretch(1);
}

int BackupPlanEditWizard::PageBackupType::nextId() const
{
    return 0;
}

bool BackupPlanEditWizard::PageBackupType::isComplete() const
{
    return true;
}

bool BackupPlanEditWizard::PageBackupType::validatePage()
{
    QWizard* owner = wizard();
    if (!owner)
        return true;
    std::unique_ptr<TWB::Info::Plan::Base> plan;
    if (fileBackup->isChecked()) {
        plan = std::make_unique<TWB::Info::Plan::BackupFile>();
        owner->setProperty(PropertyBackupPlanType, QVariant::fromValue(PlanTypeFile));
    } else if (diskImageBackup && diskImageBackup->isChecked()) {
        plan = std::make_unique<TWB::Info::Plan::BackupDiskImage>();
        owner->setProperty(PropertyBackupPlanType, QVariant::fromValue(PlanTypeDiskImage));
    } else if (fullFileBackup && fullFileBackup->isChecked()) {
        owner->setProperty(PropertyBackupPlanType, QVariant::fromValue(PlanTypeFullFile));
    }
    if (plan) {
        // Every page starts from the defaults of the kind chosen.
        const auto ids = owner->pageIds();
        for (int id : ids) {
            if (auto* page = qobject_cast<PageBase*>(owner->page(id)))
                page->fromPlan(plan.get());
        }
    }
    return true;
}

QString BackupPlanEditWizard::PageBackupType::summary()
{
    return QString();
}

bool BackupPlanEditWizard::PageBackupType::initPlan(TWB::Info::Plan::Base*)
{
    return true;
}

bool BackupPlanEditWizard::PageBackupType::fromPlan(TWB::Info::Plan::Base*)
{
    return true;
}

} // namespace TWB::GUI
