#include "wizard/page_source.h"

#include <QHeaderView>
#include <QTreeView>
#include <QVBoxLayout>

namespace TWB::GUI {

PlanWizardBase::PageSource::PageSource(const QString& title, QWidget* parent)
    : PageBase(title, parent)
{
    treeView = new QTreeView(this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(treeView);
}

void PlanWizardBase::PageSource::setModel(QAbstractItemModel* model, int visibleColumn)
{
    treeView->setModel(model);
    treeView->header()->hide();
    treeView->header()->setStretchLastSection(false);
    treeView->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    if (!model)
        return;
    connect(model, &QAbstractItemModel::dataChanged, this, &PageSource::completeChanged);
    for (int column = 0; column < model->columnCount(); ++column)
        treeView->setColumnHidden(column, column != visibleColumn);
}

QString PlanWizardBase::PageSource::trimmeredPath(const QString& path) const
{
    static const QString volumes = QStringLiteral("/TWB_VOLUMES/");
    static const QString shares = QStringLiteral("/TWB_SHARES/");
    if (path.startsWith(volumes))
        return path.mid(volumes.size());
    if (path.startsWith(shares))
        return path.mid(shares.size());
    return path;
}

void PlanWizardBase::PageSource::initializePage()
{
    PageBase::initializePage();
}

bool PlanWizardBase::PageSource::isComplete() const
{
    return true;
}

bool PlanWizardBase::PageSource::validatePage()
{
    return true;
}

} // namespace TWB::GUI
