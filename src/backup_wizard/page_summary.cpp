#include "backup_wizard/page_summary.h"

#include "platform/plan/backup_disk_image.h"
#include "platform/plan/backup_file.h"

#include <QVariant>
#include <QWizard>

#include <memory>

namespace TWB::GUI {

BackupPlanEditWizard::PageSummary::PageSummary(QWidget* parent)
    : PlanWizardBase::PageSummary(parent)
{ }

bool BackupPlanEditWizard::PageSummary::validatePage()
{
    QWizard* owner = wizard();
    if (!owner)
        return false;
    // A fresh plan, never the one loaded: what no visited page writes keeps the new object's default.
    std::unique_ptr<TWB::Info::Plan::Backup> plan;
    const int kind = owner->property(PropertyBackupPlanType).toInt();
    if (kind == PlanTypeFile)
        plan = std::make_unique<TWB::Info::Plan::BackupFile>();
    else if (kind == PlanTypeDiskImage)
        plan = std::make_unique<TWB::Info::Plan::BackupDiskImage>();
    else
        return false;
    return savePlan(plan.get(), field(QLatin1String(FieldRunNow)).toBool());
}

} // namespace TWB::GUI
