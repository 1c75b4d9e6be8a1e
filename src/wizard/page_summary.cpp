#include "wizard/page_summary.h"

#include "platform/communication/connection_manager.h"
#include "platform/plan/base.h"
#include "wizard/page_cloud.h"
#include "wizard/plan_edit_wait.h"

#include <QCheckBox>
#include <QMessageBox>
#include <QTextEdit>
#include <QVBoxLayout>
#include <QWizard>

namespace TWB::GUI {

const char* PlanWizardBase::PageSummary::FieldRunNow = "Field_SummaryRunNow";

PlanWizardBase::PageSummary::PageSummary(QWidget* parent)
    : PageBase(tr("Summary"), parent)
{
    setSubTitle(tr("Review plan"));
    setFinalPage(true);
    summaryView = new QTextEdit(this);
    summaryView->setReadOnly(true);
    runNow = new QCheckBox(tr("Run plan now"), this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(summaryView, 1);
    layout->addWidget(runNow);
    registerField(QLatin1String(FieldRunNow), runNow);
    connect(this, &PageSummary::setVisibleRunNow, runNow, &QCheckBox::setVisible);
}

QString PlanWizardBase::PageSummary::visitedSummary() const
{
    QString rows;
    if (!wizard())
        return rows;
    const auto visited = wizard()->visitedIds();
    for (int id : visited) {
        if (auto* visitedPage = qobject_cast<PageBase*>(wizard()->page(id)))
            rows += visitedPage->summary();
    }
    return rows;
}

void PlanWizardBase::PageSummary::initializePage()
{
    PageBase::initializePage();
    summaryView->setHtml(QStringLiteral("<table>") + visitedSummary() + QStringLiteral("</table>"));
}

bool PlanWizardBase::PageSummary::savePlan(TWB::Info::Plan::Base* plan, bool runNowChecked)
{
    QWizard* owner = wizard();
    if (!owner)
        return false;
    const bool edit = owner->property("IsEdit").toBool();
    // A new plan is named here, so that the wait can find its row when the service adds it.
    plan->setId(edit ? owner->property("PlanId").toUuid() : QUuid::createUuid());
    const auto visited = owner->visitedIds();
    for (int id : visited) {
        if (auto* page = qobject_cast<PageBase*>(owner->page(id)))
            page->initPlan(plan);
    }
    // A storage page that was skipped is not among the visited ones, yet it chose the storage.
    if (auto* cloud = qobject_cast<PageCloud*>(owner->page(0)); cloud && cloud->isSingle())
        plan->setStorage(QUuid(field(QLatin1String(PageCloud::FieldId)).toString()));

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
    PlanEditWait wait(edit, this);
    wait.setPlan(plan->id(), plan->toXml(), runNowChecked);
    return wait.result() == QDialog::Accepted;
}

QString PlanWizardBase::PageSummary::summaryHtml() const
{
    return summaryView->toHtml();
}

bool PlanWizardBase::PageSummary::isComplete() const
{
    return true;
}

int PlanWizardBase::PageSummary::nextId() const
{
    return -1;
}

bool PlanWizardBase::PageSummary::validatePage()
{
    // Only a wizard's own summary page knows which plan to build and save.
    return false;
}

QString PlanWizardBase::PageSummary::summary()
{
    return QString();
}

bool PlanWizardBase::PageSummary::initPlan(TWB::Info::Plan::Base*)
{
    return true;
}

bool PlanWizardBase::PageSummary::fromPlan(TWB::Info::Plan::Base*)
{
    return true;
}

} // namespace TWB::GUI
