#pragma once

#include "restore_wizard/restore_plan_edit_wizard.h"
#include "wizard/page_source.h"

#include <QStringList>

class QHBoxLayout;
class QLabel;

namespace TWB::GUI {

class IncompleteStateDelegate;
class RestoreContentModel;

/// What the plan restores: the checked tree of what the chosen storage account holds.
class TWBCONSOLE_EXPORT RestorePlanEditWizard::PageSource : public PlanWizardBase::PageSource
{
    Q_OBJECT
    Q_DISABLE_COPY(PageSource)
public:
    explicit PageSource(QWidget* parent = nullptr);

    /// Shows the tree of the account on the storage page, marked from the plan's items; the marks stay
    /// while the account does.
    void initializePage() override;
    bool isComplete() const override;
    bool validatePage() override;
    int nextId() const override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;
    QString summary() override;

    /// The tree's model, once the page has been shown.
    RestoreContentModel* contentModel() const;
    QTreeView* view() const { return treeView; }
    QLabel* legend() const { return legendLabel; }

public Q_SLOTS:
    void onShowLegend();

private:
    /// The plan's paths in the form the tree names its rows.
    QStringList inTreeForm(const QStringList& paths) const;
    QStringList items;
    IncompleteStateDelegate* delegate = nullptr; // owned by parent-child
    QLabel* legendLabel = nullptr; // owned by parent-child
    QHBoxLayout* legendLayout = nullptr; // owned by the page's layout
};

} // namespace TWB::GUI
