#pragma once

#include "restore_wizard/restore_plan_edit_wizard.h"
#include "wizard/page_base.h"

class QComboBox;

namespace TWB::GUI {

class RadioButton;

/// What kind of data to restore, as far as the storage holds it. The service names the kinds it has; this
/// product restores files and folders, and a host that places the other kinds adds their buttons.
class TWBCONSOLE_EXPORT RestorePlanEditWizard::PageRestoreType : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageRestoreType)
public:
    explicit PageRestoreType(QWidget* parent = nullptr);

    void initializePage() override;
    int nextId() const override;
    bool isComplete() const override;
    bool validatePage() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;
    QString summary() override;

public Q_SLOTS:
    void onGetContentTypeResult();

private:
    RadioButton* fileLevel = nullptr; // owned by parent-child
    RadioButton* fullSystemFile = nullptr; // null until a host adds it
    RadioButton* physicalDisk = nullptr; // null until a host adds it
    RadioButton* virtualDisk = nullptr; // null until a host adds it
    RadioButton* virtualMachine = nullptr; // null until a host adds it
    QComboBox* virtualDiskType = nullptr; // null until a host adds it
};

} // namespace TWB::GUI
