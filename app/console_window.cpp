#include "app/console_window.h"

#include "app/history_view.h"
#include "app/desktop_notifier.h"
#include "app/configuration_actions.h"
#include "app/plan_view_support.h"
#include "app/run_progress_delegate.h"
#include "app/storage_actions.h"
#include "backup_wizard/backup_plan_edit_wizard.h"
#include "platform/plan/backup_file.h"
#include "restore_wizard/restore_plan_edit_wizard.h"
#include "frame/application.h"
#include "frame/application_event_controller.h"
#include "frame/base_model.h"
#include "frame/model_manager.h"
#include "frame/model_names.h"
#include "plans/duraton_delegate.h"
#include "plans/plan_control_object.h"
#include "plans/plan_quick_plan_status.h"
#include "plans/plan_result_delegate.h"
#include "plans/plan_status_list.h"
#include "plans/plan_table_model.h"
#include "plans/plan_xml_list.h"
#include "plans/size_delegate.h"
#include "plans/storage_name_delegate.h"
#include "platform/plan/base.h"
#include "platform/settings/default_settings.h"
#include "settings/setting_dialog.h"
#include "storages/storage_connections_model.h"
#include "storages/storage_connections_sort_model.h"
#include "platform/communication/connection_manager.h"
#include "platform/defines/path.h"
#include "widgets/icon_manager.h"

#include <QAction>
#include <QCloseEvent>
#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>

#include <memory>

namespace TWB::Host {

using TWB::Common::Communication::ConnectionManager;
using TWB::GUI::IconManager;
using TWB::GUI::ModelManager;
namespace ModelNames = TWB::GUI::ModelNames;

namespace {

// Columns of the backup and restore plan tables.
const int idColumn = 0;
const int nameColumn = 1;
const int kindColumn = 2;
const int scheduleColumn = 3;
const int statusColumn = 4;
const int storageColumn = 5;
const int lastTimeColumn = 6;
const int lastStatusColumn = 7;
const int messageColumn = 8;
const int nextRunColumn = 9;
const int durationColumn = 10;
const int filesColumn = 11;
const int failedColumn = 12;
const int sizeColumn = 13;
const int planXmlColumn = 14;
const int lastColumn = 15;

// Columns of the storage accounts list.
const int storageNameColumn = 0;
const int storagePathColumn = 2;
const int storagePrefixColumn = 3;
const int storageUsedColumn = 7;
const int storageColumns = 10;

std::unique_ptr<QSettings> layoutSettings()
{
    return std::make_unique<QSettings>(
        QSettings::IniFormat, QSettings::UserScope, QStringLiteral("tidewrack"), QStringLiteral("twbgui"));
}

} // namespace

ConsoleWindow::ConsoleWindow(
    TWB::GUI::ApplicationEventController& controller, ServiceLauncher& launcher, QWidget* parent)
    : QMainWindow(parent)
    , m_launcher(launcher)
{
    setWindowTitle(TWB::GUI::Application::applicationName());
    setWindowIcon(QIcon(QStringLiteral(":/images/logo.svg")));
    resize(1100, 640);

    m_control = new TWB::GUI::PlanControlObject(this);
    m_tabs = new QTabWidget(this);
    m_tabs->setDocumentMode(true);
    m_backupView = makePlanView(ModelNames::PlanBackupTable);
    m_restoreView = makePlanView(ModelNames::PlanRestoreTable);
    m_tabs->addTab(m_backupView, tr("Backup plans"));
    m_tabs->addTab(m_restoreView, tr("Restore plans"));
    m_storageView = makeStorageView();
    if (m_storageView) {
        m_tabs->addTab(m_storageView, tr("Storage accounts"));
        m_storageActions = new StorageActions(m_storageView, m_tabs, this);
        connect(m_storageActions, &StorageActions::restoreRequested, this, &ConsoleWindow::restoreFromStorage);
    }
    m_historyView = new HistoryView(this);
    if (m_historyView->hasModels()) {
        m_tabs->addTab(m_historyView, tr("History"));
    } else {
        // No empty tab stands for a history the host does not offer.
        delete m_historyView;
        m_historyView = nullptr;
    }
    m_desktopNotifier = new DesktopNotifier(this);
    setCentralWidget(m_tabs);
    buildActions();
    m_configurationActions = new ConfigurationActions(this);
    menuBar()->addMenu(tr("&File"))->addActions(m_configurationActions->actions());

    // The connection state stays in view at the right of the status bar.
    auto* connection = new QWidget(this);
    auto* connectionLayout = new QHBoxLayout(connection);
    connectionLayout->setContentsMargins(0, 0, 6, 0);
    m_connectionDot = new QLabel(connection);
    m_connectionDot->setFixedSize(10, 10);
    m_connectionText = new QLabel(connection);
    m_retry = new QPushButton(tr("Connect now"), connection);
    m_retry->setFlat(true);
    m_retry->hide();
    connectionLayout->addWidget(m_retry);
    connectionLayout->addWidget(m_connectionDot);
    connectionLayout->addWidget(m_connectionText);
    statusBar()->addPermanentWidget(connection);

    connect(m_retry, &QPushButton::clicked, &m_launcher, &ServiceLauncher::connectNow);
    connect(
        &controller, &TWB::GUI::ApplicationEventController::localManagmentConnected, this, &ConsoleWindow::onConnected);
    connect(&controller, &TWB::GUI::ApplicationEventController::localManagmentDisconnected, this,
        &ConsoleWindow::onDisconnected);
    connect(&controller, &TWB::GUI::ApplicationEventController::updateStarted, this, &ConsoleWindow::onUpdateStarted);
    connect(&launcher, &ServiceLauncher::stateChanged, this, &ConsoleWindow::onLauncherState);
    connect(m_control, &TWB::GUI::PlanControlObject::statusChanged, this, &ConsoleWindow::onStatusChanged);
    connect(m_control, &TWB::GUI::PlanControlObject::removeCurrentPlan, this, &ConsoleWindow::onCurrentPlanRemoved);
    connect(m_control, &TWB::GUI::PlanControlObject::updatedError, this,
        [this](const QString& text) { statusBar()->showMessage(text, 10000); });
    if (auto list = TWB::GUI::PlanStatusList::instance())
        connect(list, &TWB::GUI::PlanStatusList::updated, this, &ConsoleWindow::onPlanProgress);
    connect(m_tabs, &QTabWidget::currentChanged, this, &ConsoleWindow::onTabChanged);
    watchRunsForStorages();
    setServiceAway(launcher.state() != ServiceLauncher::State::Connected);
    onLauncherState(launcher.state());
    onTabChanged();
}

ConsoleWindow::~ConsoleWindow() = default;

QTreeView* ConsoleWindow::makePlanView(const QString& modelName)
{
    auto* view = new QTreeView(this);
    view->setRootIsDecorated(false);
    view->setUniformRowHeights(true);
    view->setAlternatingRowColors(true);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setContextMenuPolicy(Qt::CustomContextMenu);
    view->setObjectName(modelName);
    auto manager = ModelManager::instance();
    TWB::GUI::BaseModel* model = manager ? manager->create(modelName) : nullptr;
    if (!model)
        return view;
    auto* sorted = new PlanSortModel(view);
    sorted->setSourceModel(model);
    view->setModel(sorted);
    for (int column : {idColumn, kindColumn, planXmlColumn, lastColumn})
        view->setColumnHidden(column, true);
    QHeaderView* header = view->header();
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setStretchLastSection(false);
    // What a user reads first comes first, sized so that a new 1100 px window shows it without
    // scrolling; the user's own order and widths come back with restoreLayout().
    // Widths follow the font: room for the header and for what the column usually holds.
    const QFontMetrics metrics = view->fontMetrics();
    auto room = [&metrics, model](int column, const QString& sample, int extra = 0) {
        const QString title = model->headerData(column, Qt::Horizontal).toString();
        return qMax(metrics.horizontalAdvance(title) + 24, metrics.horizontalAdvance(sample) + 16 + extra);
    };
    const QString time
        = QLocale::system().toString(QDateTime(QDate(2026, 12, 28), QTime(23, 59, 59)), QLocale::ShortFormat);
    const int icon = view->style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, view) + 6;
    // A name as users give them is read whole, beside its icon; a progress label that outgrows its
    // column shows whole in its tool tip.
    const QList<QPair<int, int>> columns = {{nameColumn, room(nameColumn, QStringLiteral("My documents"), icon)},
        {statusColumn, room(statusColumn, tr("Stop"), icon)},
        {lastStatusColumn, room(lastStatusColumn, QStringLiteral("Uploading 99% \u00b7 99 MB/s"))},
        {lastTimeColumn, room(lastTimeColumn, time)}, {nextRunColumn, room(nextRunColumn, time)},
        {durationColumn, room(durationColumn, QStringLiteral("59 min"))},
        {sizeColumn, room(sizeColumn, QStringLiteral("999.9 MB"))}, {messageColumn, 240}, {storageColumn, 140},
        {scheduleColumn, 170}, {filesColumn, room(filesColumn, QStringLiteral("99999"))},
        {failedColumn, room(failedColumn, QStringLiteral("99999"))}};
    for (int place = 0; place < columns.size(); ++place) {
        const int column = columns.at(place).first;
        header->moveSection(header->visualIndex(column), place);
        header->resizeSection(column, columns.at(place).second);
    }
    view->setItemDelegateForColumn(statusColumn, new TWB::GUI::PlanQuickPlanStatus(view));
    view->setItemDelegateForColumn(storageColumn, new TWB::GUI::StorageNameDelegate(view));
    auto* progress = new RunProgressDelegate(new TWB::GUI::PlanResultDelegate(view), view);
    m_progressDelegates << progress;
    view->setItemDelegateForColumn(lastStatusColumn, progress);
    view->setItemDelegateForColumn(messageColumn, new RunMessageDelegate(view));
    view->setItemDelegateForColumn(durationColumn, new TWB::GUI::DuratonDelegate(view));
    view->setItemDelegateForColumn(sizeColumn, new TWB::GUI::SizeDelegate(view));
    header->setSortIndicator(nameColumn, Qt::AscendingOrder);
    view->setSortingEnabled(true);
    FullTextToolTips::install(view);
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        [this, view] { onSelectionChanged(view); });
    connect(view, &QTreeView::customContextMenuRequested, this, [this, view](const QPoint& point) {
        if (!view->indexAt(point).isValid())
            return;
        QMenu menu(this);
        menu.addActions({m_start, m_stop, m_runFull});
        menu.addSeparator();
        menu.addAction(m_edit);
        if (view == m_backupView)
            menu.addAction(m_restore);
        menu.addSeparator();
        menu.addAction(m_remove);
        menu.exec(view->viewport()->mapToGlobal(point));
    });
    connect(view, &QTreeView::doubleClicked, this, [this](const QModelIndex& index) {
        if (index.isValid() && m_edit->isEnabled())
            onEditPlan();
    });
    // Documents fill the storage column; fetch each plan's once it is listed.
    connect(model, &QAbstractItemModel::rowsInserted, this, [model](const QModelIndex&, int first, int last) {
        // The source's own rows: the view's sorted rows may stand elsewhere.
        auto list = TWB::GUI::PlanXmlList::instance();
        for (int row = first; list && row <= last; ++row) {
            const QUuid id(model->index(row, idColumn).data().toString());
            if (!list->containts(id))
                list->getPlan(id);
        }
    });
    return view;
}

QTreeView* ConsoleWindow::makeStorageView()
{
    auto manager = ModelManager::instance();
    TWB::GUI::BaseModel* model = manager ? manager->create(ModelNames::StorageConnection) : nullptr;
    if (!model)
        return nullptr;
    auto* sorted = new TWB::GUI::StorageConnectionsSortModel(this);
    sorted->setSourceModel(model);
    sorted->sort(storageNameColumn);
    auto* view = new QTreeView(this);
    view->setObjectName(QStringLiteral("storages"));
    view->setRootIsDecorated(false);
    view->setUniformRowHeights(true);
    view->setAlternatingRowColors(true);
    view->setModel(sorted);
    for (int column = 0; column < storageColumns; ++column) {
        view->setColumnHidden(column,
            column != storageNameColumn && column != storagePathColumn && column != storagePrefixColumn
                && column != storageUsedColumn);
    }
    view->setItemDelegateForColumn(storageUsedColumn, new TWB::GUI::SizeDelegate(view));
    view->header()->resizeSection(storageNameColumn, 240);
    view->header()->resizeSection(storagePathColumn, 360);
    FullTextToolTips::install(view);
    return view;
}

void ConsoleWindow::buildActions()
{
    auto* toolbar = addToolBar(tr("Plans"));
    toolbar->setObjectName(QStringLiteral("plans-toolbar"));
    toolbar->setMovable(false);
    toolbar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    const QSize iconSize(20, 20);
    toolbar->setIconSize(iconSize);

    m_newBackup = toolbar->addAction(IconManager::icon(IconManager::Add, IconManager::Small), tr("New backup plan"));
    m_newBackup->setToolTip(tr("Create a backup plan with the wizard"));
    m_newRestore = toolbar->addAction(IconManager::icon(IconManager::Add, IconManager::Small), tr("New restore plan"));
    m_newRestore->setToolTip(tr("Choose what to bring back from a storage, and where to put it"));
    m_edit = toolbar->addAction(IconManager::icon(IconManager::Edit, IconManager::Small), tr("Edit"));
    m_edit->setToolTip(tr("Change the selected plan"));
    m_restore = toolbar->addAction(IconManager::icon(IconManager::RestorePlan, IconManager::Small), tr("Restore"));
    m_restore->setToolTip(tr("Restore what the selected backup plan backs up"));
    toolbar->addSeparator();
    m_start = toolbar->addAction(IconManager::icon(IconManager::BackupPlanRunning, IconManager::Small), tr("Start"));
    m_start->setToolTip(tr("Run the selected plan now"));
    m_stop = toolbar->addAction(IconManager::icon(IconManager::BackupPlanFail, IconManager::Small), tr("Stop"));
    m_stop->setToolTip(tr("Stop the selected plan"));
    m_runFull
        = toolbar->addAction(IconManager::icon(IconManager::BackupPlan, IconManager::Small), tr("Run full backup"));
    m_runFull->setToolTip(tr("Back up every file again, not only what changed"));
    toolbar->addSeparator();
    m_remove = toolbar->addAction(IconManager::icon(IconManager::Remove, IconManager::Small), tr("Remove"));
    m_remove->setToolTip(tr("Remove the selected plan"));
    m_toolbar = toolbar;
    // Plan wizards read the default notice addressee at once: the options are fetched before any opens.
    TWB::DefaultSettings::instance();
    m_settings = new QAction(tr("Settings…"), this);
    auto* settingsButton = new QToolButton(m_tabs);
    settingsButton->setDefaultAction(m_settings);
    m_tabs->setCornerWidget(settingsButton, Qt::TopRightCorner);
    connect(m_settings, &QAction::triggered, this, [this] {
        QPointer<TWB::GUI::SettingDialog> dialog = new TWB::GUI::SettingDialog(this);
        dialog->exec();
        delete dialog;
    });
    // A tab without actions leaves the bar empty; it keeps its height so that the tabs do not jump.
    toolbar->setMinimumHeight(toolbar->sizeHint().height());
    for (QAction* action : {m_newBackup, m_newRestore, m_edit, m_restore, m_start, m_stop, m_runFull, m_remove})
        m_toolTips.insert(action, action->toolTip());
    const QList<QAction*> planActions = toolbar->actions();
    setTabActions(m_backupView, planActions);
    setTabActions(m_restoreView, planActions);
    if (m_storageActions) {
        // The storage tab offers the account actions in the same place as the plan tabs offer theirs.
        setTabActions(m_storageView, m_storageActions->leaveCorner());
        auto* add = qobject_cast<QToolButton*>(toolbar->widgetForAction(m_storageActions->addAction()));
        if (add && m_storageActions->addMenu())
            add->setPopupMode(QToolButton::InstantPopup);
    }

    connect(m_start, &QAction::triggered, m_control, [this] { m_control->onChangePlanStatus(false); });
    connect(m_stop, &QAction::triggered, m_control, [this] { m_control->onChangePlanStatus(false); });
    connect(m_runFull, &QAction::triggered, m_control, [this] { m_control->onChangePlanStatus(true); });
    connect(m_remove, &QAction::triggered, this, &ConsoleWindow::onRemoveClicked);
    connect(m_newBackup, &QAction::triggered, this, &ConsoleWindow::onNewBackupPlan);
    connect(m_newRestore, &QAction::triggered, this, &ConsoleWindow::onNewRestorePlan);
    connect(m_edit, &QAction::triggered, this, &ConsoleWindow::onEditPlan);
    connect(m_restore, &QAction::triggered, this, &ConsoleWindow::onRestoreFromPlan);
}

void ConsoleWindow::setTabActions(QWidget* tab, const QList<QAction*>& actions)
{
    m_tabActions.insert(tab, actions);
    for (QAction* action : actions) {
        if (!m_toolbar->actions().contains(action))
            m_toolbar->addAction(action);
    }
    updateToolbar();
}

void ConsoleWindow::updateToolbar()
{
    if (!m_toolbar)
        return;
    const QList<QAction*> shown = m_tabActions.value(m_tabs->currentWidget());
    for (QAction* action : m_toolbar->actions()) {
        bool visible = shown.contains(action);
        // Each plan tab makes and acts on plans of its own kind only.
        const bool restoreTab = m_tabs->currentWidget() == m_restoreView;
        if ((action == m_runFull || action == m_newBackup || action == m_restore) && restoreTab)
            visible = false;
        if (action == m_newRestore && !restoreTab)
            visible = false;
        action->setVisible(visible);
    }
}

void ConsoleWindow::onTabChanged()
{
    QWidget* current = m_tabs->currentWidget();
    if (current == m_backupView || current == m_restoreView) {
        onSelectionChanged(static_cast<QTreeView*>(current));
    } else {
        // No plan is in view here: the plan actions must not act on one the user cannot see.
        m_currentPlan = QUuid();
        m_control->setCurrentPlan(m_currentPlan, 0);
        onStatusChanged(0, 0);
    }
    updateToolbar();
}

void ConsoleWindow::onSelectionChanged(QTreeView* view)
{
    if (view != m_tabs->currentWidget() || !view->selectionModel())
        return;
    const QModelIndexList rows = view->selectionModel()->selectedRows(idColumn);
    m_currentPlan = rows.isEmpty() ? QUuid() : QUuid(rows.first().data().toString());
    m_control->setCurrentPlan(m_currentPlan, 0);
    m_control->updateWidget();
    if (m_currentPlan.isNull())
        onStatusChanged(0, 0);
}

void ConsoleWindow::onStatusChanged(int subType, int status)
{
    m_subType = subType;
    m_status = status;
    const bool known = !m_away && !m_currentPlan.isNull() && (subType == 1 || subType == 2);
    m_start->setEnabled(known && status == 2);
    m_stop->setEnabled(known && status == 1);
    m_runFull->setEnabled(known && subType == 1 && status == 2);
    m_remove->setEnabled(known && status == 2);
    // A running plan is edited once it stops; restoring reads the storage and may go on beside a backup.
    m_edit->setEnabled(known && status == 2);
    m_restore->setEnabled(known && subType == 1);
    m_newBackup->setEnabled(!m_away);
    m_newRestore->setEnabled(!m_away);
}

void ConsoleWindow::setServiceAway(bool away)
{
    m_away = away;
    for (RunProgressDelegate* delegate : qAsConst(m_progressDelegates))
        delegate->setServiceAway(away);
    const QString reason = tr("Unavailable while the local backup service is away; the console is starting it again.");
    for (auto tip = m_toolTips.cbegin(); tip != m_toolTips.cend(); ++tip)
        tip.key()->setToolTip(away ? tip.value() + QStringLiteral("\n") + reason : tip.value());
    onStatusChanged(m_subType, m_status);
    for (QTreeView* view : {m_backupView, m_restoreView})
        view->viewport()->update();
}

void ConsoleWindow::watchRunsForStorages()
{
    // An account's space used changes with each run into it: read the account again when a run ends.
    auto manager = ModelManager::instance();
    auto* table = manager ? qobject_cast<TWB::GUI::PlanTableModel*>(manager->create(ModelNames::PlanTable)) : nullptr;
    if (!table)
        return;
    auto check = [this, table](int first, int last) {
        for (int row = first; row <= last && row < table->rowCount(); ++row) {
            const QUuid id(table->index(row, idColumn).data().toString());
            const bool running = table->index(row, statusColumn).data().toInt() == 1;
            const bool wasRunning = m_running.value(id, false);
            m_running.insert(id, running);
            if (!wasRunning || running)
                continue;
            auto list = TWB::GUI::PlanXmlList::instance();
            TWB::Info::Plan::Base* plan = list ? list->plan(id) : nullptr;
            auto models = ModelManager::instance();
            auto* storages = models
                ? qobject_cast<TWB::GUI::StorageConnectionsModel*>(models->create(ModelNames::StorageConnection))
                : nullptr;
            if (plan && storages)
                storages->editStorage(plan->storage());
        }
    };
    connect(table, &QAbstractItemModel::dataChanged, this,
        [check](
            const QModelIndex& topLeft, const QModelIndex& bottomRight) { check(topLeft.row(), bottomRight.row()); });
    connect(table, &QAbstractItemModel::rowsInserted, this,
        [check](const QModelIndex&, int first, int last) { check(first, last); });
}

void ConsoleWindow::onRemoveClicked()
{
    if (m_currentPlan.isNull())
        return;
    QTreeView* view = m_tabs->currentWidget() == m_restoreView ? m_restoreView : m_backupView;
    const QModelIndexList rows = view->selectionModel()->selectedRows(nameColumn);
    const QString name = rows.isEmpty() ? QString() : rows.first().data().toString();
    QMessageBox question(QMessageBox::Question, tr("Remove plan"),
        tr("Remove the plan \"%1\"? Its backed-up data stays on the storage.").arg(name),
        QMessageBox::Yes | QMessageBox::No, this, Qt::Sheet);
    question.setDefaultButton(QMessageBox::No);
    if (question.exec() == QMessageBox::Yes)
        m_control->onRemove();
}

void ConsoleWindow::onNewBackupPlan()
{
    TWB::GUI::BackupPlanEditWizard wizard(this);
    wizard.exec();
}

void ConsoleWindow::onEditPlan()
{
    TWB::Info::Plan::Base* plan = currentPlanDocument(tr("Edit plan"));
    if (!plan)
        return;
    if (plan->subtype() == TWB::Info::Plan::Base::KindRestore) {
        std::unique_ptr<TWB::GUI::RestorePlanEditWizard> wizard(
            TWB::GUI::RestorePlanEditWizard::createWizard(plan, this));
        wizard->exec();
        return;
    }
    std::unique_ptr<TWB::GUI::BackupPlanEditWizard> wizard(TWB::GUI::BackupPlanEditWizard::createWizard(plan, this));
    wizard->exec();
}

TWB::Info::Plan::Base* ConsoleWindow::currentPlanDocument(const QString& title)
{
    if (m_currentPlan.isNull())
        return nullptr;
    auto list = TWB::GUI::PlanXmlList::instance();
    TWB::Info::Plan::Base* plan = list ? list->plan(m_currentPlan) : nullptr;
    if (!plan) {
        // The plan's document comes with its row; without it there is nothing to fill the pages from.
        if (list)
            list->getPlan(m_currentPlan);
        QMessageBox::information(this, title,
            tr("The settings of this plan are still being read from the backup service. Try again in a moment."));
    }
    return plan;
}

void ConsoleWindow::onNewRestorePlan()
{
    TWB::GUI::RestorePlanEditWizard wizard(this);
    wizard.exec();
}

void ConsoleWindow::onRestoreFromPlan()
{
    auto* backup = dynamic_cast<TWB::Info::Plan::BackupFile*>(currentPlanDocument(tr("Restore")));
    if (!backup)
        return;
    // The plan's own password opens its backup: the user need not type it again.
    std::unique_ptr<TWB::GUI::RestorePlanEditWizard> wizard(
        TWB::GUI::RestorePlanEditWizard::createWizardFromBackupPlan(backup, true, this));
    wizard->exec();
}

void ConsoleWindow::restoreFromStorage(const QUuid& storage, const QStringList& items)
{
    std::unique_ptr<TWB::GUI::RestorePlanEditWizard> wizard(
        TWB::GUI::RestorePlanEditWizard::createWizardFromBackupStorage(storage, items, this));
    wizard->exec();
}

void ConsoleWindow::onCurrentPlanRemoved(const QUuid& id)
{
    if (id != m_currentPlan)
        return;
    m_currentPlan = QUuid();
    onStatusChanged(0, 0);
}

void ConsoleWindow::onPlanProgress(const QUuid& id)
{
    // Repaint the bar of the plan whose progress moved.
    for (QTreeView* view : {m_backupView, m_restoreView}) {
        QAbstractItemModel* model = view->model();
        if (!model)
            continue;
        for (int row = 0; row < model->rowCount(); ++row) {
            if (QUuid(model->index(row, idColumn).data().toString()) == id)
                view->update(model->index(row, lastStatusColumn));
        }
    }
}

QString ConsoleWindow::connectionText() const
{
    return m_connectionText->text();
}

void ConsoleWindow::showConnection(const QString& text, const QString& detail, const QColor& colour, bool canRetry)
{
    m_connectionDot->setStyleSheet(QStringLiteral("background: %1; border-radius: 5px;").arg(colour.name()));
    m_connectionText->setText(text);
    m_connectionText->setToolTip(detail);
    m_connectionDot->setToolTip(detail);
    m_retry->setVisible(canRetry);
}

void ConsoleWindow::onConnected()
{
    setServiceAway(false);
    showConnection(tr("Connected"),
        tr("The local backup service answers on %1.").arg(SHARED::defines::Path::serviceSocket()),
        QColor(0x2e, 0x9e, 0x4f), false);
    if (m_lostConnection)
        refreshAfterReconnection();
    m_wasConnected = true;
    m_lostConnection = false;
}

void ConsoleWindow::onDisconnected()
{
    if (m_wasConnected)
        m_lostConnection = true;
    setServiceAway(true);
    // While the launcher is starting the service, that is the better news to show.
    if (m_launcher.state() == ServiceLauncher::State::Starting || m_launcher.state() == ServiceLauncher::State::Failed)
        return;
    showConnection(tr("Disconnected"),
        tr("The local backup service does not answer on %1. The console keeps trying to reach it.")
            .arg(SHARED::defines::Path::serviceSocket()),
        QColor(0xc6, 0x28, 0x28), true);
}

void ConsoleWindow::refreshAfterReconnection()
{
    // The table follows notifications, and some were missed while the service was away: read every row again.
    auto manager = ModelManager::instance();
    auto* table = manager ? qobject_cast<TWB::GUI::PlanTableModel*>(manager->create(ModelNames::PlanTable)) : nullptr;
    if (!table)
        return;
    for (int row = 0; row < table->rowCount(); ++row)
        table->loadInfo(QUuid(table->index(row, idColumn).data().toString()));
    // Runs ended while the service was away, and the space they used with them.
    if (auto* storages = manager->create(ModelNames::StorageConnection))
        storages->init();
}

void ConsoleWindow::onLauncherState(ServiceLauncher::State state)
{
    switch (state) {
    case ServiceLauncher::State::Connecting:
        showConnection(tr("Connecting"), tr("Looking for the local backup service…"), QColor(0x9e, 0x9e, 0x9e), false);
        break;
    case ServiceLauncher::State::Starting:
        setServiceAway(true);
        showConnection(tr("Starting the service"), tr("No local backup service answered, so the console started one."),
            QColor(0xf2, 0xa9, 0x00), false);
        break;
    case ServiceLauncher::State::Connected:
        onConnected();
        break;
    case ServiceLauncher::State::Disconnected:
        onDisconnected();
        break;
    case ServiceLauncher::State::Failed:
        setServiceAway(true);
        showConnection(tr("Disconnected"), m_launcher.lastError(), QColor(0xc6, 0x28, 0x28), true);
        statusBar()->showMessage(m_launcher.lastError());
        break;
    }
}

void ConsoleWindow::onUpdateStarted()
{
    statusBar()->showMessage(tr("The product is being updated. The console closes when the update asks it to."));
}

void ConsoleWindow::restoreLayout()
{
    const auto settings = layoutSettings();
    restoreGeometry(settings->value(QStringLiteral("window/geometry")).toByteArray());
    restoreState(settings->value(QStringLiteral("window/state")).toByteArray());
    m_backupView->header()->restoreState(settings->value(QStringLiteral("backup/header")).toByteArray());
    m_restoreView->header()->restoreState(settings->value(QStringLiteral("restore/header")).toByteArray());
    m_tabs->setCurrentIndex(settings->value(QStringLiteral("window/tab"), 0).toInt());
}

void ConsoleWindow::saveLayout() const
{
    const auto settings = layoutSettings();
    settings->setValue(QStringLiteral("window/geometry"), saveGeometry());
    settings->setValue(QStringLiteral("window/state"), saveState());
    settings->setValue(QStringLiteral("backup/header"), m_backupView->header()->saveState());
    settings->setValue(QStringLiteral("restore/header"), m_restoreView->header()->saveState());
    settings->setValue(QStringLiteral("window/tab"), m_tabs->currentIndex());
}

void ConsoleWindow::closeEvent(QCloseEvent* event)
{
    saveLayout();
    QMainWindow::closeEvent(event);
}

} // namespace TWB::Host
