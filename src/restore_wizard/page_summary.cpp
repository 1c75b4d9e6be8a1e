#include "restore_wizard/page_summary.h"

#include "platform/communication/connection_manager.h"
#include "platform/plan/restore_file.h"
#include "restore_wizard/page_name.h"
#include "wizard/page_cloud.h"
#include "wizard/plan_edit_wait.h"

#include <QMessageBox>
#include <QWizard>

#include <memory>

namespace TWB::GUI {

RestorePlanEditWizard::PageSummary::PageSummary(QWidget* parent)
    : PlanWizardBase::PageSummary(parent)
{ }

void RestorePlanEditWizard::PageSummary::initializePage()
{
    PlanWizardBase::PageSummary::initializePage();
    // A run-once plan runs anyway: there is nothing to choose.
    setVisibleRunNow(!field(QLatin1String(PageName::FieldRestoreOnce)).toBool());
}

bool RestorePlanEditWizard::PageSummary::validatePage()
{
    QWizard* owner = wizard();
    if (!owner)
        return false;
    // A fresh plan, never the one loaded: what no visited page writes keeps the new object's default.
    auto plan = std::make_shared<TWB::Info::Plan::RestoreFile>();
    const bool edit = owner->property("IsEdit").toBool();
    // A new plan is named here, so that the wait can find its row when the service adds it.
    plan->setId(edit ? owner->property("PlanId").toUuid() : QUuid::createUuid());
    const auto visited = owner->visitedIds();
    for (int id : visited) {
        if (auto* page = qobject_cast<PageBase*>(owner->page(id)))
            page->initPlan(plan.get());
    }
    // A storage page that was skipped is not among the visited ones, yet it chose the storage.
    if (auto* cloud = qobject_cast<PlanWizardBase::PageCloud*>(owner->page(0)); cloud && cloud->isSingle())
        plan->setStorage(QUuid(field(QLatin1String(PlanWizardBase::PageCloud::FieldId)).toString()));

    // Without the service nothing can be saved; say so rather than let Finish do nothing.
    auto connection = TWB::Common::Communication::ConnectionManager::instance();
    if (!connection || !connection->isLocalManagmentConnected()) {
        QMessageBox box(QMessageBox::Warning, owner->windowTitle(),
            tr("The backup service is not running, so the plan was not saved. The console is starting the "
               "service again: press %1 once it is connected.")
                .arg(owner->buttonText(QWizard::FinishButton).remove(QLatin1Char('&'))),
            QMessageBox::Ok, owner, Qt::Sheet);
        box.exec();
        return false;
    }
    const bool runNow
        = field(QLatin1String(PageName::FieldRestoreOnce)).toBool() || field(QLatin1String(FieldRunNow)).toBool();
    PlanEditWait wait(edit, this);
    wait.setPlan(plan->id(), plan->toXml(), runNow);
    return wait.result() == QDialog::Accepted;
}

} // namespace TWB::GUI
