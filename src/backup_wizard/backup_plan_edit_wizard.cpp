#include "backup_wizard/backup_plan_edit_wizard.h"

#include "backup_wizard/page_advanced_filter.h"
#include "backup_wizard/page_backup_actions.h"
#include "backup_wizard/page_compression_end_encryption.h"
#include "backup_wizard/page_full_schedule.h"
#include "backup_wizard/page_name.h"
#include "backup_wizard/page_retention_policy.h"
#include "backup_wizard/page_source.h"
#include "backup_wizard/page_summary.h"
#include "frame/application.h"
#include "platform/plan/backup_file.h"
#include "wizard/page_cloud.h"
#include "wizard/page_notification.h"
#include "wizard/page_schedule.h"

#include <QVariant>

#include <memory>

namespace TWB::GUI {

const char* BackupPlanEditWizard::PropertyBackupPlanType = "Property_BackupPlanType";

BackupPlanEditWizard::BackupPlanEditWizard(QWidget* parent)
    : PlanWizardBase(1, parent)
{
    setPage(1, new PageName);
    setPage(4, new PlanWizardBase::PageSchedule);
    setPage(104, new PageFullSchedule);
    setPage(107, new PageBackupActions);
    auto* cloud = new PlanWizardBase::PageCloud;
    setPage(0, cloud);
    if (Application::isStandalon()) {
        setPage(5, new PlanWizardBase::PageNotificationStandalone);
    } else if (cloud->isSingle()) {
        // One storage and nothing to choose: the wizard opens on the name page.
        setStartId(cloud->nextId());
    }
    setPage(6, new PageSummary);
    setPage(2, new PageSource);
    setPage(102, new PageAdvancedFilter);
    setPage(103, new PageRetentionPolicy);
    setPage(3, new PageCompressionEndEncryption);

    // Every page shows the defaults of a new plan.
    TWB::Info::Plan::BackupFile defaults;
    init(&defaults);
    resizeWizardPages();
}

BackupPlanEditWizard* BackupPlanEditWizard::createWizard(TWB::Info::Plan::Base* plan, QWidget* parent)
{
    if (!plan)
        return nullptr;
    auto* wizard = new BackupPlanEditWizard(parent);
    wizard->setEdit(true);
    wizard->setPlanId(plan->id());
    wizard->init(plan);
    return wizard;
}

void BackupPlanEditWizard::init(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return;
    setWindowTitle(
        isEdit() ? QStringLiteral("%1 %2").arg(tr("Edit backup plan:"), plan->name()) : tr("Create backup plan"));
    setProperty(PropertyBackupPlanType, QVariant::fromValue(PlanTypeFile));
    const auto ids = pageIds();
    for (int id : ids) {
        if (auto* pageBase = qobject_cast<PageBase*>(page(id)))
            pageBase->fromPlan(plan);
    }
}

int BackupPlanEditWizard::nextId() const
{
    const int id = PlanWizardBase::nextId();
    if (id == 5 && !page(id))
        return 6;
    return id;
}

} // namespace TWB::GUI
