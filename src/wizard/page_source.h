#pragma once

#include "wizard/page_base.h"

class QAbstractItemModel;
class QTreeView;

namespace TWB::GUI {

/// Base of the pages that pick things from a tree: what to back up, what to restore.
class TWBCONSOLE_EXPORT PlanWizardBase::PageSource : public PlanWizardBase::PageBase
{
    Q_OBJECT
    Q_DISABLE_COPY(PageSource)
public:
    explicit PageSource(const QString& title, QWidget* parent = nullptr);

    /// Shows the model's `visibleColumn` only, and re-tests the page on each change of a check mark.
    void setModel(QAbstractItemModel* model, int visibleColumn);
    /// A drive or share path of the service, as the user knows it.
    QString trimmeredPath(const QString& path) const;

    void initializePage() override;
    bool isComplete() const override;
    bool validatePage() override;

protected:
    QTreeView* treeView = nullptr; // owned by parent-child
};

} // namespace TWB::GUI
