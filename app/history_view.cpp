#include "app/history_view.h"

#include "app/plan_view_support.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "history/history_get_by_file_model.h"
#include "history/history_get_by_plan_model.h"
#include "plans/date_time_delegate.h"
#include "plans/duraton_delegate.h"
#include "plans/plan_result_delegate.h"
#include "plans/size_delegate.h"
#include "platform/communication/iparser.h"
#include "platform/communication/notification_center.h"
#include "platform/communication/notification_types.h"
#include "platform/communication/parser_factory.h"

#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSortFilterProxyModel>
#include <QSplitter>
#include <QStandardPaths>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QVBoxLayout>
#include <QtConcurrent>

#include <memory>

namespace TWB::Host {

using TWB::GUI::HistoryGetByFileModel;
using TWB::GUI::HistoryGetByPlanModel;
namespace Notification = TWB::Common::Communication::Notification;

namespace {

// Columns of the runs.
const int runNameColumn = 0;
const int runFilesColumn = 1;
const int runSizeColumn = 2;
const int runResultColumn = 3;
const int runStartColumn = 4;
const int runDurationColumn = 5;
const int runFinishColumn = 6;
const int runErrorColumn = 7;
// Columns of the file operations.
const int fileOperationColumn = 0;
const int filePlanColumn = 1;
const int filePathColumn = 2;
const int fileSizeColumn = 3;
const int fileFinishColumn = 4;
const int fileDurationColumn = 5;
const int fileModifiedColumn = 6;

// The service's kinds of file operation, by number.
QString operationText(int operation)
{
    switch (operation) {
    case 1:
        return HistoryView::tr("Uploaded");
    case 2:
        return HistoryView::tr("Restored");
    case 3:
        return HistoryView::tr("Deleted");
    case 4:
        return HistoryView::tr("Failed");
    default:
        return QString::number(operation);
    }
}

class OperationDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QString displayText(const QVariant& value, const QLocale&) const override { return operationText(value.toInt()); }
};

// The file model names a plan by id; the plan list gives its current name, and a plan removed since
// (a restore run once) keeps the name its run recorded.
class PlanNameDelegate final : public QStyledItemDelegate
{
public:
    PlanNameDelegate(const QComboBox* plans, QObject* parent)
        : QStyledItemDelegate(parent)
        , m_plans(plans)
    { }
    QString displayText(const QVariant& value, const QLocale&) const override
    {
        const int item = m_plans->findData(QUuid(value.toString()));
        return item > 0 ? m_plans->itemText(item) : value.toString();
    }

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const QString recorded = index.data(Qt::UserRole).toString();
        if (m_plans->findData(QUuid(index.data().toString())) <= 0 && !recorded.isEmpty())
            option->text = recorded;
    }

private:
    const QComboBox* m_plans; // not owned: a sibling in the same view
};

// A table, not a tree: QTreeView lays out its root after every insertion and fetches more each
// time, so a paged model shown in one would read its whole history. A table fetches only while
// its last row is in sight.
QTableView* makeTable(QWidget* parent, QAbstractItemModel* model)
{
    auto* view = new QTableView(parent);
    view->setShowGrid(false);
    view->setWordWrap(false);
    view->setCornerButtonEnabled(false);
    view->setTabKeyNavigation(false);
    view->setAlternatingRowColors(true);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setModel(model);
    QHeaderView* rowsHeader = view->verticalHeader();
    rowsHeader->hide();
    rowsHeader->setSectionResizeMode(QHeaderView::Fixed);
    rowsHeader->setDefaultSectionSize(qMax(view->fontMetrics().height(), 16) + 6);
    QHeaderView* header = view->horizontalHeader();
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setHighlightSections(false);
    header->setStretchLastSection(true);
    FullTextToolTips::install(view);
    return view;
}

} // namespace

HistoryView::HistoryView(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("history"));
    if (auto manager = TWB::GUI::ModelManager::instance()) {
        m_runs = qobject_cast<HistoryGetByPlanModel*>(manager->create(TWB::GUI::ModelNames::HistoryGetByPlan));
        m_files = qobject_cast<HistoryGetByFileModel*>(manager->create(TWB::GUI::ModelNames::HistoryGetByFile));
    }

    m_plan = new QComboBox(this);
    // Plan names can be long; the list shows them whole, the closed box a fixed share of the row.
    m_plan->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_plan->setMinimumContentsLength(24);
    m_period = new QComboBox(this);
    // The order is that of the models' periods: 0 all, 1 day, 2 week, 3 month.
    m_period->addItems({tr("All time"), tr("Last day"), tr("Last week"), tr("Last month")});
    m_result = new QComboBox(this);
    m_result->addItem(tr("All results"), QString());
    m_result->addItem(tr("Success"), QStringLiteral("6"));
    m_result->addItem(tr("Warning"), QStringLiteral("7"));
    m_result->addItem(tr("Failed"), QStringLiteral("8"));
    m_result->addItem(tr("Running"), QStringLiteral("2"));
    m_result->addItem(tr("Interrupted"), QStringLiteral("9|10|16|100|101|102"));
    m_operation = new QComboBox(this);
    m_operation->addItem(tr("All operations"), 0);
    for (int operation = 1; operation <= 4; ++operation)
        m_operation->addItem(operationText(operation), operation);

    m_export = new QPushButton(tr("Export\u2026"), this);
    // The menu arrow is drawn over the text unless the button has room for both.
    m_export->setMinimumWidth(m_export->sizeHint().width() + m_export->fontMetrics().height());
    auto* exportMenu = new QMenu(m_export);
    exportMenu->addAction(tr("Runs\u2026"), this, [this] { askExportPath(true); });
    exportMenu->addAction(tr("File operations\u2026"), this, [this] { askExportPath(false); });
    m_export->setMenu(exportMenu);
    m_progress = new QProgressBar(this);
    m_progress->setMaximumWidth(160);
    m_progress->hide();
    m_status = new QLabel(this);
    // A long path must not widen the tab; the whole text stays in the tool tip.
    m_status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_status->setMinimumWidth(120);

    auto* filters = new QHBoxLayout;
    filters->addWidget(new QLabel(tr("Plan:"), this));
    filters->addWidget(m_plan);
    filters->addSpacing(8);
    filters->addWidget(new QLabel(tr("Period:"), this));
    filters->addWidget(m_period);
    filters->addSpacing(8);
    filters->addWidget(new QLabel(tr("Result:"), this));
    filters->addWidget(m_result);
    filters->addWidget(m_status, 1);
    filters->addWidget(m_progress);
    filters->addWidget(m_export);

    m_runsByResult = new QSortFilterProxyModel(this);
    m_runsByResult->setFilterKeyColumn(runResultColumn);
    m_runsByResult->setSourceModel(m_runs);
    m_runsView = makeTable(this, m_runsByResult);
    m_runsView->setObjectName(QStringLiteral("history-runs"));
    m_runsView->setItemDelegateForColumn(runSizeColumn, new TWB::GUI::SizeDelegate(m_runsView));
    m_runsView->setItemDelegateForColumn(runResultColumn, new TWB::GUI::PlanResultDelegate(m_runsView));
    m_runsView->setItemDelegateForColumn(runStartColumn, new TWB::GUI::DateTimeDelegate(m_runsView));
    m_runsView->setItemDelegateForColumn(runDurationColumn, new TWB::GUI::DuratonDelegate(m_runsView));
    m_runsView->setItemDelegateForColumn(runFinishColumn, new TWB::GUI::DateTimeDelegate(m_runsView));

    m_filesTitle = new QLabel(this);
    m_filesTitle->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* filesBar = new QHBoxLayout;
    filesBar->addWidget(m_filesTitle, 1);
    filesBar->addWidget(new QLabel(tr("Operation:"), this));
    filesBar->addWidget(m_operation);
    m_filesView = makeTable(this, m_files);
    m_filesView->setObjectName(QStringLiteral("history-files"));
    m_filesView->setItemDelegateForColumn(fileOperationColumn, new OperationDelegate(m_filesView));
    m_filesView->setItemDelegateForColumn(filePlanColumn, new PlanNameDelegate(m_plan, m_filesView));
    m_filesView->setItemDelegateForColumn(fileSizeColumn, new TWB::GUI::SizeDelegate(m_filesView));
    m_filesView->setItemDelegateForColumn(fileFinishColumn, new TWB::GUI::DateTimeDelegate(m_filesView));
    m_filesView->setItemDelegateForColumn(fileDurationColumn, new TWB::GUI::DuratonDelegate(m_filesView));
    m_filesView->setItemDelegateForColumn(fileModifiedColumn, new TWB::GUI::DateTimeDelegate(m_filesView));

    // Widths follow the font: room for the header and for what a column usually holds.
    const QFontMetrics metrics = fontMetrics();
    const QString time = TWB::GUI::DateTimeDelegate::toText(QStringLiteral("20261228235959"), locale());
    auto fit = [&metrics](QTableView* view, const QList<QPair<int, QString>>& samples) {
        for (const auto& [column, sample] : samples) {
            const QString title
                = view->model() ? view->model()->headerData(column, Qt::Horizontal).toString() : QString();
            view->horizontalHeader()->resizeSection(
                column, qMax(metrics.horizontalAdvance(title), metrics.horizontalAdvance(sample)) + 32);
        }
    };
    fit(m_runsView,
        {{runNameColumn, QStringLiteral("My documents backup")}, {runFilesColumn, QStringLiteral("999999")},
            {runSizeColumn, QStringLiteral("999.9 MB")}, {runResultColumn, tr("Interrupted")}, {runStartColumn, time},
            {runDurationColumn, QStringLiteral("59 min")}, {runFinishColumn, time}});
    fit(m_filesView,
        {{fileOperationColumn, tr("Uploaded")}, {filePlanColumn, QStringLiteral("My documents")},
            {filePathColumn, QStringLiteral("/home/someone/Documents/projects/report-final.odt")},
            {fileSizeColumn, QStringLiteral("999.9 MB")}, {fileFinishColumn, time},
            {fileDurationColumn, QStringLiteral("59 min")}, {fileModifiedColumn, time}});
    Q_UNUSED(runErrorColumn)

    auto* files = new QWidget(this);
    auto* filesLayout = new QVBoxLayout(files);
    filesLayout->setContentsMargins(0, 4, 0, 0);
    filesLayout->addLayout(filesBar);
    filesLayout->addWidget(m_filesView);
    auto* splitter = new QSplitter(Qt::Vertical, this);
    splitter->addWidget(m_runsView);
    splitter->addWidget(files);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addLayout(filters);
    layout->addWidget(splitter, 1);

    m_refresh.setSingleShot(true);
    m_refresh.setInterval(300);
    connect(&m_refresh, &QTimer::timeout, this, [this] {
        if (!hasModels())
            return;
        // The selected run's operations stay in view while the runs reload, and are read again
        // once the run is found among them.
        m_keepRun = selectedRun();
        m_runs->load(chosenPeriod(), chosenPlan());
        if (m_keepRun == 0)
            loadFiles();
    });
    connect(&m_save, &QFutureWatcher<QString>::finished, this, &HistoryView::onExportSaved);
    fillPlans();
    if (auto table = TWB::GUI::ModelManager::instance()
            ? TWB::GUI::ModelManager::instance()->create(TWB::GUI::ModelNames::PlanTable)
            : nullptr) {
        // Plans come and go, and are renamed: the list of plans follows.
        connect(table, &QAbstractItemModel::rowsInserted, this, &HistoryView::fillPlans);
        connect(table, &QAbstractItemModel::rowsRemoved, this, &HistoryView::fillPlans);
        connect(table, &QAbstractItemModel::dataChanged, this, &HistoryView::fillPlans);
    }
    if (!hasModels()) {
        m_status->setText(tr("The history is not available."));
        m_export->setEnabled(false);
        return;
    }
    connect(m_plan, qOverload<int>(&QComboBox::activated), this, &HistoryView::reload);
    connect(m_period, qOverload<int>(&QComboBox::activated), this, &HistoryView::reload);
    connect(m_result, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] {
        m_runsByResult->setFilterRegularExpression(
            QRegularExpression(QStringLiteral("^(%1)$").arg(m_result->currentData().toString())));
        if (m_result->currentIndex() == 0)
            m_runsByResult->setFilterRegularExpression(QRegularExpression());
    });
    connect(m_operation, qOverload<int>(&QComboBox::activated), this, &HistoryView::loadFiles);
    connect(m_runsView->selectionModel(), &QItemSelectionModel::selectionChanged, this, &HistoryView::loadFiles);
    connect(m_runs, &TWB::GUI::BaseModel::complite, this, &HistoryView::onRunsLoaded);
    connect(m_runs, &TWB::GUI::BaseModel::error, this, &HistoryView::onModelError);
    connect(m_files, &TWB::GUI::BaseModel::error, this, &HistoryView::onModelError);
    connect(m_runs, &HistoryGetByPlanModel::savePlanReady, this, &HistoryView::onExportReady);
    connect(m_files, &HistoryGetByFileModel::saveFileReady, this, &HistoryView::onExportReady);
    for (TWB::GUI::HistoryModelBase* model : {static_cast<TWB::GUI::HistoryModelBase*>(m_runs.data()),
             static_cast<TWB::GUI::HistoryModelBase*>(m_files.data())}) {
        connect(model, &TWB::GUI::HistoryModelBase::exportProgress, this, [this](int lines) {
            m_exportLines = lines;
            if (m_progress->maximum() > 0)
                m_progress->setValue(qMin(lines, m_progress->maximum()));
            m_status->setText(tr("Exporting\u2026 %L1 lines").arg(lines));
        });
    }
    if (auto center = TWB::Common::Communication::NotificationCenter::instance())
        connect(
            center, &TWB::Common::Communication::NotificationCenter::notification, this, &HistoryView::onNotification);
    reload();
}

HistoryView::~HistoryView()
{
    // The copy holds its own reference to the temporary file; only its result is dropped.
    m_save.waitForFinished();
}

QUuid HistoryView::chosenPlan() const
{
    return m_plan->currentData().toUuid();
}

int HistoryView::chosenPeriod() const
{
    return m_period->currentIndex();
}

qint64 HistoryView::selectedRun() const
{
    const QModelIndexList rows
        = m_runsView->selectionModel() ? m_runsView->selectionModel()->selectedRows() : QModelIndexList();
    if (rows.isEmpty() || !m_runs)
        return 0;
    return m_runs->entry(m_runsByResult->mapToSource(rows.first()).row()).value(QStringLiteral("DbID")).toLongLong();
}

void HistoryView::fillPlans()
{
    auto manager = TWB::GUI::ModelManager::instance();
    QAbstractItemModel* table = manager ? manager->create(TWB::GUI::ModelNames::PlanTable) : nullptr;
    QList<QPair<QString, QUuid>> plans;
    for (int row = 0; table && row < table->rowCount(); ++row)
        plans.append({table->index(row, 1).data().toString(), QUuid(table->index(row, 0).data().toString())});
    std::sort(plans.begin(), plans.end(),
        [](const auto& a, const auto& b) { return QString::localeAwareCompare(a.first, b.first) < 0; });
    const QUuid chosen = chosenPlan();
    const QSignalBlocker blocker(m_plan);
    m_plan->clear();
    m_plan->addItem(tr("All plans"), QUuid());
    for (const auto& [name, id] : qAsConst(plans))
        m_plan->addItem(name, id);
    const int item = m_plan->findData(chosen);
    m_plan->setCurrentIndex(qMax(item, 0));
    // A chosen plan that was removed leaves its history in view under all plans.
    if (item < 0 && !chosen.isNull())
        reload();
    m_filesView->viewport()->update();
}

void HistoryView::reload()
{
    if (!hasModels())
        return;
    m_keepRun = 0;
    m_runs->load(chosenPeriod(), chosenPlan());
    loadFiles();
}

void HistoryView::loadFiles()
{
    // While the runs reload, the selection they lose is no choice of the user's.
    if (!hasModels() || m_keepRun != 0)
        return;
    const qint64 run = selectedRun();
    m_files->setRun(run);
    if (run == 0) {
        m_filesTitle->setText(chosenPlan().isNull()
                ? tr("File operations of all runs")
                : tr("File operations of all runs of %1").arg(m_plan->currentText()));
        m_files->load(chosenPeriod(), chosenPlan(), m_operation->currentData().toInt());
        return;
    }
    const QModelIndex index = m_runsByResult->mapToSource(m_runsView->selectionModel()->selectedRows().first());
    const QMap<QString, QVariant> entry = m_runs->entry(index.row());
    m_filesTitle->setText(
        tr("File operations of %1, run of %2")
            .arg(entry.value(QStringLiteral("PlanName")).toString(),
                TWB::GUI::DateTimeDelegate::toText(entry.value(QStringLiteral("StartTimeUTC")), locale())));
    // A run's own operations, whatever the period chosen for the runs.
    m_files->load(0, QUuid(entry.value(QStringLiteral("PlanId")).toString()), m_operation->currentData().toInt());
}

void HistoryView::onRunsLoaded()
{
    if (m_keepRun == 0)
        return;
    int found = -1;
    for (int row = 0; row < m_runs->rowCount() && found < 0; ++row) {
        if (m_runs->entry(row).value(QStringLiteral("DbID")).toLongLong() == m_keepRun)
            found = row;
    }
    m_keepRun = 0;
    // A run further down than the first page is not looked for: the operations of all runs take its place.
    if (found < 0) {
        loadFiles();
        return;
    }
    m_runsView->selectionModel()->setCurrentIndex(m_runsByResult->mapFromSource(m_runs->index(found, 0)),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void HistoryView::onNotification(const QJsonDocument& document)
{
    static const Notification::ParserFactory factory;
    const std::unique_ptr<Notification::IParser> parser(factory.create(document));
    // A run starting or ending changes the runs; a plan removed keeps its history.
    if (parser && parser->type() == QUuid(QLatin1String(Notification::Type::PlanStateChanged)))
        m_refresh.start();
}

void HistoryView::askExportPath(bool runs)
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString name = runs ? tr("runs.csv") : tr("file-operations.csv");
    const QString path = QFileDialog::getSaveFileName(this, runs ? tr("Export runs") : tr("Export file operations"),
        folder + QLatin1Char('/') + name, tr("CSV files (*.csv)"));
    if (path.isEmpty())
        return;
    if (runs)
        exportRuns(path);
    else
        exportFiles(path);
}

void HistoryView::exportRuns(const QString& path)
{
    if (!hasModels() || isExporting())
        return;
    startExport(path, 0);
    if (!m_runs->issuePlanExport(chosenPeriod(), chosenPlan(), 0))
        finishExport(tr("The export could not be sent to the service."));
}

void HistoryView::exportFiles(const QString& path)
{
    if (!hasModels() || isExporting())
        return;
    const qint64 run = selectedRun();
    int total = 0;
    QUuid plan = chosenPlan();
    int period = chosenPeriod();
    if (run > 0) {
        const QModelIndex index = m_runsByResult->mapToSource(m_runsView->selectionModel()->selectedRows().first());
        const QMap<QString, QVariant> entry = m_runs->entry(index.row());
        total = entry.value(QStringLiteral("FileOperationsTotalCount")).toInt();
        plan = QUuid(entry.value(QStringLiteral("PlanId")).toString());
        period = 0;
    }
    startExport(path, m_operation->currentData().toInt() == 0 ? total : 0);
    m_files->setRun(run);
    if (!m_files->issueFileExport(period, plan, 0, m_operation->currentData().toInt()))
        finishExport(tr("The export could not be sent to the service."));
}

void HistoryView::startExport(const QString& path, int total)
{
    m_exportPath = path;
    m_exportLines = 0;
    m_export->setEnabled(false);
    // Without a known total the bar shows that work goes on, and the label counts the lines.
    m_progress->setRange(0, total);
    m_progress->setValue(0);
    m_progress->show();
    m_status->setText(tr("Exporting\u2026"));
}

void HistoryView::onExportReady(const QSharedPointer<QTemporaryFile>& file)
{
    if (!isExporting())
        return;
    const QString path = m_exportPath;
    // A history of a million lines is tens of megabytes: the copy runs beside the event loop.
    m_save.setFuture(QtConcurrent::run([file, path]() -> QString {
        if (QFile::exists(path) && !QFile::remove(path))
            return HistoryView::tr("%1 exists and cannot be replaced.").arg(path);
        QFile source(file->fileName());
        if (!source.copy(path))
            return HistoryView::tr("Cannot write %1: %2").arg(path, source.errorString());
        return QString();
    }));
}

void HistoryView::onExportSaved()
{
    finishExport(m_save.result());
}

void HistoryView::onModelError(const QString& text)
{
    if (isExporting() && !m_save.isRunning()) {
        finishExport(text);
        return;
    }
    m_status->setText(text);
    m_status->setToolTip(text);
}

void HistoryView::finishExport(const QString& error)
{
    const QString path = m_exportPath;
    m_exportPath.clear();
    m_progress->hide();
    m_export->setEnabled(true);
    m_status->setText(error.isEmpty() ? tr("Exported %L1 lines to %2").arg(m_exportLines).arg(path) : error);
    m_status->setToolTip(m_status->text());
    Q_EMIT exportFinished(path, error);
}

} // namespace TWB::Host
