#include "wizard/page_name.h"

#include "platform/plan/base.h"

#include <QFormLayout>
#include <QLineEdit>

namespace TWB::GUI {

const char* PlanWizardBase::PageName::FieldPlanName = "Field_PlanName";

PlanWizardBase::PageName::PageName(QWidget* parent)
    : PageBase(tr("Plan name"), parent)
{
    setSubTitle(tr("Specify plan name"));
    nameEdit = new QLineEdit(this);
    auto* layout = new QFormLayout(this);
    layout->addRow(tr("Plan name:"), nameEdit);
    registerField(QLatin1String(FieldPlanName), nameEdit);
    connect(nameEdit, &QLineEdit::textChanged, this, &PageName::onDataChanged);
}

void PlanWizardBase::PageName::onDataChanged()
{
    Q_EMIT completeChanged();
}

void PlanWizardBase::PageName::initializePage()
{
    PageBase::initializePage();
}

bool PlanWizardBase::PageName::isComplete() const
{
    return !field(QLatin1String(FieldPlanName)).toString().trimmed().isEmpty();
}

bool PlanWizardBase::PageName::validatePage()
{
    return isComplete();
}

int PlanWizardBase::PageName::nextId() const
{
    return 2;
}

QString PlanWizardBase::PageName::summary()
{
    return QStringLiteral("<tr><td>%1</td><td>%2</td></tr>")
        .arg(tr("Plan name:"), field(QLatin1String(FieldPlanName)).toString().toHtmlEscaped());
}

bool PlanWizardBase::PageName::initPlan(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return false;
    // Stored as typed: blanks are trimmed only to test that there is a name.
    plan->setName(field(QLatin1String(FieldPlanName)).toString());
    return true;
}

bool PlanWizardBase::PageName::fromPlan(TWB::Info::Plan::Base* plan)
{
    if (!plan)
        return false;
    setField(QLatin1String(FieldPlanName), plan->name());
    return true;
}

} // namespace TWB::GUI
