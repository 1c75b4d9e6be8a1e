#include "wizard/page_summary.h"

#include <QCheckBox>
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
