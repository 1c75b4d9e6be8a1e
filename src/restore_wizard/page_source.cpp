#include "restore_wizard/page_source.h"

#include "backup_wizard/page_check_box_legend_dialog.h"
#include "platform/plan/restore.h"
#include "platform/plan/restore_file.h"
#include "plans/incomplete_state_delegate.h"
#include "restore_wizard/restore_content_model.h"
#include "wizard/page_cloud.h"

#include <QLabel>
#include <QPointer>
#include <QTreeView>
#include <QUuid>
#include <QVBoxLayout>

#include <memory>

namespace TWB::GUI {

namespace {

const char* const CloudIdField = "Field_CloudId";

} // namespace

RestorePlanEditWizard::PageSource::PageSource(QWidget* parent)
    : PlanWizardBase::PageSource(tr("Restore source"), parent)
{
    setSubTitle(tr("Specify files and folders you want to restore"));
    delegate = new IncompleteStateDelegate(treeView);
    treeView->setItemDelegateForColumn(0, delegate);
    // Every row is an icon and a name: a folder of many thousand entries is laid out without measuring each row.
    treeView->setUniformRowHeights(true);
    legendLabel = new QLabel(QStringLiteral("<a href=#><span>%1</span></a>").arg(tr("Legend")), this);
    legendLabel->setTextInteractionFlags(Qt::LinksAccessibleByMouse);
    legendLabel->hide();
    connect(legendLabel, &QLabel::linkActivated, this, &PageSource::onShowLegend);
    legendLayout = new QHBoxLayout;
    legendLayout->addStretch(1);
    legendLayout->addWidget(legendLabel);
    static_cast<QVBoxLayout*>(layout())->addLayout(legendLayout);
}

RestoreContentModel* RestorePlanEditWizard::PageSource::contentModel() const
{
    return qobject_cast<RestoreContentModel*>(treeView->model());
}

QStringList RestorePlanEditWizard::PageSource::inTreeForm(const QStringList& paths) const
{
    // A machine's own paths, as a backup plan names them for the service, lie under this machine's
    // prefix of the account: that is where the tree shows them.
    const QString prefix = field(QLatin1String(PlanWizardBase::PageCloud::FieldPrefix)).toString();
    if (prefix.isEmpty())
        return paths;
    QStringList result;
    result.reserve(paths.size());
    for (const QString& path : paths) {
        const bool own = path == QLatin1String("/TWB_VOLUMES") || path == QLatin1String("/TWB_SHARES")
            || path.startsWith(QLatin1String("/TWB_VOLUMES/")) || path.startsWith(QLatin1String("/TWB_SHARES/"));
        result << (own ? QStringLiteral("/%1%2").arg(prefix, path) : path);
    }
    return result;
}

void RestorePlanEditWizard::PageSource::initializePage()
{
    PlanWizardBase::PageSource::initializePage();
    const QUuid destination(field(QLatin1String(CloudIdField)).toString());
    RestoreContentModel* old = contentModel();
    // Back and forth on the same account keeps what the user ticked.
    if (old && old->destination() == destination)
        return;
    auto* model = new RestoreContentModel(destination, treeView);
    setModel(model, 0);
    // The last reply of a seeding run lets the page go on.
    connect(model, &BaseModel::complite, this, &PageSource::completeChanged);
    // Once the plan's ticks are all in, the tree opens down to them, so that the user sees the choice.
    auto opened = std::make_shared<bool>(items.isEmpty());
    connect(model, &BaseModel::complite, this, [this, model, opened] {
        if (*opened || model->isSeeding())
            return;
        *opened = true;
        const QModelIndexList ways = model->match(model->index(0, 0), Qt::CheckStateRole,
            int(RestoreContentModel::IncompliteChecked), -1, Qt::MatchRecursive | Qt::MatchExactly);
        for (const QModelIndex& way : ways)
            treeView->expand(way);
    });
    delete old;
    model->initChecked(inTreeForm(items));
    Q_EMIT completeChanged();
}

bool RestorePlanEditWizard::PageSource::isComplete() const
{
    const RestoreContentModel* model = contentModel();
    if (!model)
        return false;
    legendLabel->setVisible(model->rowCount() > 0);
    // While the plan's paths are still being fetched, what is ticked is not yet all the plan holds.
    if (model->isSeeding())
        return false;
    const QModelIndex first = model->index(0, 0);
    return !model->match(first, Qt::CheckStateRole, int(Qt::Checked), 1, Qt::MatchRecursive | Qt::MatchExactly)
                .isEmpty()
        || !model->match(first, Qt::CheckStateRole, int(Qt::PartiallyChecked), 1, Qt::MatchRecursive | Qt::MatchExactly)
                .isEmpty();
}

bool RestorePlanEditWizard::PageSource::validatePage()
{
    return true;
}

int RestorePlanEditWizard::PageSource::nextId() const
{
    return 101;
}

bool RestorePlanEditWizard::PageSource::initPlan(TWB::Info::Plan::Base* plan)
{
    auto* restore = dynamic_cast<TWB::Info::Plan::RestoreFile*>(plan);
    const RestoreContentModel* model = contentModel();
    if (!restore || !model)
        return false;
    restore->setRestoreItems(model->checkedPath());
    return true;
}

bool RestorePlanEditWizard::PageSource::fromPlan(TWB::Info::Plan::Base* plan)
{
    if (!dynamic_cast<TWB::Info::Plan::Restore*>(plan))
        return false;
    auto* files = dynamic_cast<TWB::Info::Plan::RestoreFile*>(plan);
    items = files ? files->restoreItems() : QStringList();
    // Another plan's items are ticked anew when the page is next shown.
    if (RestoreContentModel* model = contentModel()) {
        treeView->setModel(nullptr);
        delete model;
    }
    return true;
}

QString RestorePlanEditWizard::PageSource::summary()
{
    QString text = QStringLiteral("<tr><td>%1</td><td></td></tr>").arg(QStringLiteral("Restore source"));
    if (const RestoreContentModel* model = contentModel()) {
        const QStringList paths = model->checkedPath();
        for (const QString& path : paths)
            text += QStringLiteral("<tr><td></td><td>%1</td></tr>").arg(trimmeredPath(path).toHtmlEscaped());
    }
    return text;
}

void RestorePlanEditWizard::PageSource::onShowLegend()
{
    QPointer<PageCheckBoxLegendDialog> dialog = new PageCheckBoxLegendDialog(this);
    for (int state : {2, 0, 1, 1001})
        dialog->setPixmapLegend(state, delegate->legend(state));
    dialog->exec();
    delete dialog;
}

} // namespace TWB::GUI
