#include "restore_wizard/restore_plan_edit_wizard.h"

#include "frame/application.h"
#include "frame/license_restrictions.h"
#include "platform/drive_shares.h"
#include "platform/plan/backup_file.h"
#include "platform/plan/restore_file.h"
#include "restore_wizard/page_destination.h"
#include "restore_wizard/page_encryption.h"
#include "restore_wizard/page_glacier.h"
#include "restore_wizard/page_name.h"
#include "restore_wizard/page_point_type.h"
#include "restore_wizard/page_schedule.h"
#include "restore_wizard/page_source.h"
#include "restore_wizard/page_summary.h"
#include "wizard/page_cloud.h"
#include "wizard/page_notification.h"

#include <QVariant>

namespace TWB::GUI {

const char* RestorePlanEditWizard::PropertyRestorePlanType = "Property_RestorePlanType";

RestorePlanEditWizard::RestorePlanEditWizard(QWidget* parent)
    : PlanWizardBase(2, parent)
{
    setPage(1, new PageName);
    setPage(4, new PageSchedule);
    if (Application::isStandalon())
        setPage(5, new PlanWizardBase::PageNotificationStandalone);
    auto* cloud = new PlanWizardBase::PageCloud(Application::isStandalon() ? nullptr : this);
    setPage(0, cloud);
    if (!Application::isStandalon() && cloud->isSingle()) {
        // One storage and nothing to choose: the wizard opens on the name page.
        setStartId(cloud->nextId());
    }
    setPage(6, new PageSummary);
    setPage(2, new PageSource);
    setPage(102, new PagePointType);
    setPage(101, new PageDestination);
    setPage(103, new PageEncryption);
    setPage(104, new PageGlacier);

    // Every page shows the defaults of a new plan.
    TWB::Info::Plan::RestoreFile defaults;
    init(&defaults);
    resizeWizardPages();
}

RestorePlanEditWizard* RestorePlanEditWizard::createWizard(TWB::Info::Plan::Base* plan, QWidget* parent)
{
    if (!plan)
        return nullptr;
    auto* wizard = new RestorePlanEditWizard(parent);
    wizard->setEdit(true);
    wizard->setPlanId(plan->id());
    wizard->init(plan);
    return wizard;
}

namespace {

/// Opens on the name page: the storage is settled and the storage page is never shown.
void skipStoragePage(RestorePlanEditWizard* wizard)
{
    if (auto* cloud = qobject_cast<PlanWizardBase::PageCloud*>(wizard->page(0))) {
        cloud->setSingle(true);
        wizard->setStartId(cloud->nextId());
    }
}

} // namespace

RestorePlanEditWizard* RestorePlanEditWizard::createWizardFromBackupStorage(
    const QUuid& storageId, const QStringList& items, QWidget* parent)
{
    TWB::Info::Plan::RestoreFile plan;
    plan.setStorage(storageId);
    plan.setRestoreItems(items);
    auto* wizard = new RestorePlanEditWizard(parent);
    wizard->init(&plan);
    skipStoragePage(wizard);
    return wizard;
}

RestorePlanEditWizard* RestorePlanEditWizard::createWizardFromBackupPlan(
    TWB::Info::Plan::BackupFile* plan, bool withPassword, QWidget* parent)
{
    if (!plan)
        return nullptr;
    TWB::Info::Plan::RestoreFile restore;
    restore.setStorage(plan->storage());
    // The service names backed-up paths in its own form, as its listings do.
    const TWB::Info::DriveShares shares = TWB::Info::DriveShares::Instance();
    QStringList items;
    const QStringList planItems = plan->items();
    for (const QString& item : planItems)
        items.append(shares.getSqlPathFromLocal(shares.get_local_path(item, 0)));
    restore.setRestoreItems(items);
    restore.setDeletePlan(TWB::Info::Plan::Restore::KeepPlan);
    restore.setName(tr("Restore ") + plan->name());
    if (plan->encryption().isEnabled() && withPassword) {
        restore.setUseEncryption(true);
        restore.setEncryptionPassword(plan->encryption().password());
    }
    auto* wizard = new RestorePlanEditWizard(parent);
    wizard->init(&restore);
    skipStoragePage(wizard);
    return wizard;
}

void RestorePlanEditWizard::init(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return;
    setWindowTitle(
        isEdit() ? QStringLiteral("%1 %2").arg(tr("Edit restore plan:"), plan->name()) : tr("Create restore plan"));
    setProperty(PropertyRestorePlanType, QVariant::fromValue(PlanTypeFile));
    const auto ids = pageIds();
    for (int id : ids) {
        if (auto* pageBase = qobject_cast<PageBase*>(page(id)))
            pageBase->fromPlan(plan);
    }
}

int RestorePlanEditWizard::closeId()
{
    return License::LicenseRestrictions::isNotificationsAvailable() ? 5 : 6;
}

bool RestorePlanEditWizard::glacierWanted() const
{
    const int type = field(QLatin1String(PlanWizardBase::PageCloud::FieldType)).toString().toInt(nullptr, 10);
    return !field(QStringLiteral("Field_TypeUseGlacier")).toBool() && (type == 2 || type == 20);
}

int RestorePlanEditWizard::nextId() const
{
    const int id = PlanWizardBase::nextId();
    if (id == 5 && !page(id))
        return 6;
    return id;
}

} // namespace TWB::GUI
