#pragma once

// A plan wizard made of the shared pages, as the backup and restore wizards will be: storage (0),
// name (1), schedule (2), a stand-in for the notification page (5) and a summary (6) that saves the
// plan through PlanEditWait.

#include "platform/plan/backup_file.h"
#include "wizard/page_cloud.h"
#include "wizard/page_name.h"
#include "wizard/page_schedule.h"
#include "wizard/page_summary.h"
#include "wizard/plan_edit_wait.h"
#include "wizard/plan_wizard_base.h"

#include <QCheckBox>
#include <QPointer>

#include <memory>

namespace TWB::Test {

class NotificationStandIn : public TWB::GUI::PlanWizardBase::PageBase
{
public:
    NotificationStandIn()
        : PageBase(QStringLiteral("Notification"))
    { }
    QString summary() override { return QString(); }
    bool initPlan(TWB::Info::Plan::Base*) override { return true; }
    bool fromPlan(TWB::Info::Plan::Base*) override { return true; }
    int nextId() const override { return 6; }
};

class FlowSummary : public TWB::GUI::PlanWizardBase::PageSummary
{
public:
    bool validatePage() override
    {
        auto plan = std::make_unique<TWB::Info::Plan::BackupFile>();
        const bool edit = wizard()->property("IsEdit").toBool();
        savedId = edit ? wizard()->property("PlanId").toUuid() : QUuid::createUuid();
        plan->setId(savedId);
        // The source page is not part of this wizard; the test says what the plan backs up.
        plan->setItems(items);
        const auto visited = wizard()->visitedIds();
        for (int id : visited) {
            if (auto* page = qobject_cast<PageBase*>(wizard()->page(id))) {
                if (!page->initPlan(plan.get()))
                    return false;
            }
        }
        TWB::GUI::PlanEditWait wait(edit, this);
        waitDialog = &wait;
        wait.setPlan(savedId, plan->toXml(), field(QLatin1String(FieldRunNow)).toBool());
        return wait.result() == QDialog::Accepted;
    }
    QUuid savedId;
    QStringList items;
    QPointer<TWB::GUI::PlanEditWait> waitDialog;
};

class FlowWizard : public TWB::GUI::PlanWizardBase
{
public:
    FlowWizard()
        : PlanWizardBase(1)
        , cloud(new PageCloud)
        , name(new PageName)
        , schedule(new PageSchedule)
        , summary(new FlowSummary)
    {
        setProperty("Property_BackupPlanType", quint8(0));
        // The backup wizard's name page holds the block-level choice, hidden until it is offered.
        auto* blockLevel = new QCheckBox(name);
        blockLevel->hide();
        name->registerField(QStringLiteral("Field_UseFileDiffirentialBackup"), blockLevel);
        setPage(0, cloud);
        setPage(1, name);
        setPage(2, schedule);
        setPage(5, new NotificationStandIn);
        setPage(6, summary);
        setStartId(0);
        setWindowTitle(QStringLiteral("New backup plan"));
        resizeWizardPages();
    }
    /// Opens a stored plan for editing, as the wizards do.
    void edit(TWB::Info::Plan::Base* plan)
    {
        setProperty("IsEdit", true);
        setProperty("PlanId", plan->id());
        const auto ids = pageIds();
        for (int id : ids) {
            if (auto* page = qobject_cast<PageBase*>(this->page(id)))
                page->fromPlan(plan);
        }
    }
    PageCloud* cloud;
    PageName* name;
    PageSchedule* schedule;
    FlowSummary* summary;
};

} // namespace TWB::Test
