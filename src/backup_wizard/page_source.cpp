#include "backup_wizard/page_source.h"

#include "backup_wizard/file_system_checked_model.h"
#include "backup_wizard/file_system_checked_proxy_model.h"
#include "backup_wizard/file_system_checked_share_control_model.h"
#include "frame/license_restrictions.h"
#include "backup_wizard/page_check_box_legend_dialog.h"
#include "platform/plan/backup_file.h"
#include "plans/incomplete_state_delegate.h"

#include <QCheckBox>
#include <QLabel>
#include <QMessageBox>
#include <QSet>
#include <QTreeView>
#include <QVBoxLayout>
#include <QWizard>

namespace TWB::GUI {

BackupPlanEditWizard::PageSource::PageSource(QWidget* parent)
    : PlanWizardBase::PageSource(tr("Backup source"), parent)
{
    setSubTitle(tr("Specify files and folders you want to backup"));
    showHidden = new QCheckBox(tr("Show hidden files and folders"), this);
    showHidden->setCheckable(true);
    showHidden->setChecked(false);
    treeView->setItemDelegateForColumn(0, new IncompleteStateDelegate(treeView));
    // Every row is an icon and a name: a folder of many thousand entries is laid out without
    // measuring each row.
    treeView->setUniformRowHeights(true);
    auto* legend = new QLabel(QStringLiteral("<a href=#><span>%1</span></a>").arg(tr("Legend")), this);
    legend->setTextInteractionFlags(Qt::LinksAccessibleByMouse);
    connect(legend, &QLabel::linkActivated, this, &PageSource::onShowLegend);

    FileSystemCheckedModel* source = nullptr;
    if (License::LicenseRestrictions::hasShareLimit()) {
        auto* limited = new FileSystemCheckedShareControlModel(this);
        connect(limited, &FileSystemCheckedShareControlModel::shareControlAttention, this,
            &PageSource::onShareControlAttention);
        source = limited;
    } else {
        source = new FileSystemCheckedModel(this);
    }
    proxy = new FileSystemCheckedProxyModel(this);
    proxy->setSourceModel(source);
    connect(showHidden, &QCheckBox::clicked, proxy, &FileSystemCheckedProxyModel::setIsShowHidden);
    setModel(proxy, 0);

    auto* row = new QHBoxLayout;
    row->addWidget(showHidden);
    row->addStretch(1);
    row->addWidget(legend);
    static_cast<QVBoxLayout*>(layout())->addLayout(row);
}

QAbstractItemModel* BackupPlanEditWizard::PageSource::proxyToSource(QAbstractItemModel* model)
{
    auto* proxyModel = qobject_cast<QAbstractProxyModel*>(model);
    return proxyModel ? proxyModel->sourceModel() : nullptr;
}

FileSystemCheckedModel* BackupPlanEditWizard::PageSource::sourceModel() const
{
    return qobject_cast<FileSystemCheckedModel*>(proxyToSource(proxy));
}

void BackupPlanEditWizard::PageSource::initializePage()
{
    PlanWizardBase::PageSource::initializePage();
    FileSystemCheckedModel* model = sourceModel();
    if (!model)
        return;
    QSet<const void*> opened;
    const QStringList marked = model->includePath(true) + model->excludePath(true);
    for (const QString& path : marked) {
        // Parents first, so that each expand finds its folder already shown.
        QModelIndexList chain;
        for (QModelIndex parent = model->indexByPath(path).parent(); parent.isValid(); parent = parent.parent())
            chain.prepend(parent);
        for (const QModelIndex& parent : qAsConst(chain)) {
            if (!opened.contains(parent.internalPointer())) {
                opened.insert(parent.internalPointer());
                treeView->expand(proxy->mapFromSource(parent));
            }
        }
    }
}

int BackupPlanEditWizard::PageSource::nextId() const
{
    return 102;
}

bool BackupPlanEditWizard::PageSource::isComplete() const
{
    // Asked on every change of a mark, also for each slice of a listing: a top-level mark tells
    // whether anything below it is taken, without walking the whole tree.
    const FileSystemCheckedModel* model = sourceModel();
    if (!model)
        return false;
    for (int row = 0; row < model->rowCount(); ++row) {
        if (model->index(row, 0).data(Qt::CheckStateRole).toInt() != Qt::Unchecked)
            return true;
    }
    return false;
}

bool BackupPlanEditWizard::PageSource::validatePage()
{
    const FileSystemCheckedModel* model = sourceModel();
    return model && !model->includePath(false).isEmpty();
}

bool BackupPlanEditWizard::PageSource::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* files = dynamic_cast<TWB::Info::Plan::BackupFile*>(plan);
    FileSystemCheckedModel* model = sourceModel();
    if (!files || !model)
        return false;
    // The plan keeps the paths as the plan knows them, not this machine's real ones.
    files->setItems(model->includePath(false));
    files->setExcludeItems(model->excludePath(false));
    return true;
}

bool BackupPlanEditWizard::PageSource::fromPlan(TWB::Info::Plan::Base* plan)
{
    auto* files = dynamic_cast<TWB::Info::Plan::BackupFile*>(plan);
    if (!files)
        return false;
    if (auto* limited = qobject_cast<FileSystemCheckedShareControlModel*>(sourceModel()))
        limited->initChecked(files->id(), files->items(), files->excludeItems());
    else if (FileSystemCheckedModel* model = sourceModel())
        model->initChecked(files->items(), files->excludeItems());
    return true;
}

QString BackupPlanEditWizard::PageSource::summary()
{
    static const QString row = QStringLiteral("<tr><td></td><td>%1</td></tr>");
    QString text = QStringLiteral("<tr><td>%1</td><td></td></tr>").arg(tr("Backup source:"));
    if (const FileSystemCheckedModel* model = sourceModel()) {
        text += row.arg(tr("Include:"));
        const QStringList includes = model->includePath(false);
        for (const QString& path : includes)
            text += row.arg(path.toHtmlEscaped());
        text += row.arg(tr("Exclude:"));
        const QStringList excludes = model->excludePath(false);
        for (const QString& path : excludes)
            text += row.arg(path.toHtmlEscaped());
    }
    return text;
}

void BackupPlanEditWizard::PageSource::onShareControlAttention()
{
    QMessageBox box(QMessageBox::Information, wizard() ? wizard()->windowTitle() : windowTitle(),
        tr("Allow to backup only 1 network share in all backup plans"), QMessageBox::Ok,
        wizard() ? wizard()->currentPage() : this, Qt::Sheet);
    box.exec();
}

void BackupPlanEditWizard::PageSource::onShowLegend()
{
    auto* dialog = new PageCheckBoxLegendDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    for (int state : {2, 0, 1, 1001})
        dialog->setPixmapLegend(state, IncompleteStateDelegate::legend(state));
    dialog->show();
}

} // namespace TWB::GUI
