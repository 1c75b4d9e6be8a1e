#include "restore_wizard/page_name.h"

#include "platform/plan/restore.h"
#include "widgets/radio_button.h"
#include "wizard/page_name.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace TWB::GUI {

const char* RestorePlanEditWizard::PageName::FieldRestoreOnce = "Field_RestoreOnce";
const char* RestorePlanEditWizard::PageName::FieldSaveRestorePlan = "Field_SaveRestorePlan";

namespace {

QString twoLines(const QString& first, const QString& second)
{
    return QStringLiteral("<table><tr><td>%1</td></tr><tr><td>%2</td></tr></table>").arg(first, second);
}

} // namespace

RestorePlanEditWizard::PageName::PageName(QWidget* parent)
    : PageBase(tr("Plan name"), parent)
{
    setSubTitle(tr("Specify plan name"));
    restoreOnce = new RadioButton(twoLines(tr("Run restore once"),
                                      tr("Run restore only once when press Finish button on the last wizard step. No "
                                         "schedule option is available")),
        this);
    saveRestorePlan = new RadioButton(
        twoLines(tr("Save restore plan"), tr("Save restore plan options for further running or scheduled restore")),
        this);
    nameLabel = new QLabel(tr("Plan name:"), this);
    nameEdit = new QLineEdit(this);
    nameLabel->setBuddy(nameEdit);
    nameLabel->setEnabled(false);
    nameEdit->setEnabled(false);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(restoreOnce);
    layout->addWidget(saveRestorePlan);
    auto* nameRow = new QFormLayout;
    nameRow->addRow(nameLabel, nameEdit);
    layout->addLayout(nameRow);
    layout->addStretch(1);

    registerField(QLatin1String(FieldRestoreOnce), restoreOnce);
    registerField(QLatin1String(FieldSaveRestorePlan), saveRestorePlan);
    registerField(QLatin1String(PlanWizardBase::PageName::FieldPlanName), nameEdit);

    connect(restoreOnce, &QAbstractButton::toggled, this, &PageName::completeChanged);
    connect(saveRestorePlan, &QAbstractButton::toggled, this, &PageName::completeChanged);
    connect(saveRestorePlan, &QAbstractButton::toggled, nameLabel, &QWidget::setEnabled);
    connect(saveRestorePlan, &QAbstractButton::toggled, nameEdit, &QWidget::setEnabled);
    connect(nameEdit, &QLineEdit::textChanged, this, &PageName::completeChanged);
}

int RestorePlanEditWizard::PageName::nextId() const
{
    return 102;
}

bool RestorePlanEditWizard::PageName::isComplete() const
{
    if (field(QLatin1String(FieldRestoreOnce)).toBool() || !field(QLatin1String(FieldSaveRestorePlan)).toBool())
        return true;
    // Blanks are a name here: only a plan kept for later needs one at all.
    return !field(QLatin1String(PlanWizardBase::PageName::FieldPlanName)).toString().isEmpty();
}

bool RestorePlanEditWizard::PageName::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* restore = dynamic_cast<TWB::Info::Plan::Restore*>(plan);
    if (!restore)
        return false;
    if (field(QLatin1String(FieldRestoreOnce)).toBool())
        restore->setDeletePlan(TWB::Info::Plan::Restore::DeleteAfterRun);
    else if (field(QLatin1String(FieldSaveRestorePlan)).toBool())
        restore->setDeletePlan(TWB::Info::Plan::Restore::KeepPlan);
    restore->setName(field(QLatin1String(PlanWizardBase::PageName::FieldPlanName)).toString());
    return true;
}

bool RestorePlanEditWizard::PageName::fromPlan(TWB::Info::Plan::Base* plan)
{
    auto* restore = dynamic_cast<TWB::Info::Plan::Restore*>(plan);
    if (!restore)
        return false;
    if (restore->deletePlan() == TWB::Info::Plan::Restore::KeepPlan) {
        setField(QLatin1String(FieldSaveRestorePlan), true);
        setField(QLatin1String(FieldRestoreOnce), false);
    } else if (restore->deletePlan() == TWB::Info::Plan::Restore::DeleteAfterRun) {
        setField(QLatin1String(FieldSaveRestorePlan), false);
        setField(QLatin1String(FieldRestoreOnce), true);
    }
    setField(QLatin1String(PlanWizardBase::PageName::FieldPlanName), restore->name());
    return true;
}

QString RestorePlanEditWizard::PageName::summary()
{
    return QStringLiteral("<tr><td>%1</td><td>%2</td></tr>")
        .arg(
            tr("Plan name:"), field(QLatin1String(PlanWizardBase::PageName::FieldPlanName)).toString().toHtmlEscaped());
}

} // namespace TWB::GUI
