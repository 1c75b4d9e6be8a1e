#pragma once

#include "backup_wizard/backup_plan_edit_wizard.h"
#include "wizard/page_source.h"

class QCheckBox;

namespace TWB::GUI {

class FileSystemCheckedModel;
class FileSystemCheckedProxyModel;

/// What the plan backs up: the checked file tree, whose marks are the page's whole state.
class TWBCONSOLE_EXPORT BackupPlanEditWizard::PageSource : public PlanWizardBase::PageSource
{
    Q_OBJECT
    Q_DISABLE_COPY(PageSource)
public:
    explicit PageSource(QWidget* parent = nullptr);

    /// Opens the tree down to every mark the plan holds, so that an edited plan shows its choices.
    void initializePage() override;
    int nextId() const override;
    bool isComplete() const override;
    bool validatePage() override;
    bool initPlan(TWB::Info::Plan::Base* plan) override;
    bool fromPlan(TWB::Info::Plan::Base* plan) override;
    QString summary() override;

    static QAbstractItemModel* proxyToSource(QAbstractItemModel* model);
    /// The tree's model, for a host or a test that drives the marks.
    FileSystemCheckedModel* sourceModel() const;
    QTreeView* view() const { return treeView; }

public Q_SLOTS:
    void onShareControlAttention();
    void onShowLegend();

private:
    QCheckBox* showHidden = nullptr; // owned by parent-child
    FileSystemCheckedProxyModel* proxy = nullptr; // owned by parent-child
};

} // namespace TWB::GUI
