#include "wizard/page_base.h"

#include <QVariant>
#include <QWizard>

namespace TWB::GUI {

PlanWizardBase::PageBase::PageBase(const QString& title, QWidget* parent)
    : QWizardPage(parent)
    , pageTitle(title)
{ }

void PlanWizardBase::PageBase::initializePage()
{
    QString kind;
    if (planType() == 1)
        kind = tr("Backup plan");
    else if (planType() == 2)
        kind = tr("Restore plan");
    setTitle(QStringLiteral("%1: %2").arg(kind, pageTitle));
}

void PlanWizardBase::PageBase::cleanupPage() { }

int PlanWizardBase::PageBase::planType() const
{
    return wizard() ? wizard()->property("PlanType").toInt() : 0;
}

} // namespace TWB::GUI
