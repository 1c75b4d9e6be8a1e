#pragma once

#include "wizard/page_base.h"

class QLineEdit;

namespace TWB::GUI {

/// The plan's name. Backup and restore wizards derive their own name pages from it.
class TWBCONSOLE_EXPORT PlanWizardBase::PageName : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageName)
public:
    static const char* FieldPlanName;

    explicit PageName(QWidget* parent = nullptr);

    void initializePage() override;
    bool isComplete() const override;
    bool validatePage() override;
    int nextId() const override;
    QString summary() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;

public Q_SLOTS:
    void onDataChanged();

protected:
    QLineEdit* nameEdit = nullptr; // owned by parent-child
};

} // namespace TWB::GUI
